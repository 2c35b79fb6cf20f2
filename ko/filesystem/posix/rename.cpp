#include <ko/filesystem/rename.hpp>

#include <cerrno>
#include <cstdio>
#include <string>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/device_move.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/fault_path.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

void rename_impl(std::u16string const& from, std::u16string const& to,
                 rename_options const& options) {
    detail::reject_empty_path(from);
    detail::reject_empty_path(to);
    detail::system_path const from8(from);
    detail::system_path const to8(to);
    errno = 0;
    if (::rename(from8.c_str(), to8.c_str()) == 0) return;
    int error = errno;
    if (error == EXDEV) error = detail::move_across_devices(from8.string(), to8.string(), options);
    if (error == 0) return;
    switch (detail::blame_for_rename(error, detail::from_filesystem_strict(from8.string()))) {
        case detail::blame::source: detail::throw_errno_exception(error, from8.c_str(), {});
        case detail::blame::destination: detail::throw_errno_exception(error, to8.c_str(), {});
        case detail::blame::both: detail::throw_errno_exception(error, from8.c_str(), to8.c_str());
    }
}

}  // namespace

void rename(upath const& from, upath const& to, rename_options const& options) {
    rename_impl(native_text(from), native_text(to), options);
}
void rename(std::u16string const& from, std::u16string const& to, rename_options const& options) {
    rename_impl(native_text(from), native_text(to), options);
}

}  // namespace ko::filesystem
