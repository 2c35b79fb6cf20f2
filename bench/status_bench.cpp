#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <boost/system/error_code.hpp>

#include <ko/filesystem.hpp>

#include "job.hpp"
#include "plain_posix.hpp"

namespace ko_bench {

namespace {

namespace fs = ko::filesystem;
namespace std_fs = std::filesystem;
namespace boost_fs = boost::filesystem;

void add_queries(std::string const& name, std::u16string const& text, bool there) {
    fs::upath const path(text);
    std::string const path8 = path.string();
    bool const is_ascii = path8.size() == text.size();
    double const target = is_ascii ? 1.05 : 1.25;
    auto const bare_stat = [=] {
        struct stat found;
        return ::stat(path8.c_str(), &found);
    };
    auto const bare_lstat = [=] {
        struct stat found;
        return ::lstat(path8.c_str(), &found);
    };
    auto const bare_access = [=] { return ::access(path8.c_str(), R_OK); };
    // Preceded by one bare iconv call.
    auto const converted = [=](auto call) {
        return [=] { return plain::encode(text) == 0 ? 0 : call(); };
    };
    auto const add_bare = [=](job& queried, auto call) {
        queried.limit(call);
        if (!is_ascii) queried.floor(converted(call));
    };
    job exists("exists, " + name, fs::exists(text) == there);
    exists.target(target)
        .ko([=] { return fs::exists(text); })
        .std([=] {
            std::error_code error;
            return std_fs::exists(text, error);
        })
        .boost([=] {
            boost::system::error_code error;
            return boost_fs::exists(boost_path(text), error);
        });
    add_bare(exists, bare_stat);
    auto const type = there ? fs::file_status::regular_file : fs::file_status::file_not_found;
    job status("status, " + name, fs::status(text).type == type);
    status.target(target)
        .ko([=] { return fs::status(text); })
        .std([=] {
            std::error_code error;
            return std_fs::status(text, error);
        })
        .boost([=] {
            boost::system::error_code error;
            return boost_fs::status(boost_path(text), error);
        });
    add_bare(status, bare_stat);
    job of_object("status of a path object, " + name, fs::status(path).type == type);
    of_object.target(target).ko([=] { return fs::status(path); });
    add_bare(of_object, bare_stat);
    job light("status_express_light, " + name, fs::status_express_light(text).type == type);
    light.target(target).ko([=] { return fs::status_express_light(text); });
    add_bare(light, bare_stat);
    job symlink_status("symlink_status, " + name, fs::symlink_status(text).type == type);
    symlink_status.target(target)
        .ko([=] { return fs::symlink_status(text); })
        .std([=] {
            std::error_code error;
            return std_fs::symlink_status(text, error);
        })
        .boost([=] {
            boost::system::error_code error;
            return boost_fs::symlink_status(boost_path(text), error);
        });
    add_bare(symlink_status, bare_lstat);
    constexpr unsigned int mode = fs::access_read | fs::access_exists;
    job access("access, " + name, fs::access(text, mode) == there);
    access.target(target).ko([=] { return fs::access(text, mode); });
    add_bare(access, bare_access);
}

/// One attribute of the file `text`, by each library.
template <class Ko, class Std, class Boost>
void add_attribute(std::string const& name, std::u16string const& text, bool answer_is_right, Ko ko,
                   Std by_std, Boost by_boost) {
    std::string const path8 = fs::upath(text).string();
    job(name, answer_is_right)
        .target(1.05)
        .ko([=] { return ko(text); })
        .std([=] { return by_std(std_fs::path(text)); })
        .boost([=] { return by_boost(boost_path(text)); })
        .limit([=] {
            struct stat found;
            return ::stat(path8.c_str(), &found);
        });
}

}  // namespace

void add_status_jobs(std::u16string const& scratch) {
    // A path of 52 characters, one of 30 CJK characters plus the scratch directory, and a missing
    // one.
    std::u16string const ascii = scratch + u'/' + std::u16string(52 - scratch.size() - 1, u'f');
    std::u16string const han = scratch + u'/' + std::u16string(30, u'\u6F22');
    for (std::u16string const& file : {ascii, han}) std::ofstream(fs::upath(file).string()) << "x";
    add_queries("52 ASCII", ascii, true);
    add_queries("30 CJK", han, true);
    add_queries("missing", scratch + u"/missing/but/with/a/name/of/some/length", false);

    add_attribute(
        "file_size, 52 ASCII", ascii, fs::file_size(ascii) == 1,
        [](auto const& p) { return fs::file_size(p); },
        [](auto const& p) { return std_fs::file_size(p); },
        [](auto const& p) { return boost_fs::file_size(p); });
    add_attribute(
        "hard_link_count, 52 ASCII", ascii, fs::hard_link_count(ascii) == 1,
        [](auto const& p) { return fs::hard_link_count(p); },
        [](auto const& p) { return std_fs::hard_link_count(p); },
        [](auto const& p) { return boost_fs::hard_link_count(p); });
    add_attribute(
        "last_write_time, 52 ASCII", ascii,
        fs::last_write_time(ascii) == fs::status(ascii).last_write_time,
        [](auto const& p) { return fs::last_write_time(p); },
        [](auto const& p) { return std_fs::last_write_time(p); },
        [](auto const& p) { return boost_fs::last_write_time(p); });

    std::u16string const below = ascii + u"/x";
    std::string const below8 = fs::upath(below).string();
    job("exception, status below a file", !fs::exists(below))
        .target(1.6)
        .ko([=] {
            try {
                return fs::status(below).size;
            } catch (fs::NotDirectoryError const& error) {
                return error.path().size();
            }
        })
        .std([=] {
            try {
                return std_fs::file_size(below);
            } catch (std_fs::filesystem_error const& error) {
                return error.path1().native().size();
            }
        })
        .boost([=] {
            try {
                return boost_fs::file_size(boost_path(below));
            } catch (boost_fs::filesystem_error const& error) {
                return error.path1().native().size();
            }
        })
        .limit([=] {
            struct stat found;
            try {
                if (::stat(below8.c_str(), &found) != 0) throw errno;
                return 0;
            } catch (int error) {
                return error;
            }
        });
    job("status, 52 ASCII, threads", true).threads([=] { return fs::status(ascii); });
}

}  // namespace ko_bench
