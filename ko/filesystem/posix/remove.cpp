#include <ko/filesystem/remove.hpp>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/directory_stream.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_call.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::errno_of;
using detail::native_text;
using detail::throw_errno_exception;

using traits = pathname_traits<char>;

/// Throws the exception for `error`, unless it is 0.
void report(int error, std::string_view path8) {
    if (error != 0) throw_errno_exception(error, path8);
}

auto removal_of(struct stat const& found) noexcept {
    return S_ISDIR(found.st_mode) ? &::rmdir : &::unlink;
}

// The walk of `remove_all`. These return the error number of a failure, or 0. After a failure `path`
// is the one to be reported, else it is unchanged.

/// Returns `error` for a report that deliberately has no path.
int without_path(int error, std::string& path) noexcept {
    if (error != 0) path.clear();
    return error;
}

int close_stream(detail::dir_stream stream, std::string& path) noexcept {
    return without_path(errno_of(::closedir(stream.release())), path);
}

/// Removes the emptied directory `path`, which for calls is its text from `name` on in `base`. What
/// follows if it was not emptied, but there is an error number, `verdict`.
int remove_emptied(int verdict, int base, std::string const& path, std::size_t name) noexcept {
    char const* const entry = path.c_str() + name;
    switch (verdict) {
        case 0:
            return errno_of(base == AT_FDCWD ? ::rmdir(entry)
                                             : ::unlinkat(base, entry, AT_REMOVEDIR));
        case ENOENT: return 0;  // already removed by someone else
        case ENOTDIR:
        case ELOOP: return errno_of(::unlinkat(base, entry, 0));  // a link, by O_NOFOLLOW
        default: return verdict;
    }
}

/// Removes `path`, which is too long for calls, by its text from `name` on in the open directory
/// `base`, and everything below it in the same way.
int remove_in(int base, std::string& path, std::size_t name) {
    struct stat found;
    int error = detail::examine_below(base, path.c_str() + name, found);
    if (error != 0) return error == ENOENT ? without_path(error, path) : error;
    if (!S_ISDIR(found.st_mode)) return errno_of(::unlinkat(base, path.c_str() + name, 0));
    auto stream = detail::open_directory_stream(base, path.c_str() + name, O_NOFOLLOW);
    int verdict = stream == nullptr ? errno : 0;
    if (stream != nullptr) {
        std::size_t const length = path.size();
        while (::dirent const* const entry = detail::next_entry(stream.get())) {
            (path += traits::PATHNAME_SEPARATOR_CHARACTER) += entry->d_name;
            error = remove_in(::dirfd(stream.get()), path, length + 1);
            if (error != 0) return error;
            path.resize(length);
        }
        verdict = errno;
        error = close_stream(std::move(stream), path);
        if (error != 0) return error;
    }
    return remove_emptied(verdict, base, path, name);
}

int remove_tree(int base, std::string& path);

/// Removes the entry `path` of the directory that is its text up to `length`, which is opened to see
/// that it still is a directory and not a link; if it isn't, sets `verdict` to the error number.
int remove_entry(int base, std::string& path, std::size_t length, int& verdict) {
    struct stat found;
    int const error = detail::examine(&::lstat, path.c_str(), found);
    if (error == ENOENT) return without_path(error, path);
    if (error != 0 && error != ENAMETOOLONG) return error;
    path[length] = '\0';  // the directory, in place
    detail::file_descriptor opened(detail::open_directory(base, path.c_str(), O_NOFOLLOW));
    if (opened.get() == -1) verdict = errno;
    path[length] = traits::PATHNAME_SEPARATOR_CHARACTER;
    if (verdict != 0) return 0;
    if (error == ENAMETOOLONG) return remove_in(opened.get(), path, length + 1);
    opened.reset(-1);  // opening it was the test
    return S_ISDIR(found.st_mode) ? remove_tree(base, path) : errno_of(::unlink(path.c_str()));
}

/// Removes the contents of the directory `path`. Sets `verdict` to 0 if it was read to its end and
/// was still a directory and not a link before each removal, else to the error number.
int remove_entries(int base, std::string& path, int& verdict) {
    detail::dir_stream stream(detail::uninterrupted([&] { return ::opendir(path.c_str()); }));
    if (stream == nullptr) return errno;
    std::size_t const length = path.size();
    verdict = 0;
    while (verdict == 0) {
        ::dirent const* const entry = detail::next_entry(stream.get());
        if (entry == nullptr) {
            verdict = errno;
            break;
        }
        (path += traits::PATHNAME_SEPARATOR_CHARACTER) += entry->d_name;
        int const error = remove_entry(base, path, length, verdict);
        if (error != 0) return error;
        path.resize(length);
    }
    return close_stream(std::move(stream), path);
}

/// Removes the directory `path` and its contents.
int remove_tree(int base, std::string& path) {
    int verdict = detail::directory_error(base, path.c_str());
    int const error = verdict == 0 ? remove_entries(base, path, verdict) : 0;
    return error != 0 ? error : remove_emptied(verdict, base, path, 0);
}

/// What `path8` is, links not followed.
struct stat examined(char const* path8) {
    struct stat found;
    int const error = detail::examine(&::lstat, path8, found);
    // A missing one deliberately without the path, unlike in removals that don't check the type.
    report(error, error == ENOENT ? "" : path8);
    return found;
}

void remove_impl(std::u16string const& native) {
    if (native.empty()) return;
    detail::system_path const path8(native);
    auto const remove = removal_of(examined(path8.c_str()));
    report(errno_of(remove(path8.c_str())), path8.c_str());
}

bool remove_if_exists_impl(std::u16string const& native) {
    if (native.empty()) return false;
    detail::system_path const path8(native);
    struct stat found;
    int error = detail::examine(&::lstat, path8.c_str(), found);
    if (error == 0) error = errno_of(removal_of(found)(path8.c_str()));
    if (error != ENOENT) report(error, path8.c_str());
    return error == 0;
}

void remove_file_impl(std::u16string const& native) {
    if (native.empty()) return;
    detail::system_path const path8(native);
    int const error = errno_of(::unlink(path8.c_str()));
    // macOS reports EPERM for a directory; callers get the same exception as on Linux.
    report(error == EPERM ? EISDIR : error, path8.c_str());
}

void remove_directory_impl(std::u16string const& native) {
    if (native.empty()) return;
    detail::system_path const path8(native);
    report(errno_of(::rmdir(path8.c_str())), path8.c_str());
}

void remove_all_impl(std::u16string const& native) {
    if (native.empty()) return;
    std::string path8 = detail::system_path(native).string();
    bool const is_directory = S_ISDIR(examined(path8.c_str()).st_mode);
    if (is_directory) posix::detail::open_converters();  // before all descriptors are in use
    int const error =
        is_directory ? remove_tree(AT_FDCWD, path8) : errno_of(::unlink(path8.c_str()));
    report(error, path8);
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
