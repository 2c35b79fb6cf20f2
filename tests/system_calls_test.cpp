// What can't be met on a real file system, and which calls an operation makes: this program defines
// the calls itself and so stands between the library and the C library.

#include <gtest/gtest.h>

#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace {

using calls = std::vector<std::string>;

/// What is recorded while it lives, on one thread, and the call that fails.
struct recorder {
    recorder() { current = this; }
    recorder(recorder const&) = delete;
    recorder& operator=(recorder const&) = delete;
    ~recorder() { current = nullptr; }

    std::string failing;  ///< "name path", or the name alone where there is no path
    int nth = 0;          ///< which of them
    int error = 0;        ///< what errno is then
    calls made;           ///< without readdir

    static inline recorder* current = nullptr;
};

bool admitted(std::string const& call) {
    recorder* const r = recorder::current;
    if (r == nullptr) return true;
    if (call != "readdir") r->made.push_back(call);
    if (call != r->failing || --r->nth != 0) return true;
    errno = r->error;
    return false;
}

template <class Function>
Function* next(char const* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

#define CALL(result, failed, name, call, parameters, arguments)                    \
    extern "C" result name parameters {                                            \
        return admitted(call) ? next<result parameters>(#name) arguments : failed; \
    }
#define SHOWN(name) std::string(#name " ").append(path)
CALL(int, -1, unlink, SHOWN(unlink), (char const* path) noexcept, (path))
CALL(int, -1, rmdir, SHOWN(rmdir), (char const* path) noexcept, (path))
CALL(int, -1, chdir, SHOWN(chdir), (char const* path) noexcept, (path))
CALL(int, -1, mkdir, SHOWN(mkdir), (char const* path, mode_t m) noexcept, (path, m))
CALL(int, -1, chmod, SHOWN(chmod), (char const* path, mode_t m) noexcept, (path, m))
CALL(int, -1, access, SHOWN(access), (char const* path, int m) noexcept, (path, m))
CALL(int, -1, stat, SHOWN(stat), (char const* path, struct stat* s) noexcept, (path, s))
CALL(int, -1, lstat, SHOWN(lstat), (char const* path, struct stat* s) noexcept, (path, s))
CALL(int, -1, unlinkat, SHOWN(unlinkat), (int d, char const* path, int f) noexcept, (d, path, f))
CALL(DIR*, nullptr, opendir, SHOWN(opendir), (char const* path), (path))
CALL(char*, nullptr, realpath, SHOWN(realpath), (char const* path, char* b) noexcept, (path, b))
CALL(int, -1, rename, SHOWN(rename) + ' ' + to, (char const* path, char const* to) noexcept,
     (path, to))
CALL(int, -1, symlink, SHOWN(symlink) + ' ' + to, (char const* path, char const* to) noexcept,
     (path, to))
CALL(::dirent*, nullptr, readdir, "readdir", (DIR * d), (d))
CALL(char*, nullptr, getcwd, "getcwd", (char* b, size_t n) noexcept, (b, n))
#undef CALL

extern "C" int openat(int base, char const* path, int flags, ...) {  // no file is made through it
    return admitted(SHOWN(openat))
               ? next<int(int, char const*, int, ...)>("openat")(base, path, flags)
               : -1;
}
// What is closed is closed, also where closing fails.
extern "C" int close(int descriptor) {
    int const result = next<int(int)>("close")(descriptor);
    return admitted("close") ? result : -1;
}
extern "C" int closedir(DIR* stream) {
    int const result = next<int(DIR*)>("closedir")(stream);
    return admitted("closedir") ? result : -1;
}
/// "/endless/N" is a link with a text of N bytes, "/negative" one whose length is -2.
extern "C" ssize_t readlink(char const* path, char* buffer, size_t size) noexcept {
    if (!admitted(SHOWN(readlink))) return -1;
    std::string const text = path;
    if (text == "/negative") return -2;
    if (text.rfind("/endless/", 0) != 0)
        return next<ssize_t(char const*, char*, size_t)>("readlink")(path, buffer, size);
    size_t const length = std::min<size_t>(size, std::stoul(text.substr(9)));
    std::fill_n(buffer, length, 'x');
    return static_cast<ssize_t>(length);
}

namespace ko::filesystem {
namespace {

using testing::utf8;

/// The tree d/s/f and the file f.
class SystemCalls : public testing::scratch_test {
protected:
    SystemCalls() {
        make_tree();
        scratch.file(u"f");
    }

    void make_tree() {
        std::filesystem::remove_all("d");
        std::filesystem::create_directories("d/s");
        scratch.file(u"d/s/f");
    }
};

TEST_F(SystemCalls, AreThoseOfTheOperationAndNoOthers) {
    struct {
        std::function<void()> action;
        calls expected;
    } const rows[] = {
        {[] { exists(u"f"), status(u"f"), symlink_status(u"f"), status_express_light(u"f"); },
         {"stat f", "stat f", "lstat f", "stat f"}},
        {[] { exists(u""), status(u""), remove(u""), remove_all(u""), change_current_path(u""); },
         {}},
        {[] { access(u"f", access_read), permissions(u"f", 0600); },
         {"access f", "stat f", "chmod f"}},
        {[] { get_current_path(), change_current_path(u"."), absolute(u"x", u"/a"); },
         {"getcwd", "chdir ."}},
        {[] { create_directory(u"n"), create_directories(u"x/y"); },
         {"mkdir n", "mkdir x", "mkdir x/y"}},
        {[] { create_symlink(u"t", u"m"), read_symlink(u"m"); },
         {"stat m", "symlink t m", "readlink m"}},
        {[] { read_symlink(u"/endless/5000"); }, calls(5, "readlink /endless/5000")},
        {[] { rename(u"m", u"o"); }, {"rename m o"}},
        {[] { copy_symlink(u"o", u"p"); }, {"lstat o", "readlink o", "stat p", "symlink t p"}},
        {[] { remove(u"o"), remove(u"n"), remove_symlink(u"p"), remove_directory(u"x/y"); },
         {"lstat o", "unlink o", "lstat n", "rmdir n", "unlink p", "rmdir x/y"}},
        {[] { canonical(u"/"); }, {"stat /", "realpath /"}},
        {[] { remove_all(u"d"); },
         {"lstat d", "openat d", "close", "opendir d",  // the directory is one
          "lstat d/s", "openat d", "close",             // an entry, in it still
          "openat d/s", "close", "opendir d/s",         // down
          "lstat d/s/f", "openat d/s", "close", "unlink d/s/f", "closedir", "rmdir d/s", "closedir",
          "rmdir d"}},
    };
    for (auto const& row : rows) {
        recorder recorded;
        row.action();
        EXPECT_EQ(recorded.made, row.expected);
    }
}

TEST_F(SystemCalls, ThatFailInARemovalDecideHowItEnds) {
    struct {
        std::string call;
        int nth, error;
        std::string outcome, last;
    } const rows[] = {
        {"openat d", 1, ENOENT, "ok", "openat d"},
        {"openat d", 2, ENOENT, "ok", "closedir"},
        {"openat d", 1, ENOTDIR, "FileIsDirectory [d]", "unlinkat d"},
        {"openat d", 2, ELOOP, "FileIsDirectory [d]", "unlinkat d"},
        {"openat d", 1, EMFILE, "SystemError [d] EMFILE", "openat d"},
        {"openat d", 2, EACCES, "AccessDenied [d]", "closedir"},
        {"openat d/s", 1, EIO, "SystemError [d/s] EIO", "closedir"},
        {"opendir d", 1, EMFILE, "SystemError [d] EMFILE", "opendir d"},
        {"opendir d/s", 1, EMFILE, "SystemError [d/s] EMFILE", "closedir"},
        {"readdir", 1, EIO, "SystemError [d] EIO", "closedir"},
        {"lstat d", 1, EIO, "SystemError [d] EIO", "lstat d"},
        {"lstat d/s", 1, ENOENT, "PathNotFound", "closedir"},
        {"lstat d/s/f", 1, EIO, "SystemError [d/s/f] EIO", "closedir"},
        {"unlink d/s/f", 1, EPERM, "SystemError [d/s/f] EPERM", "closedir"},
        {"close", 1, EIO, "ok", "rmdir d"},
        {"closedir", 1, EIO, "SystemError EIO", "closedir"},
        {"rmdir d/s", 1, EBUSY, "SystemError [d/s] EBUSY", "closedir"},
        {"rmdir d", 1, ENOENT, "PathNotFound [d]", "rmdir d"},
    };
    auto const open_descriptors = [] {
        std::filesystem::directory_iterator const descriptors("/proc/self/fd");
        return std::distance(begin(descriptors), end(descriptors));
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.call);
        make_tree();
        auto const open_before = open_descriptors();
        {
            recorder recorded;
            recorded.failing = row.call, recorded.nth = row.nth, recorded.error = row.error;
            TELLS(remove_all(u"d"), row.outcome);
            EXPECT_EQ(recorded.made.back(), row.last);
        }
        EXPECT_EQ(open_descriptors(), open_before);
    }
}

TEST_F(SystemCalls, ThatFailAreReportedByTheirRules) {
    std::u16string const overlong(1024, u'n');
    struct {
        std::string call;
        int error;
        std::function<void()> action;
        std::string outcome;
    } const rows[] = {
        {"access f", EROFS, [] { EXPECT_FALSE(access(u"f", access_write)); }, "ok"},
        {"access f", EROFS, [] { access(u"f", access_read); }, "SystemError [f] EROFS"},
        {"chmod f", EPERM, [] { permissions(u"f", 0600); }, "SystemError [f] EPERM"},
        {"stat f", EINVAL, [] { EXPECT_FALSE(exists(u"f")); }, "ok"},
        {"stat f", EINVAL, [] { EXPECT_EQ(status(u"f").permissions, 0u); }, "ok"},
        {"stat f", EINVAL, [] { EXPECT_EQ(status_express_light(u"f").size, 0u); }, "ok"},
        {"stat f", EIO, [] { status(u"f"); }, "SystemError EIO"},
        {"stat f", EIO, [] { status_express_light(u"f"); }, "SystemError [f] EIO"},
        {"getcwd", EACCES, [] { get_current_path(); }, "AccessDenied"},
        {"mkdir n", 0, [] { create_directory(u"n"), create_directories(u"m"); }, "ok"},
        {"mkdir q", EROFS, [] { create_directories(u"q/r"); }, "SystemError [q] EROFS"},
        {"stat l", EACCES, [] { create_symlink(u"t", u"l"); }, "AccessDenied [l]"},
        {"symlink t l", ENOSPC, [] { create_symlink(u"t", u"l"); }, "SystemError [t] [l] ENOSPC"},
        {"readlink /x", EIO, [] { read_symlink(u"/x"); }, "SystemError [/x] EIO"},
        {"", 0, [] { read_symlink(u"/negative"); }, "SystemError " + std::to_string(ENAMETOOLONG)},
        {"realpath /", EACCES, [] { canonical(u"/"); }, "AccessDenied [/]"},
        {"unlink f", EPERM, [] { remove_file(u"f"); }, "FileIsDirectory [f]"},
        {"unlink f", EPERM, [] { remove(u"f"); }, "SystemError [f] EPERM"},
        {"lstat f", EIO, [] { copy(u"f", u"g"); }, "SystemError EIO"},
        {"rename f t", ENOENT, [] { rename(u"f", u"t"); }, "PathNotFound [t]"},
        {"rename f t", EEXIST, [] { rename(u"f", u"t"); }, "FileExistsError [t]"},
        {"rename f t", EISDIR, [] { rename(u"f", u"t"); }, "FileIsDirectory [t]"},
        {"rename f t", EPERM, [] { rename(u"f", u"t"); }, "SystemError [f] [t] EPERM"},
        {"rename f t", EINVAL, [] { rename(u"f", u"t"); }, "InvalidArgument \"\" [f] [t]"},
        {"rename d/s t", EACCES, [] { rename(u"d/s", u"t"); }, "AccessDenied [t]"},
        {"rename f t", 0, [] { rename(u"f", u"t"); }, "ok"},
        // A source that is too long is at fault, whatever the error says.
        {"stat " + utf8(overlong), ENOENT, [&] { rename(overlong, u"t"); },
         "FileNameTooLarge [" + utf8(overlong) + "]"},
    };
    for (auto const& row : rows) {
        recorder recorded;
        recorded.failing = row.call, recorded.nth = 1, recorded.error = row.error;
        TELLS(row.action(), row.outcome) << row.call;
    }
}

}  // namespace
}  // namespace ko::filesystem
