#include <ko/filesystem/posix/directory_stream.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/posix/system_call.hpp>

namespace ko::filesystem::detail {

int open_directory(int base, char const* path8, int flags) noexcept {
    return uninterrupted(
        [=] { return ::openat(base, path8, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags); });
}

int directory_error(int base, char const* path8) noexcept {
    int const descriptor = open_directory(base, path8, O_NOFOLLOW);
    if (descriptor == -1) return errno;
    ::close(descriptor);  // opening it was the test
    return 0;
}

dir_stream open_directory_stream(int base, char const* path8, int flags) noexcept {
    int const descriptor = open_directory(base, path8, flags);
    if (descriptor == -1) return nullptr;
    dir_stream stream(::fdopendir(descriptor));  // owns the descriptor now
    if (stream == nullptr) {
        int const error = errno;
        ::close(descriptor);
        errno = error;
    }
    return stream;
}

::dirent const* next_entry(DIR* stream) noexcept {
    for (;;) {
        errno = 0;
        ::dirent const* const entry = ::readdir(stream);
        if (entry == nullptr || !algorithm::is_dot_name<char>(entry->d_name)) return entry;
    }
}

}  // namespace ko::filesystem::detail
