#include <ko/filesystem/status.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

template <class Path>
[[gnu::noinline]] std::optional<int> try_status(Path const& p, detail::stat_function stat_or_lstat,
                                                file_status& result) try {
    native_text const native(p);
    if (native.empty()) return std::nullopt;
    return detail::try_status(stat_or_lstat, detail::system_path(native).c_str(), result);
} catch (InvalidArgument const&) {
    return EINVAL;  // U+0000, as if reported by the system
}

template <class Path>
file_status status_impl(Path const& p, detail::stat_function stat_or_lstat) {
    file_status result;
    auto const error = try_status(p, stat_or_lstat, result);
    // At this point there is nothing to destroy: unwinding would cost more than the report.
    if (error && *error != EINVAL) detail::throw_errno_exception(*error, {}, {});
    return result;
}

template <class Path>
bool has_type(Path const& p, detail::stat_function stat_or_lstat, mode_t type) try {
    native_text const native(p);
    if (native.empty()) return false;
    detail::system_path const path8(native);
    struct stat found;
    if (stat_or_lstat(path8.c_str(), &found) == 0) return (found.st_mode & S_IFMT) == type;
    if (detail::means_absent(errno)) return false;
    detail::throw_errno_exception(errno, path8.c_str(), {});
} catch (InvalidArgument const&) {
    return false;  // U+0000 or EINVAL, as for `exists`
}

}  // namespace

bool exists(upath const& p) { return detail::exists_native(native_text(p)); }
bool exists(std::u16string const& p) { return detail::exists_native(native_text(p)); }

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
    try {
        return detail::status_light_by_stat(detail::system_path(p).c_str());
    } catch (InvalidArgument const&) {
        return {};  // U+0000: like EINVAL from the system, which means absent here
    }
}

}  // namespace ko::filesystem
