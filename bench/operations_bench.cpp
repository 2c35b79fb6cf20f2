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
        .ko([=] { fs::create_directory(dir), fs::remove_directory(dir); })
        .std([=] { std_fs::create_directory(dir), std_fs::remove(dir); })
        .boost(
            [=] { boost_fs::create_directory(boost_path(dir)), boost_fs::remove(boost_path(dir)); })
        .limit([=] { return ::mkdir(dir8.c_str(), 0775) + ::rmdir(dir8.c_str()); });

    std::u16string const top = scratch + u"/top", deep = top + u"/2/3/4/5";
    std::string const top8 = utf8(top), deep8 = utf8(deep);
    job("create_directories, 5 levels, and remove_all", true)
        .ko([=] { fs::create_directories(deep), fs::remove_all(top); })
        .std([=] { std_fs::create_directories(deep), std_fs::remove_all(top); })
        .boost([=] {
            boost_fs::create_directories(boost_path(deep)), boost_fs::remove_all(boost_path(top));
        });
    job("create_directories, 5 levels", true)
        .ko([=] {
            fs::create_directories(deep);
            for (auto end = deep8.size(); end >= top8.size(); end = deep8.rfind('/', end - 1))
                ::rmdir(deep8.substr(0, end).c_str());
        })
        .limit([=] {
            for (auto end = deep8.find('/', 1); end != deep8.npos; end = deep8.find('/', end + 1))
                ::mkdir(deep8.substr(0, end).c_str(), 0775);
            ::mkdir(deep8.c_str(), 0775);
            for (auto end = deep8.size(); end >= top8.size(); end = deep8.rfind('/', end - 1))
                ::rmdir(deep8.substr(0, end).c_str());
        });

    std::u16string const link = scratch + u"/a link", target = u"some/where/else";
    std::string const link8 = utf8(link), target8 = utf8(target);
    job("link made, read, removed", true)
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
        job(std::string("copy_file, ") + name, fs::status(from).size == std::size_t(size))
            .ko([=] { fs::copy_file(from, to, fs::copy_option::overwrite_if_exists); })
            .std([=] { std_fs::copy_file(from, to, std_fs::copy_options::overwrite_existing); })
            .boost([=] {
                boost_fs::copy_file(boost_path(from), boost_path(to),
                                    boost_fs::copy_options::overwrite_existing);
            });
    }
}

void add_tree(std::u16string const& scratch) {
    std::u16string const tree = scratch + u"/tree", copied = scratch + u"/copied";
    for (int dir = 0; dir < 200; ++dir) {
        std::u16string const name = (dir % 3 == 0 ? u"/\u5831\u544A" : u"/folder") +
                                    fs::detail::from_filesystem(std::to_string(dir));
        fs::create_directories(tree + name);
        for (char16_t file = u'a'; file < u'k'; ++file)
            std::ofstream(utf8(tree + name + u"/" + file + (dir % 2 == 0 ? u"\u00E9" : u"x")))
                << "x";
    }
    job("tree of 2,000 files, copied and removed", fs::exists(tree))
        .ko([=] {
            fs::copy(tree, copied, fs::copy_option::recursive | fs::copy_option::copy_symlinks);
            fs::remove_all(copied);
        })
        .std([=] {
            std_fs::copy(tree, copied,
                         std_fs::copy_options::recursive | std_fs::copy_options::copy_symlinks);
            std_fs::remove_all(copied);
        })
        .boost([=] {
            boost_fs::copy(
                boost_path(tree), boost_path(copied),
                boost_fs::copy_options::recursive | boost_fs::copy_options::copy_symlinks);
            boost_fs::remove_all(boost_path(copied));
        });
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
    job("get_current_path", !fs::get_current_path().empty())
        .ko([] { return fs::get_current_path(); })
        .std([] { return std_fs::current_path().u16string(); })
        .boost([] { return boost_fs::current_path(); })
        .limit([] {
            char buffer[1024];
            return ::getcwd(buffer, sizeof buffer);
        });
    std::u16string const name = u"some/file/name.txt";
    job("absolute, working directory", fs::absolute(name) == fs::get_current_path() + u'/' + name)
        .ko([=] { return fs::absolute(name); })
        .std([=] { return std_fs::absolute(name).u16string(); })
        .boost([=] { return boost_fs::absolute(boost_path(name)); })
        .limit([] {
            char buffer[1024];
            return ::getcwd(buffer, sizeof buffer);
        });
    std::u16string const base = u"/usr/share/applications/some/where";
    job("absolute, given base", fs::absolute(name, base) == base + u'/' + name)
        .ko([=] { return fs::absolute(name, base); })
        .boost([=] { return boost_fs::absolute(boost_path(name), boost_path(base)); })
        .limit([result = base + u'/' + name] { return std::u16string(result); });
    job("canonical", fs::canonical(file) == file)
        .ko([=] { return fs::canonical(file); })
        .std([=] { return std_fs::canonical(file).u16string(); })
        .boost([=] { return boost_fs::canonical(boost_path(file)); })
        .limit([=] { return bare_realpath(file8); });
    std::u16string const missing = scratch + u"/x/y/z";
    for (auto const& [kind, path] :
         {std::pair<char const*, std::u16string>("existing", file), {"three missing", missing}})
        job(std::string("weakly_canonical, ") + kind, fs::weakly_canonical(path) == path)
            .ko([=, path = path] { return fs::weakly_canonical(path); })
            .std([=, path = path] { return std_fs::weakly_canonical(path).u16string(); })
            .boost([=, path = path] { return boost_fs::weakly_canonical(boost_path(path)); });
    job("relative", fs::relative(file, scratch) == u"resolved")
        .ko([=] { return fs::relative(file, scratch); })
        .std([=] { return std_fs::relative(file, scratch).u16string(); })
        .boost([=] { return boost_fs::relative(boost_path(file), boost_path(scratch)); });
    job("equivalent", fs::equivalent(file, file))
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
    add_tree(scratch);
    add_resolving(scratch);
}

}  // namespace ko_bench
