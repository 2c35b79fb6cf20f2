#include <ko/filesystem/rename.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/posix/device_move.hpp>
#include <ko/filesystem/posix/durability.hpp>
#include <ko/filesystem/posix/fault_path.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

// These return the error number of a failure, or 0.

int move(std::string const& from8, std::string const& to8, bool preserve_last_write_time) {
    errno = 0;
    int const error = ::rename(from8.c_str(), to8.c_str()) == 0 ? 0 : errno;
    if (error != EXDEV) return error;
    return detail::move_across_devices(from8, to8, preserve_last_write_time);
}

int sync_contents(char const* path8) noexcept {
    struct stat found;
    int error = detail::examine(&::lstat, path8, found);
    if (error != 0) return error;
    if (S_ISREG(found.st_mode)) return detail::sync_file(path8);
    if (!S_ISDIR(found.st_mode)) return 0;
    error = detail::sync_file_system(path8);
    return error == ENOTSUP ? detail::sync_file(path8) : error;
}

int move_durably(std::string const& from8, std::string const& to8) {
    using detail::algorithm::parent_path;
    int error = sync_contents(from8.c_str());
    if (error == 0) error = move(from8, to8, /*preserve_last_write_time=*/false);
    if (error == 0) error = detail::sync_directory_of(to8);
    if (error == 0 && parent_path<char>(from8) != parent_path<char>(to8))
        error = detail::sync_directory_of(from8);
    return error;
}

/// Moves by `way`, which takes both paths in UTF-8 and returns an error number.
template <class Way>
void rename_by(Way way, std::u16string const& from, std::u16string const& to) {
    detail::reject_empty_path(from);
    detail::reject_empty_path(to);
    std::string const from8 = detail::system_path(from).string();
    std::string const to8 = detail::system_path(to).string();
    int const error = way(from8, to8);
    if (error == 0) return;
    switch (detail::blame_for_rename(error, from)) {
        case detail::blame::source: detail::throw_errno_exception(error, from8);
        case detail::blame::destination: detail::throw_errno_exception(error, to8);
        case detail::blame::both: detail::throw_errno_exception(error, from8, to8);
    }
}

void rename_impl(std::u16string const& from, std::u16string const& to,
                 rename_options const& options) {
    bool const preserve = options.preserve_last_write_time != 0;
    rename_by([=](auto const& from8, auto const& to8) { return move(from8, to8, preserve); }, from,
              to);
}

}  // namespace

void rename(upath const& from, upath const& to, rename_options const& options) {
    rename_impl(native_text(from), native_text(to), options);
}
void rename(std::u16string const& from, std::u16string const& to, rename_options const& options) {
    rename_impl(native_text(from), native_text(to), options);
}

void rename_durably(upath const& from, upath const& to) {
    rename_by(&move_durably, native_text(from), native_text(to));
}
void rename_durably(std::u16string const& from, std::u16string const& to) {
    rename_by(&move_durably, native_text(from), native_text(to));
}

}  // namespace ko::filesystem
