#include <ko/filesystem/status.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

template <class Path>
[[gnu::noinline]] int examine(Path const& p, detail::stat_function call, struct stat& found) {
    native_text const native(p);
    if (native.empty()) return ENOENT;
    int error = 0;
    detail::system_path const path8(native, error);
    return error != 0 ? error : detail::examine(call, path8.c_str(), found);
}

template <class Path>
file_status status_impl(Path const& p, detail::stat_function call) {
    struct stat found;
    int const error = examine(p, call, found);
    // At this point there is nothing to destroy: unwinding would cost more than the report.
    if (error == 0) return detail::to_file_status(found);
    if (error == ENOENT || error == EINVAL) return {};
    detail::throw_errno_exception(error, {});
}

template <class Path>
bool exists_impl(Path const& p) {
    struct stat found;
    return detail::exists_at(&::stat, native_text(p), found);
}

template <class Path>
bool has_type(Path const& p, detail::stat_function call, mode_t type) {
    struct stat found;
    return detail::exists_at(call, native_text(p), found) && (found.st_mode & S_IFMT) == type;
}

file_status_light status_light_by_stat(char const* path8) {
    struct stat found;
    int const error = detail::examine(&::stat, path8, found);
    if (error == ENOENT || error == EINVAL) return {};
    if (error != 0) detail::throw_errno_exception(error, path8);
    file_status_light result;
    result.type = found.st_mode & file_status::file_type_mask;
    result.last_write_time = detail::to_ptime(detail::write_time(found));
    result.size = static_cast<std::uint64_t>(found.st_size);
    return result;
}

}  // namespace

bool exists(upath const& p) { return exists_impl(p); }
bool exists(std::u16string const& p) { return exists_impl(p); }

bool is_directory(upath const& p) { return has_type(p, &::stat, S_IFDIR); }
bool is_directory(std::u16string const& p) { return has_type(p, &::stat, S_IFDIR); }

bool is_regular_file(upath const& p) { return has_type(p, &::stat, S_IFREG); }
bool is_regular_file(std::u16string const& p) { return has_type(p, &::stat, S_IFREG); }

bool is_symlink(upath const& p) { return has_type(p, &::lstat, S_IFLNK); }
bool is_symlink(std::u16string const& p) { return has_type(p, &::lstat, S_IFLNK); }

file_status status(upath const& p) { return status_impl(p, &::stat); }
file_status status(std::u16string const& p) { return status_impl(p, &::stat); }

file_status symlink_status(upath const& p) { return status_impl(p, &::lstat); }
file_status symlink_status(std::u16string const& p) { return status_impl(p, &::lstat); }

file_status_light status_express_light(std::u16string const& p) {
    if (p.empty()) return {};
    int error = 0;
    detail::system_path const path8(p, error);
    return error != 0 ? file_status_light() : status_light_by_stat(path8.c_str());
}

}  // namespace ko::filesystem
