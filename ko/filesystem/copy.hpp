#pragma once

#include <cstdint>
#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/detail/callback.hpp>
#include <ko/filesystem/detail/option_operators.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>

/// Copying. If a failure comes from Boost.Filesystem, which copies the files and makes the
/// directories of `copy_directory`, the paths in the exception keep only the low byte of each
/// UTF-16 unit: characters beyond ASCII are lost. Its path() is
/// - `from` if that is missing (ENOENT), for EISDIR, and if it has more than 1023 units,
/// - else `to` for ENOENT, EEXIST and ENAMETOOLONG,
/// - for EACCES `to` if `from` is readable, else `from`,
/// - for all others `from`, with `to` as the argument.
/// This needs a query of `from`: if that fails, its exception (of `exists`, and for EACCES of
/// `access`) is thrown instead, with the whole path.
namespace ko::filesystem {

/// Options of `copy` and `copy_file`; combined with |. `copy_symlinks` and `skip_symlinks`
/// exclude each other, and so do `overwrite_if_exists`, `skip_existing` and `update_existing`.
enum class copy_option : unsigned int {
    none = 0,                 ///< an existing destination is an error, except for `copy_directory`
    overwrite_if_exists = 1,  ///< replace an existing destination file
    skip_existing = 2,        ///< leave an existing destination alone, silently
    update_existing = 4,      ///< replace a destination that is older or not a regular file
    recursive = 8,            ///< copy a directory with its contents (`copy`)
    copy_symlinks = 16,       ///< copy a link as a link, not what it points to (`copy`)
    skip_symlinks = 32,       ///< ignore links (`copy`)
    create_symlinks = 64,     ///< make a link to the source instead of copying
};

template <>
inline constexpr bool detail::is_option<copy_option> = true;

/// Copies `from` to `to` by its type: a file as `copy_file`; a directory as `copy_directory`, with
/// its contents if `recursive`; a link as the link options specify, by default what it points to. A
/// directory made by `copy_directory` gets the permissions of `from`; those of a recursive copy do
/// not, they are made as by `create_directories`.
///
/// With `copy_symlinks` an existing link at the target is FileExistsError, whatever the option for
/// existing files. If a link is followed:
/// - A relative target is resolved from the working directory, not from the directory of the link.
/// - A link to a link copies nothing, silently.
/// In a recursive copy:
/// - What was copied before a failure stays.
/// - A tilde at the beginning of `from` or `to` is expanded even if the path object kept it.
/// - Neither the set-gid bit of a directory nor access control lists are copied; the directory that
///   the copy is made in may pass on its own.
/// - A name that begins with a tilde is expanded when it is joined, and the copy ends with
///   InvalidArgument "Absolute path not permitted".
/// - A name that is not UTF-8 ends the copy with InvalidArgument "Empty Path not permitted".
///
/// Throws
///   InvalidArgument, path() empty:
///       options that exclude each other ("Invalid combination selected: ..."), checked first
///       an empty path ("Empty Path not permitted")
///       a device, pipe or socket ("Unsupported file type")
///       a link whose text is not UTF-8 ("Target of the symbolic link does not exist")
///   FileExistsError   `to` exists in a recursive copy, with none of the options for existing
///                     files; path(): `to`
///   InvalidArgument   `to` is `from` or below it, in a recursive copy (EINVAL), whatever the
///                     paths look like, checked after that; nothing is made; path(): `from`,
///                     arguments(): `to`
///   PathNotFound      `from` is missing; path(): empty
///   the class of the error number when `from` can't be examined; path(): empty
///   PathNotFound      what a followed link points to is missing; path(): the link
///   InvalidArgument   a followed link or a mount leads to the target, to a directory above it, or
///                     to one that is being copied into (EINVAL); path(): where it leads,
///                     arguments(): where it would have been copied to
///   SystemError       a followed link or a mount leads back to a directory that is being copied
///                     (ELOOP); path(): the link or the mount
///   boost::filesystem::filesystem_error   a directory can't be listed
///   what `copy_file`, `copy_directory`, `copy_symlink`, `create_directories` and `create_symlink`
///   throw
///
/// copy(u"~/notes", u"/mnt/backup/notes", copy_option::recursive | copy_option::copy_symlinks);
KO_FILESYSTEM_API void copy(upath const& from, upath const& to,
                            copy_option options = copy_option::none);
/// The same for texts, each converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void copy(std::u16string const& from, std::u16string const& to,
                            copy_option options = copy_option::none);

/// An entry that `copy` is about to copy. The references are valid during the call.
struct copy_step {
    std::u16string const& from;
    std::u16string const& to;
    file_status const& what;  ///< of `from`, a link not followed
    std::uint64_t entries;    ///< copied before this one; a directory counts before its contents
    std::uint64_t bytes;      ///< of the regular files among them
};
/// Called before each entry, including `from` itself: any function bool(copy_step const&). Returning
/// false ends the copy.
using copy_observer = detail::callback<copy_step const&>;

/// The same as `copy`, but calls `observer` before each entry that exists, whatever the options do
/// with it. An empty function is not called. What was copied before the end stays; no entry is left
/// half copied.
///
/// Throws
///   SystemError   `observer` returned false (ECANCELED); path(): `from` of the entry,
///                 arguments(): `to`
///   what `observer` throws, unchanged, and what `copy` throws
///
/// copy(from, to, copy_option::recursive, [&](copy_step const& step) {
///     show(step.entries, step.bytes);
///     return !stop_pressed;
/// });
KO_FILESYSTEM_API void copy(upath const& from, upath const& to, copy_option options,
                            copy_observer const& observer);
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API void copy(std::u16string const& from, std::u16string const& to,
                            copy_option options, copy_observer const& observer);

/// Copies the contents and the permissions of the file `from`, links followed, to `to`. Once the
/// copy is complete, clears its set-uid and set-gid bits if its owner or group differs from that of
/// `from`.
///
/// Boost before 1.84 never returns if less of `from` can be read than its size says, since it
/// shrinks meanwhile or its file system gives a size of its own (Boost's issue 292): use a newer
/// version if that can happen.
///
/// Whether both paths are one file is seen by device and inode number. On a file system without
/// stable numbers, overwriting a file by another of its names (another case, say) destroys it.
///
/// Of the options, `skip_existing`, `update_existing` and `create_symlinks` take precedence in this
/// order. With the first, a missing `to` is made by a plain copy, whatever the other options. With
/// the second, a `to` that is not a regular file is overwritten as if it were older. Attributes
/// that can't be set on the copy are an error before Boost 1.85, and ignored from then on.
///
/// Throws
///   InvalidArgument   options that exclude each other ("Invalid combination selected: ..."),
///                     checked first; an empty path ("Empty Path not permitted"); path(): empty
///   FileExistsError   `to` exists and no option allows that, or is `from` itself, under whatever
///                     name, which keeps its contents; path(): `to`
///   SystemError       `from` is a directory, a device or a pipe, or `to` is a device or a pipe and
///                     would be overwritten (ENOSYS); path(): `from`, arguments(): `to`
///   FileIsDirectory   `to` is a directory and would be overwritten; path(): `from`
///   the class of the error number for every other failure; path(): see the top of this file
KO_FILESYSTEM_API void copy_file(upath const& from, upath const& to,
                                 copy_option options = copy_option::none);
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API void copy_file(std::u16string const& from, std::u16string const& to,
                                 copy_option options = copy_option::none);

/// Makes the directory `to` with the permissions of the directory `from`, less the umask, but
/// without its contents. An existing directory `to` is left unchanged.
///
/// Throws
///   InvalidArgument   an empty path ("Empty Path not permitted"); path(): empty
///   the class of the error number; path(): see the top of this file
KO_FILESYSTEM_API void copy_directory(upath const& from, upath const& to);
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API void copy_directory(std::u16string const& from, std::u16string const& to);

/// Makes the link `to` with the target text of the link `from`.
///
/// Throws
///   InvalidArgument   an empty path ("Empty Path not permitted"); `from` is not a link
///                     ("Non-symbolic link file is not permitted"); a link whose text is not UTF-8
///                     ("Target of the symbolic link does not exist"); path(): empty
///   PathNotFound      `from` is missing; path(): empty
///   the class of the error number when `from` can't be examined; path(): empty
///   what `create_symlink` throws
KO_FILESYSTEM_API void copy_symlink(upath const& from, upath const& to);
/// The same for texts, used exactly as given: no native form, no tilde expansion.
KO_FILESYSTEM_API void copy_symlink(std::u16string const& from, std::u16string const& to);

}  // namespace ko::filesystem
