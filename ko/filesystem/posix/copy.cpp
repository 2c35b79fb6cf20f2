#include <ko/filesystem/copy.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/system/error_code.hpp>
#include <boost/version.hpp>

#include <ko/filesystem/create.hpp>
#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/boost_error.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/file_identity.hpp>
#include <ko/filesystem/posix/link_maker.hpp>
#include <ko/filesystem/posix/link_reader.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/status.hpp>

namespace ko::filesystem {

namespace detail {

namespace {

using boost::system::error_code;
namespace boost_fs = boost::filesystem;

bool has(copy_option options, copy_option any_of) noexcept {
    return (options & any_of) != copy_option::none;
}

constexpr copy_option existence_options =
    copy_option::overwrite_if_exists | copy_option::skip_existing | copy_option::update_existing;

void validate(copy_option options) {
    constexpr copy_option links = copy_option::copy_symlinks | copy_option::skip_symlinks;
    if ((options & links) == links)
        throw_invalid_argument(
            "Invalid combination selected: copy_symlinks & skip_symlinks cannot be used together");
    auto const chosen = static_cast<unsigned>(options & existence_options);
    if ((chosen & (chosen - 1)) != 0)  // more than one
        throw_invalid_argument(
            "Invalid combination selected: overwrite_if_exists, skip_existing & update_existing "
            "cannot be used together");
}

/// A directory whose content is being copied, and those that contain it.
struct copied_directory {
    std::string path8;
    std::optional<file_identity> identity;
    /// The target's and all above it, none of which may be met on the way down.
    std::vector<file_identity> const* above_target;
    copied_directory const* outer;
};

// Files

constexpr boost_fs::copy_options file_copy_options(bool overwrite) noexcept {
#if BOOST_VERSION >= 108500
    auto const options = boost_fs::copy_options::ignore_attribute_errors;
#else
    auto const options = boost_fs::copy_options::none;
#endif
    return overwrite ? options | boost_fs::copy_options::overwrite_existing : options;
}

/// The error number for what Boost would not survive or the file would not, else 0. Boost opens
/// before it looks: a pipe blocks it for ever, and a target is empty before it is compared.
/// `is_regular` when that much is known of the source.
int refusal(char const* from8, char const* to8, bool overwrite, bool is_regular) noexcept {
    if (is_regular && !overwrite) return 0;
    struct stat source;
    if (::stat(from8, &source) != 0) return 0;
    if (S_ISFIFO(source.st_mode)) return ENOSYS;
    struct stat target;
    if (!overwrite || ::stat(to8, &target) != 0) return 0;
    if (S_ISFIFO(target.st_mode)) return ENOSYS;
    bool const onto_itself = file_identity(source) == file_identity(target);
    return onto_itself && S_ISREG(source.st_mode) ? EEXIST : 0;
}

void copy_file_by_boost(std::u16string const& from, std::u16string const& to, bool overwrite,
                        bool is_regular) {
    system_path const from8(from);
    system_path const to8(to);
    error_code ec(refusal(from8.c_str(), to8.c_str(), overwrite, is_regular),
                  boost::system::system_category());
    if (!ec.failed())
        boost_fs::copy_file(from8.c_str(), to8.c_str(), file_copy_options(overwrite), ec);
    if (ec.failed()) throw_copy_error_code_exception(ec, from, to);
}

bool is_up_to_date(std::u16string const& from, std::u16string const& to) {
    file_status const target = status(to);
    if (target.type != file_status::regular_file) return false;
    file_status const source = status(from);
    // A missing source counts as newer, so that the copy reports it.
    return source.type != file_status::file_not_found &&
           target.last_write_time >= source.last_write_time;
}

void copy_file_impl(std::u16string const& from, std::u16string const& to, copy_option options,
                    bool is_regular) {
    reject_empty_path(from);
    reject_empty_path(to);
    if (has(options, copy_option::skip_existing)) {
        // All other options are dropped, create_symlinks included.
        if (!exists(to)) copy_file_by_boost(from, to, /*overwrite=*/false, is_regular);
    } else if (has(options, copy_option::update_existing)) {
        if (!is_up_to_date(from, to)) copy_file_by_boost(from, to, /*overwrite=*/true, is_regular);
    } else if (has(options, copy_option::create_symlinks)) {
        create_symlink(from, to, file_status::file_type_auto);
    } else {
        copy_file_by_boost(from, to, has(options, copy_option::overwrite_if_exists), is_regular);
    }
}

// Links

/// The text of the link at `path8`.
std::u16string link_target(char const* path8) {
    std::u16string target = read_link_target(path8);
    if (target.empty()) throw_invalid_argument("Target of the symbolic link does not exist");
    return target;
}

void copy_symlink_impl(std::u16string const& from, std::u16string const& to) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    file_status const source = read_status(&::lstat, from8.c_str());
    // Deliberately without the path, as in `copy`.
    if (source.type == file_status::file_not_found) throw cloneable(PathNotFound({}));
    if (source.type != file_status::symlink_file)
        throw_invalid_argument("Non-symbolic link file is not permitted");
    make_link(link_target(from8.c_str()), to, file_status::file_type_auto);
}

// Directories

void copy_any(std::u16string const& from, std::u16string const& to, copy_option options,
              copied_directory const* outer);

void copy_directory_impl(std::u16string const& from, std::u16string const& to) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    system_path const to8(to);
    error_code ec;
    boost_fs::create_directory(to8.c_str(), from8.c_str(), ec);
    if (ec.failed()) throw_copy_error_code_exception(ec, from, to);
}

/// Copies everything in the directory `listed` into the existing directory `to`.
void copy_entries(copied_directory const& listed, std::u16string const& to, copy_option options) {
    std::u16string const source = from_filesystem_strict(listed.path8);
    std::u16string const destination = make_native_form(to, /*expand_tilde=*/true);
    // Without an error code: what goes wrong in the listing leaves as Boost reports it.
    for (boost_fs::directory_iterator entry(make_access_form(listed.path8)), end; entry != end;
         ++entry) {
        std::string const& path8 = entry->path().native();
        std::u16string const name = from_filesystem_strict(algorithm::filename<char>(path8));
        std::u16string target = destination;
        // The tilde of a name like "~x" is expanded here; that is meant.
        if (!name.empty()) concatenate_pathname(target, name, /*expand_tilde=*/true);
        // A name that isn't UTF-8 has no path.
        std::u16string const path =
            name.empty() ? std::u16string() : algorithm::joined<char16_t>(source, name);
        copy_any(path, target, options, &listed);
    }
}

void copy_directory_contents(std::u16string const& from, std::u16string const& to,
                             copy_option options, copied_directory const* outer) {
    if (has(options, copy_option::create_symlinks))
        return create_symlink(from, to, file_status::file_type_auto);
    if (!has(options, copy_option::recursive)) return copy_directory(from, to);

    bool const to_exists = exists(to);
    if (to_exists && !has(options, existence_options)) throw cloneable(FileExistsError(to));

    std::string const to8 = system_path(native_text(to)).string();
    std::vector<file_identity> above_to;
    copied_directory listed{system_path(native_text(from)).string(), {}, &above_to, outer};
    listed.identity = identify(listed.path8.c_str());
    // A directory that is made beside others lies where its parent does.
    if (outer == nullptr || to_exists)
        above_to = directories_above(to8);
    else
        listed.above_target = outer->above_target;
    for (file_identity const& above : *listed.above_target)
        if (listed.identity == above) throw_errno_exception(EINVAL, listed.path8, to8);

    if (!to_exists) create_directories(to);
    copy_entries(listed, to, options);
}

// Anything

/// Copies what the link `from` points to.
void copy_followed(std::u16string const& from, char const* from8, std::u16string const& to,
                   copy_option options, copied_directory const* outer) {
    std::u16string const target = link_target(from8);
    // Deliberately looked up as it stands: a relative target counts from the working directory, and
    // of a link to a link nothing is copied.
    system_path const target8(target);
    file_status const found = read_status(&::lstat, target8.c_str());
    if (found.type == file_status::file_not_found) throw cloneable(PathNotFound(from));
    if (found.type == file_status::regular_file)
        return copy_file_impl(target, to, options, /*is_regular=*/true);
    if (found.type != file_status::directory_file) return;
    auto const identity = identify(system_path(native_text(target)).c_str());
    for (copied_directory const* above = outer; above != nullptr; above = above->outer)
        if (identity && identity == above->identity) throw_errno_exception(ELOOP, from8, {});
    copy_directory_contents(target, to, options, outer);
}

void copy_any(std::u16string const& from, std::u16string const& to, copy_option options,
              copied_directory const* outer) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    switch (read_status(&::lstat, from8.c_str()).type) {
        case file_status::file_not_found:
            throw cloneable(PathNotFound({}));  // deliberately without the path
        case file_status::symlink_file:
            if (has(options, copy_option::copy_symlinks)) return copy_symlink_impl(from, to);
            if (has(options, copy_option::skip_symlinks)) return;
            return copy_followed(from, from8.c_str(), to, options, outer);
        case file_status::regular_file:
            return copy_file_impl(from, to, options, /*is_regular=*/true);
        case file_status::directory_file: return copy_directory_contents(from, to, options, outer);
        default: throw_invalid_argument("Unsupported file type");
    }
}

}  // namespace

}  // namespace detail

using detail::native_text;

void copy(upath const& from, upath const& to, copy_option options) {
    detail::validate(options);
    detail::copy_any(native_text(from), native_text(to), options, nullptr);
}
void copy(std::u16string const& from, std::u16string const& to, copy_option options) {
    detail::validate(options);
    detail::copy_any(native_text(from), native_text(to), options, nullptr);
}

void copy_file(upath const& from, upath const& to, copy_option options) {
    detail::validate(options);
    detail::copy_file_impl(native_text(from), native_text(to), options, /*is_regular=*/false);
}
void copy_file(std::u16string const& from, std::u16string const& to, copy_option options) {
    detail::validate(options);
    detail::copy_file_impl(native_text(from), native_text(to), options, /*is_regular=*/false);
}

void copy_directory(upath const& from, upath const& to) {
    detail::copy_directory_impl(native_text(from), native_text(to));
}
void copy_directory(std::u16string const& from, std::u16string const& to) {
    detail::copy_directory_impl(native_text(from), native_text(to));
}

void copy_symlink(upath const& from, upath const& to) {
    detail::copy_symlink_impl(from.native(), to.native());
}
void copy_symlink(std::u16string const& from, std::u16string const& to) {
    detail::copy_symlink_impl(from, to);  // as given: no native form
}

}  // namespace ko::filesystem
