#include <ko/filesystem/create.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/link_maker.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

/// Makes a directory. Returns the error number, or 0, also for a failure that leaves errno at 0.
int make_directory(char const* path8) noexcept {
    errno = 0;
    return ::mkdir(path8, 0775) == 0 ? 0 : errno;
}

void reject_root(std::string_view path8) {
    if (path8 == "/") detail::throw_errno_exception(EEXIST, path8, {});
}

void create_directory_impl(std::u16string const& native) {
    detail::system_path const path8(native);
    reject_root(path8.c_str());
    int const error = make_directory(path8.c_str());
    if (error != 0) detail::throw_errno_exception(error, path8.c_str(), {});
}

void create_directories_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    std::string path8 = detail::system_path(native).string();
    reject_root(path8);
    for (std::size_t end = path8.find('/', 1); end != path8.npos; end = path8.find('/', end + 1)) {
        path8[end] = '\0';  // the prefix, in place
        int const error = make_directory(path8.c_str());
        // Anything that exists is accepted, even a file: the next step reports that.
        if (error != 0 && error != EEXIST) detail::throw_errno_exception(error, path8.c_str(), {});
        path8[end] = '/';
    }
    int const error = make_directory(path8.c_str());
    if (error != 0) detail::throw_errno_exception(error, path8, {});
}

bool is_directory(char const* path8) noexcept {
    struct stat found;
    return ::stat(path8, &found) == 0 && S_ISDIR(found.st_mode);
}

bool ensure_directories_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    std::string path8 = detail::system_path(native).string();
    // In most cases it exists, or its parent does.
    if (is_directory(path8.c_str())) return false;
    if (make_directory(path8.c_str()) == 0) return true;
    for (std::size_t end = path8.find('/', 1); end != path8.npos; end = path8.find('/', end + 1)) {
        path8[end] = '\0';  // the prefix, in place
        int const error = make_directory(path8.c_str());
        // For an existing directory, the error may also be EROFS or EACCES, for example.
        if (error != 0 && error != EEXIST && !is_directory(path8.c_str()))
            detail::throw_errno_exception(error, path8.c_str(), {});
        path8[end] = '/';
    }
    int const error = make_directory(path8.c_str());
    if (error != 0 && !is_directory(path8.c_str())) detail::throw_errno_exception(error, path8, {});
    return error == 0;
}

}  // namespace

void create_directory(upath const& p) { create_directory_impl(native_text(p)); }
void create_directory(std::u16string const& p) { create_directory_impl(native_text(p)); }

void create_directories(upath const& p) { create_directories_impl(native_text(p)); }
void create_directories(std::u16string const& p) { create_directories_impl(native_text(p)); }

bool ensure_directories(upath const& p) { return ensure_directories_impl(native_text(p)); }
bool ensure_directories(std::u16string const& p) { return ensure_directories_impl(native_text(p)); }

void create_hard_link(upath const& existing, upath const& link) {
    detail::make_hard_link(native_text(existing), native_text(link));
}
void create_hard_link(std::u16string const& existing, std::u16string const& link) {
    detail::make_hard_link(native_text(existing), native_text(link));
}

void create_symlink(upath const& target, upath const& link, unsigned int type) {
    detail::make_link(native_text(target), native_text(link), type);
}
void create_symlink(std::u16string const& target, std::u16string const& link, unsigned int type) {
    detail::make_link(native_text(target), native_text(link), type);
}

}  // namespace ko::filesystem
