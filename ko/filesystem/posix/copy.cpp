#include <ko/filesystem/copy.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <list>
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
#include <ko/filesystem/posix/directory_maker.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/file_identity.hpp>
#include <ko/filesystem/posix/foreign_rights.hpp>
#include <ko/filesystem/posix/links.hpp>
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

/// A path in both forms, so that none is converted twice on its way through a tree.
struct place {
    std::u16string const& text;
    char const* path8;
};

/// Whether something is at `to`, whose tilde is deliberately expanded.
bool target_exists(place to) {
    struct stat found;
    return algorithm::begins_with_tilde<char16_t>(to.text) ? exists(to.text)
                                                           : exists_at(&::stat, to.path8, found);
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

// Boost opens both files before it checks them. `target` is the status of an existing one, or null.

/// Whether opening them would wait for the other end of a pipe.
bool would_block(struct stat const& source, struct stat const* target) noexcept {
    return S_ISFIFO(source.st_mode) || (target != nullptr && S_ISFIFO(target->st_mode));
}

/// Whether opening them would truncate the source.
bool would_truncate(struct stat const& source, struct stat const* target) noexcept {
    return target != nullptr && S_ISREG(source.st_mode) &&
           file_identity(source) == file_identity(*target);
}

/// Copies files, one after the other, by Boost.
class file_copier {
public:
    /// `known` is the status of `from`, links followed, or null.
    void copy(place from, place to, bool overwrite, struct stat const* known) {
        struct stat source {};
        if (known != nullptr)
            source = *known;
        else if (::stat(from.path8, &source) != 0)
            source = {};  // Boost reports why
        struct stat existing;
        bool const replaces = overwrite && ::stat(to.path8, &existing) == 0;
        struct stat const* const target = replaces ? &existing : nullptr;
        int error = 0;
        if (would_block(source, target))
            error = ENOSYS;
        else if (would_truncate(source, target))
            error = EEXIST;
        else
            error = copy_by_boost(from.path8, to.path8, overwrite);
        if (error == 0 && (source.st_mode & set_id_bits) != 0) {
            struct stat copy;
            error = examine(&::stat, to.path8, copy);
            if (error == 0) error = drop_foreign_rights(source, copy, to.path8);
        }
        if (error != 0) throw_copy_error_code_exception(error, from.text, to.text);
    }

private:
    int copy_by_boost(char const* from8, char const* to8, bool overwrite) {
        from_ = from8;
        to_ = to8;
        error_code code;
        boost_fs::copy_file(from_, to_, file_copy_options(overwrite), code);
        return code.value();
    }

    // Kept to reuse their memory.
    boost_fs::path from_;
    boost_fs::path to_;
};

bool is_up_to_date(char const* from8, char const* to8) {
    // As `status` has it, but of the paths exactly as given.
    file_status const target = status_at(&::stat, to8, /*other_absent=*/EINVAL, /*reported=*/{});
    if (target.type != file_status::regular_file) return false;
    file_status const source = status_at(&::stat, from8, /*other_absent=*/EINVAL, /*reported=*/{});
    // A missing source counts as newer, so that the copy reports it.
    return source.type != file_status::file_not_found &&
           target.last_write_time >= source.last_write_time;
}

/// Copies a file by the options that remain when `skip_existing` is settled. `known` as in
/// `file_copier`.
void copy_file_by(file_copier& copier, place from, place to, copy_option options,
                  struct stat const* known) {
    if (has(options, copy_option::update_existing)) {
        if (!is_up_to_date(from.path8, to.path8)) copier.copy(from, to, /*overwrite=*/true, known);
    } else if (has(options, copy_option::create_symlinks)) {
        create_symlink(from.text, to.text, file_status::file_type_auto);
    } else {
        copier.copy(from, to, has(options, copy_option::overwrite_if_exists), known);
    }
}

void copy_file_impl(std::u16string const& from, std::u16string const& to, copy_option options) {
    reject_empty_path(from);
    reject_empty_path(to);
    if (has(options, copy_option::skip_existing)) {
        if (exists(to)) return;
        options = copy_option::none;  // including create_symlinks
    }
    system_path const from8(from);
    system_path const to8(to);
    file_copier copier;
    copy_file_by(copier, {from, from8.c_str()}, {to, to8.c_str()}, options, nullptr);
}

// Links

/// The text of the link at `path8`, in bytes.
std::string link_target(char const* path8) {
    std::string target8 = read_link_bytes(path8);
    if (from_filesystem_strict(target8).empty())
        throw_invalid_argument("Target of the symbolic link does not exist");
    return target8;
}

void copy_symlink_impl(std::u16string const& from, std::u16string const& to) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    struct stat found;
    int const error = examine(&::lstat, from8.c_str(), found);
    if (error != 0)
        throw_errno_exception(error, {});  // deliberately without the path, as in `copy`
    if (!S_ISLNK(found.st_mode)) throw_invalid_argument("Non-symbolic link file is not permitted");
    std::string const target8 = link_target(from8.c_str());
    make_link_by(&::symlink, target8.c_str(), system_path(to).c_str());
}

// Directories

void copy_directory_impl(std::u16string const& from, std::u16string const& to) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    system_path const to8(to);
    error_code code;
    boost_fs::create_directory(to8.c_str(), from8.c_str(), code);
    if (code.failed()) throw_copy_error_code_exception(code.value(), from, to);
}

/// Makes the missing directory `to8` and every missing one above it.
void make_target(std::string const& to8, bool has_parent) {
    int const error = has_parent ? make_directory(to8.c_str()) : ENOENT;
    if (error == ENOENT) return make_directories(to8);
    if (error != 0) throw_errno_exception(error, to8);
}

// Anything

/// One call of `copy`.
class tree_copy {
public:
    tree_copy(copy_option options, copy_observer const& observer)
        : options_(options), observer_(observer) {}

    void copy(std::u16string const& from, std::u16string const& to);

private:
    /// A directory whose contents are being copied.
    struct level {
        /// Lists `from`, whose identity is `identity` if that is known, to copy it to `to`.
        level(place from, std::optional<file_identity> const& identity, place to);

        void advance();

        // Both paths; that of the current entry while it is copied.
        std::u16string source;
        std::u16string target;
        std::string target8;
        std::string source8;  ///< of the directory only: the listing has those of the entries
        std::size_t source_length, target_length, target8_length;

        std::optional<file_identity> source_identity;
        std::optional<file_identity> target_identity;
        boost_fs::directory_iterator entry;
    };

    bool has(copy_option any_of) const noexcept { return detail::has(options_, any_of); }

    struct stat look_at(place from, std::u16string const& to);
    bool is_skipped(struct stat const& found) const noexcept;
    void copy_found(struct stat const& found, place from, place to);
    void copy_any(place from, place to);
    void copy_file(struct stat const& found, place from, place to);
    void copy_followed(place from, place to);
    void copy_directory_contents(place from, std::optional<file_identity> const& identity, place to,
                                 char const* found8);
    void copy_entry();

    void look_above(std::string const& to8);
    bool is_listed(file_identity const& directory) const;
    bool is_written_to(file_identity const& directory) const;

    copy_option const options_;
    copy_observer const& observer_;
    std::uint64_t entries_ = 0;
    std::uint64_t bytes_ = 0;
    /// The target of the outermost directory and all directories above it.
    std::vector<file_identity> above_target_;
    /// Those being copied, innermost last: no recursion, so that a small stack suffices.
    std::list<level> levels_;
    file_copier copier_;
    // The entry's name, kept to reuse the memory.
    std::u16string name_;
    std::string name8_;
};

void tree_copy::copy(std::u16string const& from, std::u16string const& to) {
    reject_empty_path(from);
    reject_empty_path(to);
    system_path const from8(from);
    place const source{from, from8.c_str()};
    struct stat const found = look_at(source, to);
    if (is_skipped(found)) return;
    system_path const to8(to);
    copy_found(found, source, {to, to8.c_str()});
    while (!levels_.empty()) {
        std::size_t const depth = levels_.size();
        if (levels_.back().entry != boost_fs::directory_iterator())
            copy_entry();
        else
            levels_.pop_back();
        // The contents of an entry come before what follows it.
        if (levels_.size() <= depth && !levels_.empty()) levels_.back().advance();
    }
}

/// The status of `from`, a link not followed. Then calls the observer, if there is one, and counts
/// the entry as done: after a failure there is no further call.
struct stat tree_copy::look_at(place from, std::u16string const& to) {
    struct stat found;
    int const error = examine(&::lstat, from.path8, found);
    if (error != 0) throw_errno_exception(error, {});  // deliberately without the path
    if (observer_) {
        file_status const what = to_file_status(found);
        if (!observer_({from.text, to, what, entries_, bytes_}))
            throw_errno_exception(ECANCELED, from.path8, system_path(to).c_str());
        ++entries_;
        if (S_ISREG(found.st_mode)) bytes_ += what.size;
    }
    if (!S_ISLNK(found.st_mode) && !S_ISREG(found.st_mode) && !S_ISDIR(found.st_mode))
        throw_invalid_argument("Unsupported file type");
    return found;
}

bool tree_copy::is_skipped(struct stat const& found) const noexcept {
    return S_ISLNK(found.st_mode) && !has(copy_option::copy_symlinks) &&
           has(copy_option::skip_symlinks);
}

void tree_copy::copy_found(struct stat const& found, place from, place to) {
    if (S_ISREG(found.st_mode))
        copy_file(found, from, to);
    else if (S_ISDIR(found.st_mode))
        copy_directory_contents(from, file_identity(found), to, from.path8);
    else if (has(copy_option::copy_symlinks))
        make_link_by(&::symlink, link_target(from.path8).c_str(), to.path8);
    else
        copy_followed(from, to);
}

void tree_copy::copy_any(place from, place to) {
    struct stat const found = look_at(from, to.text);
    if (!is_skipped(found)) copy_found(found, from, to);
}

void tree_copy::copy_file(struct stat const& found, place from, place to) {
    copy_option options = options_;
    if (has(copy_option::skip_existing)) {
        if (target_exists(to)) return;
        options = copy_option::none;
    }
    copy_file_by(copier_, from, to, options, &found);
}

/// Copies the target of the link `from`.
void tree_copy::copy_followed(place from, place to) {
    std::string const target8 = link_target(from.path8);
    std::u16string const target = from_filesystem_strict(target8);
    // Deliberately as given: a relative target is resolved from the working directory, and nothing
    // is copied for a link to a link.
    struct stat found;
    int const error = examine(&::lstat, target8.c_str(), found);
    if (error == ENOENT) throw cloneable(PathNotFound(from.text));
    if (error != 0) throw_errno_exception(error, {});
    if (S_ISREG(found.st_mode)) return copy_file(found, {target, target8.c_str()}, to);
    if (!S_ISDIR(found.st_mode)) return;
    native_text const listed(target);
    system_path const listed8(listed);
    copy_directory_contents({listed, listed8.c_str()}, identify(listed8.c_str()), to, from.path8);
}

/// Begins to copy the directory `from`, whose identity is `identity` if that is known, and which
/// was found as `found8`: its own path, or that of a link.
void tree_copy::copy_directory_contents(place from, std::optional<file_identity> const& identity,
                                        place to, char const* found8) {
    if (has(copy_option::create_symlinks))
        return create_symlink(from.text, to.text, file_status::file_type_auto);
    if (!has(copy_option::recursive)) return copy_directory(from.text, to.text);

    bool const is_outermost = levels_.empty();
    if (is_outermost) posix::detail::open_converters();  // before all descriptors are in use
    std::list<level> made;
    level& listed = made.emplace_back(from, identity, to);
    if (listed.source_identity && is_listed(*listed.source_identity))
        throw_errno_exception(ELOOP, found8);

    struct stat existing;
    bool const to_exists = exists_at(&::stat, listed.target8.c_str(), existing);
    if (to_exists && !has(existence_options)) throw cloneable(FileExistsError(to.text));

    if (is_outermost) look_above(listed.target8);
    if (listed.source_identity && is_written_to(*listed.source_identity))
        throw_errno_exception(EINVAL, listed.source8, listed.target8);

    if (!to_exists) make_target(listed.target8, /*has_parent=*/!is_outermost);
    listed.target_identity = to_exists ? file_identity(existing) : identify(listed.target8.c_str());
    if (listed.source_identity && listed.source_identity == listed.target_identity)
        throw_errno_exception(EINVAL, listed.source8, listed.target8);
    if (is_outermost && !to_exists) look_above(listed.target8);  // including what has been made
    // Without an error code: failures of the listing are thrown as Boost's own exceptions.
    listed.entry = boost_fs::directory_iterator(make_access_form(listed.source8));
    levels_.splice(levels_.end(), made);
}

/// Copies the current entry of the innermost directory, or begins with its contents.
void tree_copy::copy_entry() {
    level& listed = levels_.back();
    char const* const path8 = listed.entry->path().c_str();
    name8_ = algorithm::filename<char>(path8);
    name_.clear();
    append_from_filesystem(name8_, name_);  // nothing if the name is not UTF-8
    reject_empty_path(name_);
    concatenate_pathname(listed.source, name_, /*expand_tilde=*/false);
    // Deliberately expands the tilde of a name like "~x".
    concatenate_pathname(listed.target, name_, /*expand_tilde=*/true);
    if (algorithm::begins_with_tilde<char>(name8_))
        listed.target8 = system_path(listed.target).string();
    else
        algorithm::concatenate(listed.target8, name8_, /*expand_tilde=*/false);
    copy_any({listed.source, path8}, {listed.target, listed.target8.c_str()});
}

tree_copy::level::level(place from, std::optional<file_identity> const& identity, place to)
    : source(from.text),
      target(to.text),
      target8(to.path8),
      source8(from.path8),
      source_identity(identity) {
    // Expanded even if a path object has kept it.
    if (algorithm::begins_with_tilde<char16_t>(source)) {
        source = make_native_form(source, /*expand_tilde=*/true);
        source8 = system_path(source).string();
        source_identity = identify(source8.c_str());
    }
    if (algorithm::begins_with_tilde<char16_t>(target)) {
        target = make_native_form(target, /*expand_tilde=*/true);
        target8 = system_path(target).string();
    }
    // Joined with names, an empty text would become the working directory.
    if (source8.empty() || target8.empty()) throw_errno_exception(ENOENT, {});
    source_length = source.size(), target_length = target.size(), target8_length = target8.size();
}

void tree_copy::level::advance() {
    source.resize(source_length), target.resize(target_length), target8.resize(target8_length);
    ++entry;
}

void tree_copy::look_above(std::string const& to8) {
    int const error = find_directories_above(to8, above_target_);
    if (error != 0) throw_errno_exception(error, to8);
}

bool tree_copy::is_listed(file_identity const& directory) const {
    return std::any_of(levels_.begin(), levels_.end(),
                       [&](level const& above) { return above.source_identity == directory; });
}

/// Whether `directory` is a target of a level, or is above them all: listing it would not end.
bool tree_copy::is_written_to(file_identity const& directory) const {
    return std::find(above_target_.begin(), above_target_.end(), directory) !=
               above_target_.end() ||
           std::any_of(levels_.begin(), levels_.end(),
                       [&](level const& above) { return above.target_identity == directory; });
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
    detail::copy_file_impl(native_text(from), native_text(to), options);
}
void copy_file(std::u16string const& from, std::u16string const& to, copy_option options) {
    detail::validate(options);
    detail::copy_file_impl(native_text(from), native_text(to), options);
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
