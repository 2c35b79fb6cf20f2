#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include <boost/filesystem/operations.hpp>

#include <ko/filesystem.hpp>

#include "job.hpp"
#include "plain_posix.hpp"

namespace ko_bench {

namespace {

namespace fs = ko::filesystem;
namespace std_fs = std::filesystem;
namespace boost_fs = boost::filesystem;

std::string utf8(std::u16string const& text) { return fs::detail::to_filesystem(text); }

void add_making(std::u16string const& scratch) {
    std::u16string const dir = scratch + u"/a directory to be made and removed";
    std::string const dir8 = utf8(dir);
    job("create and remove a directory", true)
        .target(1.05)
        .ko([=] { fs::create_directory(dir), fs::remove_directory(dir); })
        .std([=] { std_fs::create_directory(dir), std_fs::remove(dir); })
        .boost(
            [=] { boost_fs::create_directory(boost_path(dir)), boost_fs::remove(boost_path(dir)); })
        .limit([=] { return ::mkdir(dir8.c_str(), 0775) + ::rmdir(dir8.c_str()); });

    std::u16string const top = scratch + u"/top", deep = top + u"/2/3/4/5";
    std::string const top8 = utf8(top), deep8 = utf8(deep);
    job("create_directories, 5 levels", true)
        .target(1.03)
        .before([=] { std_fs::remove_all(top8); })
        .ko([=] { fs::create_directories(deep); })
        .std([=] { std_fs::create_directories(deep); })
        .boost([=] { boost_fs::create_directories(boost_path(deep)); })
        .limit([=] { plain::make_directories(deep8); });

    std::u16string const link = scratch + u"/a link", target = u"some/where/else";
    std::string const link8 = utf8(link), target8 = utf8(target);
    job("link made, read, removed", true)
        .target(1.03)
        .ko([=] {
            fs::create_symlink(target, link);
            auto text = fs::read_symlink(link);
            fs::remove_symlink(link);
            return text;
        })
        .std([=] {
            std_fs::create_symlink(target, link);
            auto text = std_fs::read_symlink(link).u16string();
            std_fs::remove(link);
            return text;
        })
        .boost([=] {
            boost_fs::create_symlink(boost_path(target), boost_path(link));
            auto text = boost_fs::read_symlink(boost_path(link));
            boost_fs::remove(boost_path(link));
            return text;
        })
        .limit([=] {
            struct stat found;
            char buffer[1024];
            ::stat(link8.c_str(), &found);
            int result = ::symlink(target8.c_str(), link8.c_str());
            result += static_cast<int>(::readlink(link8.c_str(), buffer, sizeof buffer));
            return result + ::unlink(link8.c_str());
        });
}

void add_moving(std::u16string const& scratch) {
    std::u16string const a = scratch + u"/a file to be renamed", b = scratch + u"/another name";
    std::string const a8 = utf8(a), b8 = utf8(b);
    std::ofstream(a8) << "x";
    job("rename there and back", fs::exists(a))
        .target(1.05)
        .ko([=] { fs::rename(a, b), fs::rename(b, a); })
        .std([=] { std_fs::rename(a, b), std_fs::rename(b, a); })
        .boost([=] {
            boost_fs::rename(boost_path(a), boost_path(b));
            boost_fs::rename(boost_path(b), boost_path(a));
        })
        .limit([=] { return ::rename(a8.c_str(), b8.c_str()) + ::rename(b8.c_str(), a8.c_str()); });
    for (auto const& [name, size] : {std::pair<char const*, int>("0 B", 0),
                                     {"4 KiB", 4 << 10},
                                     {"1 MiB", 1 << 20},
                                     {"64 MiB", 64 << 20}}) {
        std::u16string const from = scratch + u"/" + fs::detail::from_filesystem(name);
        std::u16string const to = from + u" copied";
        std::ofstream(utf8(from)) << std::string(static_cast<std::size_t>(size), 'x');
        std::string const from8 = utf8(from), to8 = utf8(to);
        fs::copy_file(from, to);
        job(std::string("copy_file, ") + name, fs::status(to).size == std::size_t(size))
            .target(1.03)
            .ko([=] { fs::copy_file(from, to, fs::copy_option::overwrite_if_exists); })
            .std([=] { std_fs::copy_file(from, to, std_fs::copy_options::overwrite_existing); })
            .boost([=] {
                boost_fs::copy_file(boost_path(from), boost_path(to),
                                    boost_fs::copy_options::overwrite_existing);
            })
            .limit([=] {
                struct stat source, target;  // neither a pipe nor the same file
                ::stat(from8.c_str(), &source), ::stat(to8.c_str(), &target);
                plain::copy_file(from8.c_str(), to8.c_str(), O_TRUNC);
            });
    }
}

void add_resolving(std::u16string const& scratch) {
    std::u16string const file = scratch + u"/resolved";
    std::string const file8 = utf8(file);
    std::ofstream(file8) << "x";
    auto const bare_realpath = [](std::string const& path8) {
        struct stat found;
        char buffer[PATH_MAX];
        return ::stat(path8.c_str(), &found) == 0 && ::realpath(path8.c_str(), buffer) != nullptr;
    };
    auto const bare_canonical = [=](std::string const& path8) {
        struct stat found;
        return ::stat(path8.c_str(), &found) == 0 && bare_realpath(path8);
    };
    job("get_current_path", !fs::get_current_path().empty())
        .target(1.15)
        .ko([] { return fs::get_current_path(); })
        .std([] { return std_fs::current_path().u16string(); })
        .boost([] { return boost_fs::current_path(); })
        .limit([] {
            char buffer[1024];
            return ::getcwd(buffer, sizeof buffer);
        });
    std::u16string const name = u"some/file/name.txt";
    job("absolute, working directory", fs::absolute(name) == fs::get_current_path() + u'/' + name)
        .target(1.15)
        .ko([=] { return fs::absolute(name); })
        .std([=] { return std_fs::absolute(name).u16string(); })
        .boost([=] { return boost_fs::absolute(boost_path(name)); })
        .limit([] {
            char buffer[1024];
            return ::getcwd(buffer, sizeof buffer);
        });
    std::u16string const base = u"/usr/share/applications/some/where";
    job("absolute, given base", fs::absolute(name, base) == base + u'/' + name)
        .target(2.6)
        .ko([=] { return fs::absolute(name, base); })
        .boost([=] { return boost_fs::absolute(boost_path(name), boost_path(base)); })
        .limit([result = base + u'/' + name] { return std::u16string(result); });
    job("canonical", fs::canonical(file) == file)
        .target(1.08)
        .ko([=] { return fs::canonical(file); })
        .std([=] { return std_fs::canonical(file).u16string(); })
        .boost([=] { return boost_fs::canonical(boost_path(file)); })
        .limit([=] { return bare_realpath(file8); });
    job("weakly_canonical, existing", fs::weakly_canonical(file) == file)
        .target(1.08)
        .ko([=] { return fs::weakly_canonical(file); })
        .std([=] { return std_fs::weakly_canonical(file).u16string(); })
        .boost([=] { return boost_fs::weakly_canonical(boost_path(file)); })
        .limit([=] { return bare_canonical(file8); });
    std::u16string const missing = scratch + u"/x/y/z";
    job("weakly_canonical, three missing", fs::weakly_canonical(missing) == missing)
        .target(1.08)
        .ko([=] { return fs::weakly_canonical(missing); })
        .std([=] { return std_fs::weakly_canonical(missing).u16string(); })
        .boost([=] { return boost_fs::weakly_canonical(boost_path(missing)); })
        .limit([=, missing8 = utf8(missing), scratch8 = utf8(scratch)] {
            struct stat found;
            ::stat(missing8.c_str(), &found);
            ::stat("/", &found);
            std::string head = missing8;
            for (auto end = head.find('/', 1); end != head.npos; end = head.find('/', end + 1)) {
                head[end] = '\0';
                bool const exists = ::stat(head.c_str(), &found) == 0;
                head[end] = '/';
                if (!exists) break;
            }
            return bare_realpath(scratch8);
        });
    job("relative", fs::relative(file, scratch) == u"resolved")
        .target(1.08)
        .ko([=] { return fs::relative(file, scratch); })
        .std([=] { return std_fs::relative(file, scratch).u16string(); })
        .boost([=] { return boost_fs::relative(boost_path(file), boost_path(scratch)); })
        .limit([=, scratch8 = utf8(scratch)] {
            return bare_canonical(file8) && bare_canonical(scratch8);
        });
    job("equivalent", fs::equivalent(file, file))
        .target(1.1)
        .ko([=] { return fs::equivalent(file, file); })
        .std([=] { return std_fs::equivalent(file, file); })
        .boost([=] { return boost_fs::equivalent(boost_path(file), boost_path(file)); })
        .limit([=] {
            struct stat a, b;
            return ::stat(file8.c_str(), &a) + ::stat(file8.c_str(), &b);
        });
    fs::upath const path(scratch);
    std::string const path8 = utf8(scratch);
    job("space", fs::space(path).capacity > 0)
        .target(1.1)
        .ko([=] { return fs::space(path); })
        .std([=] { return std_fs::space(scratch); })
        .boost([=] { return boost_fs::space(boost_path(scratch)); })
        .limit([=] {
            struct statvfs found;
            return ::statvfs(path8.c_str(), &found);
        });
}

}  // namespace

void add_operation_jobs(std::u16string const& scratch) {
    add_making(scratch);
    add_moving(scratch);
    add_resolving(scratch);
}

}  // namespace ko_bench
