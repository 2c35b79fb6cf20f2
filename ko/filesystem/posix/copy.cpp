#include <ko/filesystem/copy.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
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
#include <ko/filesystem/posix/foreign_rights.hpp>
#include <ko/filesystem/posix/link_maker.hpp>
#include <ko/filesystem/posix/link_reader.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>
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

// Files

constexpr boost_fs::copy_options file_copy_options(bool overwrite) noexcept {
#if BOOST_VERSION >= 108500
    auto const options = boost_fs::copy_options::ignore_attribute_errors;
#else
    auto const options = boost_fs::copy_options::none;
#endif
    return overwrite ? options | boost_fs::copy_options::overwrite_existing : options;
}

/// The error number if Boost would block or lose data, else 0. Boost opens files before it checks
/// them: a pipe blocks it for ever, and the target is truncated before it is compared.
/// `mode` is that of the source, 0 if not yet known; then it is set.
int refusal(char const* from8, char const* to8, bool overwrite, mode_t& mode) noexcept {
    if (S_ISREG(mode) && !overwrite) return 0;
    struct stat source;
    if (::stat(from8, &source) != 0) return 0;
    mode = source.st_mode;
    if (S_ISFIFO(mode)) return ENOSYS;
    struct stat target;
    if (!overwrite || ::stat(to8, &target) != 0) return 0;
    if (S_ISFIFO(target.st_mode)) return ENOSYS;
    bool const onto_itself = file_identity(source) == file_identity(target);
    return onto_itself && S_ISREG(mode) ? EEXIST : 0;
}

void copy_file_by_boost(std::u16string const& from, std::u16string const& to, bool overwrite,
                        mode_t mode) {
    system_path const from8(from);
    system_path const to8(to);
    error_code ec(refusal(from8.c_str(), to8.c_str(), overwrite, mode),
                  boost::system::system_category());
    if (!ec.failed())
        boost_fs::copy_file(from8.c_str(), to8.c_str(), file_copy_options(overwrite), ec);
    if (!ec.failed() && (mode & set_id_bits) != 0)
        ec.assign(drop_foreign_rights(from8.c_str(), to8.c_str()),
                  boost::system::system_category());
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

/// `mode` is that of the source, 0 if not yet known.
void copy_file_impl(std::u16string const& from, std::u16string const& to, copy_option options,
                    mode_t mode) {
    reject_empty_path(from);
    reject_empty_path(to);
    if (has(options, copy_option::skip_existing)) {
        // All other options are ignored, including create_symlinks.
        if (!exists(to)) copy_file_by_boost(from, to, /*overwrite=*/false, mode);
    } else if (has(options, copy_option::update_existing)) {
        if (!is_up_to_date(from, to)) copy_file_by_boost(from, to, /*overwrite=*/true, mode);
    } else if (has(options, copy_option::create_symlinks)) {
        create_symlink(from, to, file_status::file_type_auto);
    } else {
        copy_file_by_boost(from, to, has(options, copy_option::overwrite_if_exists), mode);
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

void copy_directory_impl(std::u16string const& from, std::u16string const& to) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    system_path const to8(to);
    error_code ec;
    boost_fs::create_directory(to8.c_str(), from8.c_str(), ec);
    if (ec.failed()) throw_copy_error_code_exception(ec, from, to);
}

/// Makes the missing directory `to` and every missing one above it.
void make_target(std::u16string const& to, bool has_parent) {
    if (!has_parent) return create_directories(to);
    try {
        create_directory(to);
    } catch (PathNotFound const&) {
        create_directories(to);
    }
}

// Anything

/// The mode bits from stat, which `file_status` has unchanged.
mode_t mode_of(file_status const& found) noexcept {
    return static_cast<mode_t>(found.type | found.permissions);
}

/// One call of `copy`.
class tree_copy {
public:
    explicit tree_copy(copy_option options, copy_observer const& observer) noexcept
        : options_(options), observer_(observer) {}

    void copy(std::u16string const& from, std::u16string const& to) { copy(from, to, nullptr); }

private:
    /// A directory whose contents are being copied, linked to those above it.
    struct level {
        std::string path8;
        std::optional<file_identity> source;
        std::optional<file_identity> target;
        level const* outer;
    };

    bool has(copy_option any_of) const noexcept { return detail::has(options_, any_of); }

    void ask(copy_step const& step, char const* from8);
    void copy(std::u16string const& from, std::u16string const& to, level const* outer);
    void copy_followed(std::u16string const& from, char const* from8, std::u16string const& to,
                       level const* outer);
    void copy_contents(std::u16string const& from, std::u16string const& to, level const* outer,
                       char const* found8);
    void copy_entries(level const& listed, std::u16string const& to);

    void look_above(std::string const& to8);
    bool is_written_to(file_identity const& directory, level const* innermost) const;

    copy_option const options_;
    copy_observer const& observer_;
    std::uint64_t entries_ = 0;
    std::uint64_t bytes_ = 0;
    /// The target of the outermost directory and all directories above it.
    std::vector<file_identity> above_target_;
};

/// Calls the observer, if there is one, and counts the entry as done: after a failure there is no
/// further call.
void tree_copy::ask(copy_step const& step, char const* from8) {
    if (!observer_) return;
    if (!observer_(step)) throw_errno_exception(ECANCELED, from8, system_path(step.to).c_str());
    ++entries_;
    if (step.what.type == file_status::regular_file) bytes_ += step.what.size;
}

void tree_copy::copy(std::u16string const& from, std::u16string const& to, level const* outer) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    file_status const found = read_status(&::lstat, from8.c_str());
    // Deliberately without the path.
    if (found.type == file_status::file_not_found) throw cloneable(PathNotFound({}));
    ask({from, to, found, entries_, bytes_}, from8.c_str());
    switch (found.type) {
        case file_status::symlink_file:
            if (has(copy_option::copy_symlinks)) return copy_symlink_impl(from, to);
            if (has(copy_option::skip_symlinks)) return;
            return copy_followed(from, from8.c_str(), to, outer);
        case file_status::regular_file: return copy_file_impl(from, to, options_, mode_of(found));
        case file_status::directory_file: return copy_contents(from, to, outer, from8.c_str());
        default: throw_invalid_argument("Unsupported file type");
    }
}

/// Copies the target of the link `from`.
void tree_copy::copy_followed(std::u16string const& from, char const* from8,
                              std::u16string const& to, level const* outer) {
    std::u16string const target = link_target(from8);
    // Deliberately as given: a relative target is resolved from the working directory, and nothing
    // is copied for a link to a link.
    system_path const target8(target);
    file_status const found = read_status(&::lstat, target8.c_str());
    if (found.type == file_status::file_not_found) throw cloneable(PathNotFound(from));
    if (found.type == file_status::regular_file)
        return copy_file_impl(target, to, options_, mode_of(found));
    if (found.type == file_status::directory_file) copy_contents(target, to, outer, from8);
}

/// Copies the directory `from`, which was found as `found8`: its own path, or that of a link.
void tree_copy::copy_contents(std::u16string const& from, std::u16string const& to,
                              level const* outer, char const* found8) {
    if (has(copy_option::create_symlinks))
        return create_symlink(from, to, file_status::file_type_auto);
    if (!has(copy_option::recursive)) return copy_directory(from, to);

    level listed{system_path(native_text(from)).string(), {}, {}, outer};
    listed.source = identify(listed.path8.c_str());
    for (level const* above = outer; above != nullptr && listed.source; above = above->outer)
        if (listed.source == above->source) throw_errno_exception(ELOOP, found8, {});

    bool const to_exists = exists(to);
    if (to_exists && !has(existence_options)) throw cloneable(FileExistsError(to));

    std::string const to8 = system_path(native_text(to)).string();
    if (outer == nullptr) look_above(to8);
    if (listed.source && is_written_to(*listed.source, outer))
        throw_errno_exception(EINVAL, listed.path8, to8);

    if (!to_exists) make_target(to, /*has_parent=*/outer != nullptr);
    listed.target = identify(to8.c_str());
    if (listed.source && listed.source == listed.target)
        throw_errno_exception(EINVAL, listed.path8, to8);
    if (outer == nullptr && !to_exists) look_above(to8);  // including what has been made
    copy_entries(listed, to);
}

/// Copies everything in the directory `listed` into the existing directory `to`.
void tree_copy::copy_entries(level const& listed, std::u16string const& to) {
    // Buffers for the paths of the entries, which then need no allocation each.
    std::u16string source = from_filesystem_strict(listed.path8);
    std::u16string target = make_native_form(to, /*expand_tilde=*/true);
    std::size_t const source_length = source.size();
    std::size_t const target_length = target.size();
    // Without an error code: failures of the listing are thrown as Boost's own exceptions.
    for (boost_fs::directory_iterator entry(make_access_form(listed.path8)), end; entry != end;
         ++entry) {
        std::string_view const path8 = entry->path().native();
        std::u16string const name = from_filesystem_strict(algorithm::filename<char>(path8));
        reject_empty_path(name);  // not UTF-8
        concatenate_pathname(source, name, /*expand_tilde=*/false);
        // Deliberately expands the tilde of a name like "~x".
        concatenate_pathname(target, name, /*expand_tilde=*/true);
        copy(source, target, &listed);
        source.resize(source_length);
        target.resize(target_length);
    }
}

void tree_copy::look_above(std::string const& to8) {
    int const error = find_directories_above(to8, above_target_);
    if (error != 0) throw_errno_exception(error, to8, {});
}

/// Whether `directory` is a target of `innermost` or of a level around it, or is above them all:
/// listing it would not end.
bool tree_copy::is_written_to(file_identity const& directory, level const* innermost) const {
    for (level const* above = innermost; above != nullptr; above = above->outer)
        if (above->target == directory) return true;
    return std::find(above_target_.begin(), above_target_.end(), directory) != above_target_.end();
}

}  // namespace

}  // namespace detail

using detail::native_text;

void copy(upath const& from, upath const& to, copy_option options) {
    copy(from, to, options, copy_observer());
}
void copy(std::u16string const& from, std::u16string const& to, copy_option options) {
    copy(from, to, options, copy_observer());
}
void copy(upath const& from, upath const& to, copy_option options, copy_observer const& observer) {
    detail::validate(options);
    detail::tree_copy(options, observer).copy(native_text(from), native_text(to));
}
void copy(std::u16string const& from, std::u16string const& to, copy_option options,
          copy_observer const& observer) {
    detail::validate(options);
    detail::tree_copy(options, observer).copy(native_text(from), native_text(to));
}

void copy_file(upath const& from, upath const& to, copy_option options) {
    detail::validate(options);
    detail::copy_file_impl(native_text(from), native_text(to), options, /*mode=*/0);
}
void copy_file(std::u16string const& from, std::u16string const& to, copy_option options) {
    detail::validate(options);
    detail::copy_file_impl(native_text(from), native_text(to), options, /*mode=*/0);
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
