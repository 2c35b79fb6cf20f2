// Draws a sequence of operations on names of any kind from the input and does each twice, in two
// trees that are alike: by this library, and by POSIX calls alone.
//
// Invariants:
// 1. Both succeed, or both fail for the same reason.
// 2. The trees are alike afterwards, and so are two directories outside, which links lead to.

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <set>
#include <string>

#include <ko/filesystem.hpp>

#include "fuzz.hpp"

namespace {

namespace fs = ko::filesystem;

/// The names and numbers that the input is made of.
class source {
public:
    source(std::uint8_t const* data, std::size_t size) : data_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    unsigned byte() { return left_ == 0 ? 0 : (--left_, *data_++); }

    std::u16string path() {
        static std::u16string const names[] = {u"a", u"b",   u"c",           u"..",
                                               u".", u"out", u"\u6F22\u00E9"};
        std::u16string text;
        for (unsigned count = 1 + byte() % 3; count != 0; --count) {
            unsigned const kind = byte() % 16;
            if (kind < std::size(names))
                text += names[kind];
            else if (kind == 7)
                text += std::u16string(250 + byte() % 8, u'n');
            else if (kind == 8)
                text += static_cast<char16_t>(byte() << 8 | byte());
            else
                text += static_cast<char16_t>(u'a' + kind % 4);
            if (count != 1) text += byte() % 8 == 0 ? u"//" : u"/";
        }
        if (byte() % 8 == 0) text += u'/';
        bool const is_special = text.front() == u'/' || text.front() == u'~';
        return is_special ? u'x' + text : text;
    }

private:
    std::uint8_t const* data_;
    std::size_t left_;
};

/// The native form, for names that aren't the root.
std::u16string tidied(std::u16string const& text) {
    std::u16string result;
    for (char16_t const unit : text)
        if (unit != u'/' || (!result.empty() && result.back() != u'/')) result += unit;
    if (!result.empty() && result.back() == u'/') result.pop_back();
    return result;
}

/// The error number of a call that gave `result`, or 0.
int failure(int result) { return result == -1 ? errno : 0; }

int remove_tree(std::string const& dir) {
    DIR* const stream = ::opendir(dir.c_str());
    if (stream == nullptr) return errno;
    int error = 0;
    while (::dirent const* const entry = error == 0 ? ::readdir(stream) : nullptr) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        std::string const path = dir + '/' + entry->d_name;
        struct stat found;
        error = failure(::lstat(path.c_str(), &found));
        if (error == 0)
            error = S_ISDIR(found.st_mode) ? remove_tree(path) : failure(::unlink(path.c_str()));
    }
    ::closedir(stream);
    return error != 0 ? error : failure(::rmdir(dir.c_str()));
}

/// The error number, or 0.
using model = std::function<int(char const* a, char const* b)>;
using operation = std::function<void(std::u16string const& a, std::u16string const& b)>;

struct {
    operation operate;
    model modelled;
    bool takes_two = false;
} const operations[] = {
    {[](auto& a, auto&) { fs::create_directory(a); },
     [](auto a, auto) { return failure(::mkdir(a, 0775)); }},
    {[](auto& a, auto&) { fs::remove_file(a); }, [](auto a, auto) { return failure(::unlink(a)); }},
    {[](auto& a, auto&) { fs::remove_directory(a); },
     [](auto a, auto) { return failure(::rmdir(a)); }},
    {[](auto& a, auto&) { fs::permissions(a, 0750); },
     [](auto a, auto) { return failure(::chmod(a, 0750)); }},
    {[](auto& a, auto&) { fs::read_symlink(a); },
     [](auto a, auto) {
         char buffer[PATH_MAX];
         return failure(static_cast<int>(::readlink(a, buffer, sizeof buffer)));
     }},
    {[](auto& a, auto&) { fs::canonical(a); },
     [](auto a, auto) {
         char buffer[PATH_MAX];
         int const error = ::realpath(a, buffer) == nullptr ? errno : 0;
         return error == ENOTDIR ? ENOENT : error;  // it asks first whether the path exists
     }},
    {[](auto& a, auto& b) { fs::rename(a, b); },
     [](auto a, auto b) { return failure(::rename(a, b)); }, true},
    {[](auto& a, auto& b) { fs::create_symlink(a, b); },
     [](auto a, auto b) {
         struct stat found;
         if (::stat(b, &found) == 0) return EEXIST;
         if (errno != ENOENT && errno != ENOTDIR) return errno;
         return failure(::symlink(a, b));
     },
     true},
    {[](auto& a, auto&) { fs::remove(a); },
     [](auto a, auto) {
         struct stat found;
         if (::lstat(a, &found) != 0) return errno;
         return failure(S_ISDIR(found.st_mode) ? ::rmdir(a) : ::unlink(a));
     }},
    {[](auto& a, auto&) { fs::remove_all(a); },
     [](auto a, auto) {
         struct stat found;
         if (::lstat(a, &found) != 0) return errno;
         return S_ISDIR(found.st_mode) ? remove_tree(a) : failure(::unlink(a));
     }},
    {[](auto& a, auto&) {
         if (a.find(u'\0') != a.npos) throw fs::InvalidArgument("", {}, {});  // it says no
         if (!fs::exists(a)) throw fs::PathNotFound({});
     },
     [](auto a, auto) {
         struct stat found;
         if (::stat(a, &found) == 0) return 0;
         return errno == ENOTDIR ? ENOENT : errno;
     }},
};

std::string class_of(int error) {
    switch (error) {
        case 0: return "";
        case ENOENT: return "PathNotFound";
        case EACCES: return "AccessDenied";
        case EEXIST: return "FileExistsError";
        case ENOTDIR: return "NotDirectoryError";
        case EISDIR: return "FileIsDirectory";
        case EINVAL: return "InvalidArgument";
        case ENAMETOOLONG: return "FileNameTooLarge";
        case ENOTEMPTY: return "DirectoryNotEmpty";
        default: return "SystemError";
    }
}

constexpr int max_steps = 12;

/// Two trees, with a directory in each so deep below that no sequence climbs out of it.
class two_trees {
public:
    two_trees() {
        REQUIRE(::mkdtemp(root_.data()) != nullptr);
        for (int which = 0; which < 2; ++which) {
            std::string const outside = tree(which) + "/outside";
            for (auto const& dir : {tree(which), outside, outside + "/kept", tree(which) + "/in"})
                REQUIRE(::mkdir(dir.c_str(), 0755) == 0);
            std::string work = tree(which) + "/in";
            for (int level = 0; level < levels; ++level)
                REQUIRE(::mkdir((work += "/_").c_str(), 0755) == 0);
            REQUIRE(::symlink(outside.c_str(), (work + "/out").c_str()) == 0);
        }
    }
    two_trees(two_trees const&) = delete;
    two_trees& operator=(two_trees const&) = delete;
    ~two_trees() {
        REQUIRE(::chdir("/") == 0);
        REQUIRE(remove_tree(root_) == 0);
    }

    /// False when what was done there has removed the place.
    bool enter(int which) const {
        std::string work = tree(which) + "/in";
        for (int level = 0; level < levels; ++level) work += "/_";
        return ::chdir(work.c_str()) == 0;
    }

    /// Every path in the tree with its mode and the text of a link.
    std::set<std::string> listing(int which) const {
        static std::set<std::string> found;
        static std::size_t prefix;
        found.clear(), prefix = tree(which).size();
        auto const visit = [](char const* path, struct stat const* s, int, FTW*) {
            char text[PATH_MAX + 1] = {};
            if (S_ISLNK(s->st_mode)) REQUIRE(::readlink(path, text, PATH_MAX) > 0);
            std::string const target = text;  // those to the outside begin with the tree's path
            bool const leads_out = target.compare(0, prefix, path, prefix) == 0;
            found.insert((path + prefix) + (' ' + std::to_string(s->st_mode)) + ' ' +
                         (leads_out ? target.substr(prefix) : target));
            return 0;
        };
        REQUIRE(::nftw(tree(which).c_str(), visit, 64, FTW_PHYS) == 0);
        return found;
    }

private:
    static constexpr int levels = 3 * (max_steps + 1);  // three up for each step and its path

    std::string tree(int which) const { return root_ + (which == 0 ? "/a" : "/b"); }

    std::string root_ = "/tmp/ko-fuzz-XXXXXX";
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    source input(data, size);
    two_trees const trees;
    for (int steps = 0; !input.empty() && steps < max_steps; ++steps) {
        unsigned const kind = input.byte() % 16;
        std::u16string const a = input.path(), b = input.path();
        std::string const a8 = fs::detail::to_filesystem(tidied(a));
        std::string const b8 = fs::detail::to_filesystem(tidied(b));
        if (kind >= std::size(operations)) {  // a file, whose name may be no text at all
            std::string const raw(1, static_cast<char>(input.byte() | 0x80));
            for (int which = 0; which < 2 && trees.enter(which); ++which) {
                char const* const name = kind == 15 ? raw.c_str() : a8.c_str();
                int const file = ::open(name, O_CREAT | O_WRONLY, 0644);
                if (file != -1) ::close(file);
            }
            continue;
        }
        auto const& [operate, modelled, takes_two] = operations[kind];
        bool const holds_zero = a8.find('\0') != a8.npos || (takes_two && b8.find('\0') != b8.npos);
        std::string thrown;
        if (!trees.enter(0)) break;
        try {
            operate(a, b);
        } catch (fs::FsysExceptionBase const& error) {
            thrown = error.message_id().substr(error.message_id().rfind(':') + 1);
        }
        REQUIRE(trees.enter(1));
        REQUIRE(thrown == class_of(holds_zero ? EINVAL : modelled(a8.c_str(), b8.c_str())));
    }
    REQUIRE(trees.listing(0) == trees.listing(1));
    return 0;
}
