#include "plain_posix.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <iconv.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <benchmark/benchmark.h>

namespace ko_bench::plain {

namespace {

int checked(int result) {
    if (result != -1) return result;
    std::perror("plain POSIX");
    std::exit(1);
}

void check_is_directory(char const* path) {
    checked(::close(checked(::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC))));
}

template <class CharT>
std::size_t convert(iconv_t converter, std::basic_string<CharT> const& text) {
    char buffer[8192];
    char* in = const_cast<char*>(reinterpret_cast<char const*>(text.data()));
    char* out = buffer;
    std::size_t in_left = text.size() * sizeof(CharT);
    std::size_t out_left = sizeof buffer;
    ::iconv(converter, &in, &in_left, &out, &out_left);
    ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
    benchmark::DoNotOptimize(buffer);
    return sizeof buffer - out_left;
}

/// For each entry of the directory `path`, extends `path` to the entry's and calls `visit` with it,
/// the name, whether the listing reports a directory, and the descriptor of the open directory.
template <class Visit>
void for_each_entry(std::string& path, Visit visit) {
    DIR* const stream = ::opendir(path.c_str());
    checked(stream == nullptr ? -1 : 0);
    std::size_t const length = path.size();
    while (::dirent const* const entry = ::readdir(stream)) {
        std::string_view const name = entry->d_name;
        if (name == "." || name == "..") continue;
        path += '/';
        path += name;
        visit(name, entry->d_type == DT_DIR, ::dirfd(stream));
        path.resize(length);
    }
    checked(::closedir(stream));
}

}  // namespace

std::size_t encode(std::u16string const& text) {
    static iconv_t const encoder = ::iconv_open("UTF-8", "UTF-16LE");
    return convert(encoder, text);
}

std::size_t decode(std::string const& text) {
    static iconv_t const decoder = ::iconv_open("UTF-16LE", "UTF-8");
    return convert(decoder, text);
}

void make_directories(std::string const& path) {
    char prefix[1024];
    path.copy(prefix, path.size());
    prefix[path.size()] = '\0';
    for (auto end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1)) {
        prefix[end] = '\0';
        ::mkdir(prefix, 0775);  // may exist
        prefix[end] = '/';
    }
    checked(::mkdir(prefix, 0775));
}

void copy_file(char const* from, char const* to, int flags) {
    int const in = checked(::open(from, O_RDONLY | O_CLOEXEC));
    struct stat source, target;
    checked(::fstat(in, &source));
    int const out = checked(::open(to, O_WRONLY | O_CREAT | O_CLOEXEC | flags, source.st_mode));
    checked(::fstat(out, &target));
    for (off_t left = source.st_size; left > 0;)
        left -= checked(static_cast<int>(
            ::copy_file_range(in, nullptr, out, nullptr, static_cast<std::size_t>(left), 0)));
    checked(::close(out));
    checked(::close(in));
}

void copy_tree(std::string& from, std::string& to) {
    struct stat found;
    ::stat(to.c_str(), &found);             // does it exist?
    checked(::stat(from.c_str(), &found));  // does it contain its own copy?
    make_directories(to);
    std::size_t const length = to.size();
    for_each_entry(from, [&](std::string_view name, bool, int) {
        to += '/';
        to += name;
        checked(::lstat(from.c_str(), &found));
        if (S_ISDIR(found.st_mode))
            copy_tree(from, to);
        else
            copy_file(from.c_str(), to.c_str(), O_EXCL);
        to.resize(length);
    });
}

std::size_t list_tree(std::string& dir) {
    std::size_t sum = 0;
    for_each_entry(dir, [&](std::string_view, bool is_directory, int) {
        sum += dir.size() + (is_directory ? 1 : 0);
        if (is_directory) sum += list_tree(dir);
    });
    return sum;
}

std::size_t sizes_in_tree(std::string& dir) {
    std::size_t sum = 0;
    for_each_entry(dir, [&](std::string_view name, bool is_directory, int descriptor) {
        struct stat found;
        checked(::fstatat(descriptor, name.data(), &found, AT_SYMLINK_NOFOLLOW));
        sum += is_directory ? sizes_in_tree(dir) : static_cast<std::size_t>(found.st_size);
    });
    return sum;
}

void remove_tree(std::string& dir) {
    check_is_directory(dir.c_str());
    std::size_t const length = dir.size();
    for_each_entry(dir, [&](std::string_view, bool, int) {
        struct stat found;
        checked(::lstat(dir.c_str(), &found));
        dir[length] = '\0';
        check_is_directory(dir.c_str());
        dir[length] = '/';
        if (S_ISDIR(found.st_mode))
            remove_tree(dir);
        else
            checked(::unlink(dir.c_str()));
    });
    checked(::rmdir(dir.c_str()));
}

}  // namespace ko_bench::plain
