#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Moves `from` to `to`. Within a file system it is one system call, which replaces an existing
/// `to` where POSIX does (a file by a file, an empty directory by a directory).
///
/// To another file system the tree is copied, links as links, and the source removed once every entry
/// is in the copy and every file has its whole length. In that case:
/// - The move is not atomic: a failure leaves the copy, or a part of it, beside what is left of
///   `from`. What others add to `from` between the copying and the removal is lost.
/// - An existing file at `to` is an error, but an existing directory is not, nor a link to one: a
///   directory is merged with it, up to the first file that both hold, and a file is put inside it,
///   without its time.
/// - Hard links become separate files, and holes are filled.
/// - The set-uid and set-gid bits of a file are cleared, once all is copied, if the copy's owner or
///   group is not that of the source.
/// - Of a directory named "A/." the content is moved; then EINVAL is reported, since such a name can't
///   be removed.
/// - Times are those of the copying unless `options` preserve the last-write times of regular
///   files. A link to a regular file counts as one: the time is set at the place that the link's
///   target has relative to `from`, which may lie outside of `to`, or not exist.
///
/// Throws
///   InvalidArgument   `from` or `to` is empty ("Empty Path not permitted"); path(): empty
///   InvalidArgument   `to` lies in the directory `from`, by whatever links and mounts, or a directory
///                     below `to` leads back into it (EINVAL); nothing was made; path(): `from`,
///                     arguments(): `to`
///   SystemError       a copy is short or lacks an entry, as on a full disk (EIO); `from` is whole;
///                     path(): `from`, arguments(): `to`
///   the class of the error number; path():
///       `from` for a missing source, and when it has 1024 units or more
///       `to` for ENOENT otherwise, EEXIST, ENOTDIR, EISDIR, ENAMETOOLONG and ENOTEMPTY
///       `to` for EACCES when the directory of `from` is writable, else `from`
///       `from`, with `to` as the argument, for all others
///   what asking for the source throws (`exists`), and for EACCES what asking for its directory does
///   (`access`): PathNotFound when that is missing, InvalidArgument when `from` names none
///   std::filesystem::filesystem_error when times can't be preserved (EOVERFLOW where the file system
///   of `to` has no such time), or a directory can't be listed on the way; the copy and `from` stay
KO_FILESYSTEM_API void rename(upath const& from, upath const& to,
                              rename_options const& options = {});
/// The same for texts, each brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void rename(std::u16string const& from, std::u16string const& to,
                              rename_options const& options = {});

}  // namespace ko::filesystem
