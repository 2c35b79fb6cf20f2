#include <ko/filesystem/posix/durability.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/posix/system_call.hpp>

namespace ko::filesystem::detail {

namespace {

/// Opens `path8` for either reading or writing, without waiting for the other end of a pipe.
int open_to_sync(char const* path8) noexcept {
    int const reading = O_RDONLY | O_NONBLOCK | O_CLOEXEC;
    int const writing = O_WRONLY | O_NONBLOCK | O_CLOEXEC;
    int const descriptor = uninterrupted([=] { return ::open(path8, reading); });
    if (descriptor != -1 || errno != EACCES) return descriptor;
    int const other = uninterrupted([=] { return ::open(path8, writing); });
    if (other == -1) errno = EACCES;  // not EISDIR
    return other;
}

/// Syncs what `path8` leads to by `call`, which takes its descriptor.
template <class Call>
int sync_by(Call call, char const* path8) noexcept {
    file_descriptor const opened(open_to_sync(path8));
    if (opened.get() != -1)
        return uninterrupted([&] { return call(opened.get()); }) == -1 ? errno : 0;
    if (errno != EACCES) return errno;
    ::sync();
    return 0;
}

int flush(int descriptor) noexcept {
#ifdef F_FULLFSYNC
    // fsync alone leaves the data in the disk's cache there; but not every file system has this.
    if (::fcntl(descriptor, F_FULLFSYNC) == 0) return 0;
    if (errno != ENOTSUP && errno != ENOTTY && errno != EINVAL) return -1;
#endif
    return ::fsync(descriptor);
}

}  // namespace

int sync_file(char const* path8) noexcept { return sync_by(&flush, path8); }

int sync_directory_of(std::string const& path8) {
    std::string const parent(algorithm::parent_path<char>(path8));
    char const* const directory = parent.empty() ? "." : parent.c_str();
    int const error = sync_file(directory);
    if (error != EINVAL) return error;
    return sync_file_system(directory);  // which some have for a directory as well
}

int sync_file_system(char const* path8) noexcept {
#if defined __linux__
    return sync_by(&::syncfs, path8);
#elif defined __APPLE__
    return ::sync_volume_np(path8, SYNC_VOLUME_FULLSYNC | SYNC_VOLUME_WAIT) == 0 ? 0 : errno;
#else
    static_cast<void>(path8);
    return ENOTSUP;
#endif
}

}  // namespace ko::filesystem::detail
