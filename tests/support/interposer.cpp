#include "support/interposer.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace ko::filesystem::testing {

namespace {

call_recorder* current = nullptr;

template <class Function>
Function* next(char const* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool admitted(char const* name, char const* path = nullptr, char const* second = nullptr) {
    return current == nullptr || current->admit(name, path, second);
}

}  // namespace

call_recorder::call_recorder(std::string root) : root_(std::move(root)) { current = this; }
call_recorder::~call_recorder() { current = nullptr; }

void call_recorder::fail(std::string call, int error, int nth) {
    plans_.push_back({std::move(call), nth, error, {}});
}
void call_recorder::fail_at(int index, int error) {
    failing_index_ = index;
    failing_error_ = error;
}
void call_recorder::before(std::string call, std::function<void()> action, int nth) {
    plans_.push_back({std::move(call), nth, 0, std::move(action)});
}

std::string call_recorder::shown(char const* path) const {
    std::string const text = path;
    return text.rfind(root_ + '/', 0) == 0 ? text.substr(root_.size() + 1) : text;
}

bool call_recorder::admit(char const* name, char const* path, char const* second_path) {
    if (paused_) return true;
    paused_ = true;
    std::string call = name;
    if (path != nullptr) call += ' ' + shown(path);
    if (second_path != nullptr) call += ' ' + shown(second_path);
    if (call != "readdir") calls_.push_back(call);
    int error = static_cast<int>(calls_.size()) - 1 == failing_index_ ? failing_error_ : 0;
    bool failing = error != 0;
    for (plan& each : plans_) {
        if (each.call != call || --each.nth != 0) continue;
        if (each.action)
            each.action();
        else
            failing = true, error = each.error;
    }
    paused_ = false;
    errno = error;
    return !failing;
}

}  // namespace ko::filesystem::testing

using ko::filesystem::testing::admitted;
using ko::filesystem::testing::next;

extern "C" {

#define ONE_PATH(result, name)                                                      \
    result name(char const* path) noexcept {                                        \
        return admitted(#name, path) ? next<result(char const*)>(#name)(path) : -1; \
    }
ONE_PATH(int, unlink)
ONE_PATH(int, rmdir)
ONE_PATH(int, chdir)
#undef ONE_PATH

#define TWO_PATHS(name)                                                                       \
    int name(char const* a, char const* b) noexcept {                                         \
        return admitted(#name, a, b) ? next<int(char const*, char const*)>(#name)(a, b) : -1; \
    }
TWO_PATHS(rename)
TWO_PATHS(symlink)
#undef TWO_PATHS

#define PATH_AND(name, type)                                                                     \
    int name(char const* path, type argument) noexcept {                                         \
        return admitted(#name, path) ? next<int(char const*, type)>(#name)(path, argument) : -1; \
    }
PATH_AND(mkdir, mode_t)
PATH_AND(chmod, mode_t)
PATH_AND(access, int)
PATH_AND(stat, struct stat*)
PATH_AND(lstat, struct stat*)
#undef PATH_AND

int openat(int base, char const* path, int flags, ...) {
    ::va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return admitted("openat", path)
               ? next<int(int, char const*, int, ...)>("openat")(base, path, flags, mode)
               : -1;
}
int unlinkat(int base, char const* path, int flags) noexcept {
    return admitted("unlinkat", path)
               ? next<int(int, char const*, int)>("unlinkat")(base, path, flags)
               : -1;
}
int close(int descriptor) {
    bool const fails = !admitted("close");
    int const error = errno;
    int const result = next<int(int)>("close")(descriptor);  // it is closed even so
    if (!fails) return result;
    errno = error;
    return -1;
}
DIR* opendir(char const* path) {
    return admitted("opendir", path) ? next<DIR*(char const*)>("opendir")(path) : nullptr;
}
::dirent* readdir(DIR* stream) {
    return admitted("readdir") ? next<::dirent*(DIR*)>("readdir")(stream) : nullptr;
}
int closedir(DIR* stream) {
    bool const fails = !admitted("closedir");
    int const error = errno;
    int const result = next<int(DIR*)>("closedir")(stream);
    if (!fails) return result;
    errno = error;
    return -1;
}
char* getcwd(char* buffer, size_t size) noexcept {
    return admitted("getcwd") ? next<char*(char*, size_t)>("getcwd")(buffer, size) : nullptr;
}
char* realpath(char const* path, char* buffer) noexcept {
    return admitted("realpath", path) ? next<char*(char const*, char*)>("realpath")(path, buffer)
                                      : nullptr;
}
/// "/endless/N" is a link with a text of N bytes, "/negative" one whose length is -2.
ssize_t readlink(char const* path, char* buffer, size_t size) noexcept {
    if (!admitted("readlink", path)) return -1;
    std::string const text = path;
    if (text == "/negative") return -2;
    if (text.rfind("/endless/", 0) != 0)
        return next<ssize_t(char const*, char*, size_t)>("readlink")(path, buffer, size);
    size_t const length = std::min(size, std::stoul(text.substr(9)));
    std::fill_n(buffer, length, 'x');
    return static_cast<ssize_t>(length);
}

}  // extern "C"
