#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Moves `from` to `to`. Within a file system this is one system call, which replaces an existing
/// `to` as POSIX specifies (a file by a file, an empty directory by a directory).
///
/// To another file system, it copies the tree, links as links, and removes the source once every
/// entry is in the copy and every file has its full length. In that case:
/// - The move is not atomic: a failure leaves the copy, or a part of it, and what remains of
///   `from`. What others add to `from` between the copying and the removal is lost.
/// - An existing file at `to` is an error, but an existing directory is not, nor a link to one: a
///   directory is merged into it, up to the first file that both contain, and a file is put inside
///   it, without its time.
/// - Hard links become separate files, and holes are filled.
/// - Once everything is copied, the set-uid and set-gid bits of a file are cleared if the copy's
///   owner or group differs from that of the source.
/// - For a directory named "A/." the contents are moved; then EINVAL is reported, since such a name
///   can't be removed.
/// - Times are those of the copying unless `options` preserve the last-write times of regular
///   files. A link to a regular file counts as one: the time is set at the path that the link's
///   target has relative to `from`, which may be outside of `to`, or not exist.
///
/// Throws
///   InvalidArgument   `from` or `to` is empty ("Empty Path not permitted"); path(): empty
///   InvalidArgument   `to` is in the directory `from`, by whatever links and mounts, or a
///                     directory below `to` leads back into it (EINVAL); nothing is made;
///                     path(): `from`, arguments(): `to`
///   SystemError       a copy is short or lacks an entry, as on a full disk (EIO); `from` is
///                     intact; path(): `from`, arguments(): `to`
///   the class of the error number; path():
///       `from` for a missing source, and if it has 1024 units or more
///       `to` for ENOENT otherwise, EEXIST, ENOTDIR, EISDIR, ENAMETOOLONG and ENOTEMPTY
///       `to` for EACCES if the directory of `from` is writable, else `from`
///       `from`, with `to` as the argument, for all others
///   what the query of the source throws (`exists`), and for EACCES that of its directory
///   (`access`): PathNotFound if that is missing, InvalidArgument if `from` has no directory part
///   std::filesystem::filesystem_error if times can't be preserved (EOVERFLOW if the file system of
///   `to` can't store one), or a directory can't be listed meanwhile; the copy and `from` stay
KO_FILESYSTEM_API void rename(upath const& from, upath const& to,
                              rename_options const& options = {});
/// The same for texts, each converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void rename(std::u16string const& from, std::u16string const& to,
                              rename_options const& options = {});

}  // namespace ko::filesystem
