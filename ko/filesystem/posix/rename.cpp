#include <ko/filesystem/rename.hpp>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/fault_path.hpp>
#include <ko/filesystem/posix/native_text.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

void transfer_write_times(std::filesystem::path const& from, std::filesystem::path const& to) {
    namespace fs = std::filesystem;
    if (fs::is_regular_file(from) && fs::is_regular_file(to))
        return fs::last_write_time(to, fs::last_write_time(from));
    if (!fs::is_directory(from) || !fs::is_directory(to)) return;
    // Real paths, so that a link which leaves the tree takes its time out of the copy as well.
    fs::path const root = fs::weakly_canonical(from);
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(from)) {
        if (!entry.is_regular_file()) continue;
        fs::path const below = fs::weakly_canonical(entry).lexically_relative(root);
        fs::last_write_time(to / below, fs::last_write_time(entry));
    }
}

/// The error number of `step`, which takes an error code, or 0. Some standard libraries still throw
/// what goes wrong while such a step reads a directory.
template <class Step>
int error_of(Step step) try {
    std::error_code error;
    step(error);
    return error.value();
} catch (std::filesystem::filesystem_error const& thrown) {
    return thrown.code().value();
}

/// Sets `code` unless all that the directory `from8` holds is in `to8`. Some standard libraries end a
/// copy without an error where the listing of a directory breaks off, and the source goes next.
void check_copied(std::string const& from8, std::string const& to8, std::error_code& code) {
    namespace fs = std::filesystem;
    if (!fs::is_directory(fs::symlink_status(from8, code))) return;
    for (fs::recursive_directory_iterator entry(from8, code), end; !code && entry != end;
         entry.increment(code)) {
        std::string const copied8 = to8 + entry->path().native().substr(from8.size());
        if (fs::symlink_status(copied8, code).type() == fs::file_type::not_found)
            code = std::make_error_code(std::errc::io_error);
        if (code) return;
    }
}

/// Moves by copying and removing. Gives the error number of the step that failed, or 0.
int move_across_devices(std::string const& from8, std::string const& to8,
                        rename_options const& options) {
    namespace fs = std::filesystem;
    constexpr auto copy_options = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
    int error = error_of([&](auto& code) { fs::copy(from8, to8, copy_options, code); });
    if (error == 0) error = error_of([&](auto& code) { check_copied(from8, to8, code); });
    if (error != 0) return error;
    if (options.preserve_last_write_time != 0) transfer_write_times(from8, to8);
    return error_of([&](auto& code) { fs::remove_all(from8, code); });
}

void rename_impl(std::u16string const& from, std::u16string const& to,
                 rename_options const& options) {
    detail::reject_empty_path(from);
    detail::reject_empty_path(to);
    detail::system_path const from8(from);
    detail::system_path const to8(to);
    errno = 0;
    if (::rename(from8.c_str(), to8.c_str()) == 0) return;
    int error = errno;
    if (error == EXDEV) error = move_across_devices(from8.string(), to8.string(), options);
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
