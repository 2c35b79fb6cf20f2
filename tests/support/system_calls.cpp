#include "support/system_calls.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

namespace {

using ko::filesystem::test_support::call_recorder;
using text = char const*;

/// Records `call` and returns whether to make it. Called only while there is a recorder: without one,
/// the calls must not even allocate.
bool admitted(std::string const& call) {
    call_recorder* const r = std::exchange(call_recorder::current, nullptr);
    r->all.push_back(call);
    if (r->during) r->during();
    call_recorder::current = r;
    bool const fails = r->all.size() - 1 == r->failing_index || call == r->failing;
    if (fails) errno = r->error;
    return !fails;
}

size_t at_once(size_t bytes) {
    call_recorder const* const r = call_recorder::current;
    return r != nullptr && r->short_transfers ? std::min<size_t>(bytes, 1) : bytes;
}

template <class Function>
Function* next(char const* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// The path that each descriptor was opened by.
std::map<int, std::string>& opened() {
    static std::map<int, std::string> paths;
    return paths;
}

std::string shown(char const* name, DIR* stream) {
    bool const is_recorded = call_recorder::current != nullptr;
    return is_recorded ? std::string(name) + ' ' + opened()[::dirfd(stream)] : "";
}

std::string shown(char const* name, char const* path) { return std::string(name) + ' ' + path; }

/// A directory opened relative to another one is recorded with its whole path.
std::string shown(char const* name, int base, char const* path) {
    bool const is_below = base != AT_FDCWD && *path != '/';
    return std::string(name) + ' ' + (is_below ? opened()[base] + '/' : "") + path;
}

}  // namespace

#define ADMITTED(call) (call_recorder::current == nullptr || admitted(call))
#define CALL(result, failed, name, call, parameters, arguments)                    \
    extern "C" result name parameters {                                            \
        return ADMITTED(call) ? next<result parameters>(#name) arguments : failed; \
    }
#define SHOWN(name) std::string(#name " ").append(path)
CALL(int, -1, unlink, SHOWN(unlink), (text path) noexcept, (path))
CALL(int, -1, rmdir, SHOWN(rmdir), (text path) noexcept, (path))
CALL(int, -1, chdir, SHOWN(chdir), (text path) noexcept, (path))
CALL(int, -1, mkdir, SHOWN(mkdir), (text path, mode_t m) noexcept, (path, m))
CALL(int, -1, truncate, SHOWN(truncate), (text path, off_t n) noexcept, (path, n))
CALL(int, -1, chmod, SHOWN(chmod), (text path, mode_t m) noexcept, (path, m))
CALL(int, -1, lchmod, SHOWN(lchmod), (text path, mode_t m) noexcept, (path, m))
CALL(int, -1, access, SHOWN(access), (text path, int m) noexcept, (path, m))
CALL(int, -1, stat, SHOWN(stat), (text path, struct stat* s) noexcept, (path, s))
CALL(int, -1, lstat, SHOWN(lstat), (text path, struct stat* s) noexcept, (path, s))
CALL(int, -1, unlinkat, shown("unlinkat", d, path), (int d, text path, int f) noexcept,
     (d, path, f))
CALL(int, -1, fstatat, shown("fstatat", d, path),
     (int d, text path, struct stat* s, int f) noexcept, (d, path, s, f))
CALL(int, -1, statvfs, SHOWN(statvfs), (text path, struct statvfs* s) noexcept, (path, s))
CALL(int, -1, statvfs64, SHOWN(statvfs), (text path, struct statvfs64* s) noexcept, (path, s))
CALL(int, -1, statx, SHOWN(statx), (int d, text path, int f, unsigned m, struct statx* s) noexcept,
     (d, path, f, m, s))
CALL(int, -1, utimensat, SHOWN(utimensat), (int d, text path, timespec const* t, int f) noexcept,
     (d, path, t, f))
CALL(char*, nullptr, realpath, SHOWN(realpath), (text path, char* b) noexcept, (path, b))
CALL(int, -1, rename, SHOWN(rename) + ' ' + to, (text path, text to) noexcept, (path, to))
CALL(int, -1, symlink, SHOWN(symlink) + ' ' + to, (text path, text to) noexcept, (path, to))
CALL(int, -1, linkat, SHOWN(linkat) + ' ' + to, (int d, text path, int e, text to, int f) noexcept,
     (d, path, e, to, f))
CALL(::dirent64*, nullptr, readdir64, shown("readdir", d), (DIR * d), (d))
CALL(int, -1, fchmod, "fchmod", (int d, mode_t m) noexcept, (d, m))
CALL(int, -1, fstat, "fstat " + opened()[d], (int d, struct stat* s) noexcept, (d, s))
CALL(int, -1, fstat64, "fstat", (int d, struct stat64* s) noexcept, (d, s))
CALL(int, -1, fstatfs64, "fstatfs", (int d, struct statfs64* s) noexcept, (d, s))
CALL(ssize_t, -1, sendfile, "sendfile", (int o, int i, off_t* p, size_t n) noexcept,
     (o, i, p, at_once(n)))
CALL(ssize_t, -1, sendfile64, "sendfile", (int o, int i, off64_t* p, size_t n) noexcept,
     (o, i, p, at_once(n)))
CALL(ssize_t, -1, writev, "writev", (int d, iovec const* v, int n), (d, v, n))
CALL(ssize_t, -1, write, "write", (int d, void const* b, size_t n), (d, b, n))
CALL(ssize_t, -1, read, "read", (int d, void* b, size_t n), (d, b, n))
CALL(DIR*, nullptr, fdopendir, "fdopendir " + opened()[d], (int d), (d))
CALL(char*, nullptr, getcwd, "getcwd", (char* b, size_t n) noexcept, (b, n))
#undef CALL

// The mode, which only some calls have.
#define OPEN(name, call, first, passed)                                              \
    extern "C" int name(first char const* path, int flags, ...) {                    \
        std::va_list rest;                                                           \
        va_start(rest, flags);                                                       \
        unsigned const mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;   \
        va_end(rest);                                                                \
        if (!ADMITTED(shown(call, passed path))) return -1;                          \
        int const result =                                                           \
            next<int(first char const*, int, ...)>(#name)(passed path, flags, mode); \
        if (call_recorder::current != nullptr)                                       \
            opened()[result] = shown("", passed path).substr(1);                     \
        return result;                                                               \
    }
#define BASE int base,
#define PASSED_BASE base,
OPEN(open, "open", , )
OPEN(open64, "open", , )
OPEN(openat, "openat", BASE, PASSED_BASE)
OPEN(openat64, "openat", BASE, PASSED_BASE)
#undef OPEN

// These write nothing: the disk may be slow, and shared with others.
extern "C" int fsync(int d) { return ADMITTED("fsync " + opened()[d]) ? 0 : -1; }
extern "C" int syncfs(int d) noexcept { return ADMITTED("syncfs " + opened()[d]) ? 0 : -1; }
extern "C" void sync() noexcept { static_cast<void>(ADMITTED("sync")); }

// Closes the descriptor even if it reports a failure.
extern "C" int close(int descriptor) {
    int const result = next<int(int)>("close")(descriptor);
    return ADMITTED("close") ? result : -1;
}
extern "C" DIR* opendir(char const* path) {
    if (!ADMITTED(SHOWN(opendir))) return nullptr;
    DIR* const stream = next<DIR*(char const*)>("opendir")(path);
    if (call_recorder::current != nullptr && stream != nullptr) opened()[::dirfd(stream)] = path;
    return stream;
}
/// The listing of a directory with "/./" in its path has no types, as on some file systems.
extern "C" ::dirent* readdir(DIR* stream) {
    std::string const call = shown("readdir", stream);
    if (!ADMITTED(call)) return nullptr;
    ::dirent* const entry = next<::dirent*(DIR*)>("readdir")(stream);
    if (entry != nullptr && call.find("/./") != call.npos) entry->d_type = DT_UNKNOWN;
    return entry;
}
extern "C" int closedir(DIR* stream) {
    std::string const call = shown("closedir", stream);
    int const result = next<int(DIR*)>("closedir")(stream);
    return ADMITTED(call) ? result : -1;
}
/// The length of "/negative" is -2.
extern "C" ssize_t readlink(char const* path, char* buffer, size_t size) noexcept {
    if (!ADMITTED(SHOWN(readlink))) return -1;
    if (std::string_view(path) == "/negative") return -2;
    return next<ssize_t(char const*, char*, size_t)>("readlink")(path, buffer, size);
}

/// Boost copies files by this; other system calls are not recorded.
extern "C" long syscall(long number, ...) noexcept {
    std::va_list rest;
    va_start(rest, number);
    long arguments[6];
    for (long& argument : arguments) argument = va_arg(rest, long);
    va_end(rest);
    auto& [in, in_at, out, out_at, size, flags] = arguments;
    if (number == SYS_copy_file_range) {
        if (!ADMITTED("copy_file_range")) return -1;
        size = static_cast<long>(at_once(static_cast<size_t>(size)));
    }
    return next<long(long, ...)>("syscall")(number, in, in_at, out, out_at, size, flags);
}

// Headers may rename these: NAME is the real name.
#define NEXT(type, name) next<type>(NAME(name))
#define NAME(name) #name
extern "C" iconv_t iconv_open(char const* to, char const* from) {
    if (!ADMITTED("iconv_open")) return reinterpret_cast<iconv_t>(std::intptr_t{-1});
    ++call_recorder::open_converters;
    return NEXT(iconv_t(char const*, char const*), iconv_open)(to, from);
}
extern "C" int iconv_close(iconv_t converter) {
    --call_recorder::open_converters;
    return NEXT(int(iconv_t), iconv_close)(converter);
}
