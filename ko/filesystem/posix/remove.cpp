#include <ko/filesystem/remove.hpp>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/directory_stream.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/handles.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;
using detail::throw_errno_exception;
using posix::detail::file_descriptor;
using posix::detail::uninterrupted;
using traits = pathname_traits<char>;

void remove_by(int (*call)(char const*), char const* path8) {
    if (call(path8) != 0) throw_errno_exception(errno, path8, {});
}

void unlink_path(char const* path8) {
    if (::unlink(path8) == 0) return;
    // macOS reports EPERM for a directory; callers get the same exception as on Linux.
    throw_errno_exception(errno == EPERM ? EISDIR : errno, path8, {});
}

/// Whether `path8`, which was examined as `found` unless there is an `error` number, is a directory.
bool is_directory(struct stat const& found, int error, char const* path8) {
    // Deliberately without the path, unlike in removals that don't check the type first.
    if (error == ENOENT) throw detail::cloneable(PathNotFound({}));
    if (error != 0) throw_errno_exception(error, path8, {});
    return detail::translated_type(found.st_mode) == file_status::directory_file;
}

bool is_directory(char const* path8) {
    struct stat found;
    int const error = ::lstat(path8, &found) == 0 ? 0 : errno;
    return is_directory(found, error, path8);
}

/// 0 if `path8` is a directory and not a link, else the error number.
int directory_verdict(int base, char const* path8) noexcept {
    int const descriptor = posix::detail::open_directory(base, path8, O_NOFOLLOW);
    if (descriptor == -1) return errno;
    ::close(descriptor);  // opening it was the test
    return 0;
}

void close_stream(posix::detail::dir_stream stream) {
    if (::closedir(stream.release()) != 0) throw_errno_exception(errno, {}, {});
}

/// Removes the emptied directory `dir`, which for calls is its text from `name` on in `base`. What
/// follows if it was not emptied, but there is an error number, `verdict`.
void remove_emptied(int verdict, int base, std::string const& dir, std::size_t name) {
    char const* const entry = dir.c_str() + name;
    int result = 0;
    switch (verdict) {
        case 0:
            result = base == AT_FDCWD ? ::rmdir(entry) : ::unlinkat(base, entry, AT_REMOVEDIR);
            break;
        case ENOENT: break;  // already removed by someone else
        case ENOTDIR:
        case ELOOP: result = ::unlinkat(base, entry, 0); break;  // a link, by O_NOFOLLOW
        default: throw_errno_exception(verdict, dir, {});
    }
    if (result != 0) throw_errno_exception(errno, dir, {});
}

/// Removes `path`, which is too long for calls, by its text from `name` on in the open directory
/// `base`, and everything below it in the same way. `path` is unchanged afterwards.
void remove_in(int base, std::string& path, std::size_t name) {
    struct stat found;
    int const error =
        ::fstatat(base, path.c_str() + name, &found, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
    if (!is_directory(found, error, path.c_str())) {
        if (::unlinkat(base, path.c_str() + name, 0) != 0) throw_errno_exception(errno, path, {});
        return;
    }
    auto stream = posix::detail::open_directory_stream(base, path.c_str() + name, O_NOFOLLOW);
    int verdict = stream == nullptr ? errno : 0;
    if (stream != nullptr) {
        std::size_t const length = path.size();
        while (::dirent const* const entry = posix::detail::next_entry(stream.get())) {
            (path += traits::PATHNAME_SEPARATOR_CHARACTER) += entry->d_name;
            remove_in(::dirfd(stream.get()), path, length + 1);
            path.resize(length);
        }
        verdict = errno;
        close_stream(std::move(stream));
    }
    remove_emptied(verdict, base, path, name);
}

void remove_tree(int base, std::string& dir);

/// Removes the contents of the directory `dir`. Returns 0 if it was read to its end and was still a
/// directory and not a link before each removal, else the error number. `dir` doubles as the buffer
/// for entry paths.
int remove_entries(int base, std::string& dir) {
    posix::detail::dir_stream stream(uninterrupted([&] { return ::opendir(dir.c_str()); }));
    if (stream == nullptr) throw_errno_exception(errno, dir, {});
    std::size_t const dir_length = dir.size();
    int verdict = 0;
    for (;;) {
        ::dirent const* const entry = posix::detail::next_entry(stream.get());
        if (entry == nullptr) {
            verdict = errno;
            break;
        }
        dir += traits::PATHNAME_SEPARATOR_CHARACTER;
        dir += entry->d_name;
        struct stat found;
        int const error = ::lstat(dir.c_str(), &found) == 0 ? 0 : errno;
        bool const is_overlong = error == ENAMETOOLONG;
        bool const descend = !is_overlong && is_directory(found, error, dir.c_str());
        dir[dir_length] = '\0';  // the directory itself, in place
        file_descriptor opened(posix::detail::open_directory(base, dir.c_str(), O_NOFOLLOW));
        verdict = opened.get() == -1 ? errno : 0;
        dir[dir_length] = traits::PATHNAME_SEPARATOR_CHARACTER;
        if (verdict != 0) break;
        if (is_overlong) {
            remove_in(opened.get(), dir, dir_length + 1);
        } else {
            opened.reset(-1);  // opening it was the test
            if (descend)
                remove_tree(base, dir);
            else
                remove_by(&::unlink, dir.c_str());
        }
        dir.resize(dir_length);
    }
    dir.resize(dir_length);
    close_stream(std::move(stream));
    return verdict;
}

/// Removes the directory `dir` and its contents. `dir` is unchanged afterwards.
void remove_tree(int base, std::string& dir) {
    int verdict = directory_verdict(base, dir.c_str());
    if (verdict == 0) verdict = remove_entries(base, dir);
    remove_emptied(verdict, base, dir, 0);
}

void remove_impl(std::u16string const& native) {
    if (native.empty()) return;
    detail::system_path const path8(native);
    remove_by(is_directory(path8.c_str()) ? &::rmdir : &::unlink, path8.c_str());
}

bool remove_if_exists_impl(std::u16string const& native) {
    if (native.empty()) return false;
    detail::system_path const path8(native);
    struct stat found;
    bool const gone = ::lstat(path8.c_str(), &found) == 0 &&
                      (S_ISDIR(found.st_mode) ? ::rmdir : ::unlink)(path8.c_str()) == 0;
    if (!gone && errno != ENOENT) throw_errno_exception(errno, path8.c_str(), {});
    return gone;
}

void remove_file_impl(std::u16string const& native) {
    if (!native.empty()) unlink_path(detail::system_path(native).c_str());
}

void remove_directory_impl(std::u16string const& native) {
    if (!native.empty()) remove_by(&::rmdir, detail::system_path(native).c_str());
}

void remove_all_impl(std::u16string const& native) {
    if (native.empty()) return;
    std::string path8 = detail::system_path(native).string();
    if (!is_directory(path8.c_str())) return remove_by(&::unlink, path8.c_str());
    posix::detail::open_converters();  // before all descriptors are in use
    remove_tree(AT_FDCWD, path8);
}

void remove_impl(std::u16string const& native, unsigned int type) {
    if (type == file_status::directory_file)
        remove_directory_impl(native);
    else
        remove_file_impl(native);
}

}  // namespace

void remove(upath const& p) { remove_impl(native_text(p)); }
void remove(std::u16string const& p) { remove_impl(native_text(p)); }

bool remove_if_exists(upath const& p) { return remove_if_exists_impl(native_text(p)); }
bool remove_if_exists(std::u16string const& p) { return remove_if_exists_impl(native_text(p)); }

void remove(upath const& p, unsigned int type) { remove_impl(native_text(p), type); }
void remove(std::u16string const& p, unsigned int type) { remove_impl(native_text(p), type); }

void remove_file(upath const& p) { remove_file_impl(native_text(p)); }
void remove_file(std::u16string const& p) { remove_file_impl(native_text(p)); }

void remove_directory(upath const& p) { remove_directory_impl(native_text(p)); }
void remove_directory(std::u16string const& p) { remove_directory_impl(native_text(p)); }

void remove_symlink(upath const& p) { remove_file_impl(native_text(p)); }
void remove_symlink(std::u16string const& p) { remove_file_impl(native_text(p)); }

void remove_all(upath const& p) { remove_all_impl(native_text(p)); }
void remove_all(std::u16string const& p) { remove_all_impl(native_text(p)); }

}  // namespace ko::filesystem
