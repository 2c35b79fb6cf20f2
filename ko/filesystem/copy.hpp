#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/path.hpp>

/// Copying. Where a failure comes from Boost.Filesystem, which copies files and makes directories
/// like others, the paths in the exception keep only the low byte of each UTF-16 unit: characters
/// beyond ASCII do not survive into it. Its path() is
/// - `from` when that is missing (ENOENT), for EISDIR, and when it has more than 1023 units,
/// - else `to` for ENOENT, EEXIST and ENAMETOOLONG,
/// - for EACCES `to` when `from` is readable, else `from`,
/// - for all others `from`, with `to` as the argument.
/// Finding that out asks for `from`; what `exists` throws then, and for EACCES `access`, is thrown
/// instead, with the whole path.
namespace ko::filesystem {

/// Copies what is at `from` to `to`, by its type: a file as `copy_file`; a directory as
/// `copy_directory`, with all it holds when `recursive`; a link by the link options, else what it
/// points to. The permissions of `from` go to a directory that `copy_directory` makes, but not to
/// those of a recursive copy, which are made as by `create_directories`.
///
/// With `copy_symlinks` an existing link at the target is FileExistsError, whatever the option for
/// existing files. When a link is followed:
/// - A relative target is looked up from the working directory, not from the link's own.
/// - A link to a link copies nothing, silently.
/// In a recursive copy:
/// - A failure leaves what was copied before it.
/// - A tilde at the beginning of `from` or `to` is expanded even if the path object kept it.
/// - Neither the set-gid bit of a directory nor access control lists are copied; both may come from
///   the directory that the copy is made in.
/// - A name that begins with a tilde is expanded when it is joined, and the copy ends with
///   InvalidArgument "Absolute path not permitted".
/// - A name that is not UTF-8 ends the copy with InvalidArgument "Empty Path not permitted".
///
/// Throws
///   InvalidArgument, path() empty:
///       options that exclude each other ("Invalid combination selected: ..."), before all else
///       an empty path ("Empty Path not permitted")
///       a device, pipe or socket ("Unsupported file type")
///       a link without a text in UTF-8 ("Target of the symbolic link does not exist")
///   InvalidArgument   `to` is `from` or lies below it, in a recursive copy (EINVAL), whatever the
///                     paths look like; nothing was made; path(): `from`, arguments(): `to`
///   PathNotFound      `from` is missing; path(): empty
///   the class of the error number when `from` can't be examined; path(): empty
///   PathNotFound      what a followed link points to is missing; path(): the link
///   FileExistsError   `to` exists in a recursive copy, with none of the options for existing
///                     files; path(): `to`
///   InvalidArgument   a followed link or a mount leads to the target, to a directory above it, or to
///                     one that is being filled (EINVAL); path(): where it leads, arguments(): the
///                     place that it would have been copied to
///   SystemError       a followed link or a mount leads back to a directory that is being copied
///                     (ELOOP); path(): the link or the mount
///   boost::filesystem::filesystem_error   a directory can't be listed
///   what `copy_file`, `copy_directory`, `copy_symlink`, `create_directories` and `create_symlink`
///   throw
///
/// copy(u"~/notes", u"/mnt/backup/notes", copy_option::recursive | copy_option::copy_symlinks);
KO_FILESYSTEM_API void copy(upath const& from, upath const& to,
                            copy_option options = copy_option::none);
/// The same for texts, each brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void copy(std::u16string const& from, std::u16string const& to,
                            copy_option options = copy_option::none);

/// What `copy` is about to do with an entry. The references are good during the call.
struct copy_step {
    std::u16string const& from;
    std::u16string const& to;
    file_status const& what;  ///< of `from`, a link not followed
    std::uint64_t entries;    ///< done before this one; a directory counts before what it holds
    std::uint64_t bytes;      ///< of the regular files among them
};
/// Asked before each entry, that of `from` itself included. False ends the copy.
using copy_observer = std::function<bool(copy_step const&)>;

/// The same as `copy`, asking `observer` before each entry that exists, whatever the options make of
/// it. An empty function asks nobody. What was copied before the end stays, nothing is half made.
///
/// Throws
///   SystemError   `observer` returned false (ECANCELED); path(): `from` of the entry, arguments(): `to`
///   what `observer` throws, unchanged, and what `copy` throws
///
/// copy(from, to, copy_option::recursive, [&](copy_step const& step) {
///     show(step.entries, step.bytes);
///     return !stop_pressed;
/// });
KO_FILESYSTEM_API void copy(upath const& from, upath const& to, copy_option options,
                            copy_observer const& observer);
/// The same for texts, each brought into native form first.
KO_FILESYSTEM_API void copy(std::u16string const& from, std::u16string const& to,
                            copy_option options, copy_observer const& observer);

/// Copies the content and the permissions of the file `from`, links followed, to `to`. The set-uid and
/// set-gid bits are cleared once the copy is whole if its owner or group is not that of `from`.
///
/// Boost before 1.84 never returns when `from` shrinks while it is copied (its issue 292): use a newer
/// one where that can happen.
///
/// Of the options, `skip_existing`, `update_existing` and `create_symlinks` count in this order. With
/// the first, a missing `to` is made by a plain copy, whatever else is asked for. With the second, a
/// `to` that is no regular file is overwritten as if it were older. From Boost 1.85 on, attributes
/// that can't be given to the copy are no error; before, they are.
///
/// Throws
///   InvalidArgument   options that exclude each other ("Invalid combination selected: ..."), before
///                     anything else; an empty path ("Empty Path not permitted"); path(): empty
///   FileExistsError   `to` exists and no option allows for it, or is `from` itself, under whatever
///                     name, which keeps its content; path(): `to`
///   SystemError       `from` is a directory, a device or a pipe, or `to` is a device or a pipe and
///                     to be overwritten (ENOSYS); path(): `from`, arguments(): `to`
///   FileIsDirectory   `to` is a directory and to be overwritten; path(): `from`
///   the class of the error number for every other failure; path(): as said above
KO_FILESYSTEM_API void copy_file(upath const& from, upath const& to,
                                 copy_option options = copy_option::none);
/// The same for texts, each brought into native form first.
KO_FILESYSTEM_API void copy_file(std::u16string const& from, std::u16string const& to,
                                 copy_option options = copy_option::none);

/// Makes the directory `to` with the permissions of the directory `from`, less the umask, and
/// without what it holds. An existing directory `to` stays as it is.
///
/// Throws
///   InvalidArgument   an empty path ("Empty Path not permitted"); path(): empty
///   the class of the error number; path(): as said above
KO_FILESYSTEM_API void copy_directory(upath const& from, upath const& to);
/// The same for texts, each brought into native form first.
KO_FILESYSTEM_API void copy_directory(std::u16string const& from, std::u16string const& to);

/// Makes the link `to` with the text of the link `from`.
///
/// Throws
///   InvalidArgument   an empty path ("Empty Path not permitted"); `from` is no link ("Non-symbolic
///                     link file is not permitted"); a link without a text in UTF-8 ("Target of the
///                     symbolic link does not exist"); path(): empty
///   PathNotFound      `from` is missing; path(): empty
///   the class of the error number when `from` can't be examined; path(): empty
///   what `create_symlink` throws
KO_FILESYSTEM_API void copy_symlink(upath const& from, upath const& to);
/// The same for texts, used exactly as given: no native form is made, and a tilde is a name.
KO_FILESYSTEM_API void copy_symlink(std::u16string const& from, std::u16string const& to);

}  // namespace ko::filesystem
