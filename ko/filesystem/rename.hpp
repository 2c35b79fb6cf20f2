#pragma once

#include <cstdint>
#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Options of `rename` for moves to another file system.
struct rename_options {
    constexpr rename_options() noexcept : preserve_last_write_time(0) {}

    /// Set the last-write time of every copied regular file to that of its source; see `rename` for
    /// the exceptions.
    std::uint16_t preserve_last_write_time : 1;
};

/// Moves `from` to `to`. Within a file system this is one system call, which replaces an existing
/// `to` as POSIX specifies (a file by a file, an empty directory by a directory).
///
/// To another file system, it copies the tree, links as links, and removes the source once every
/// entry is in the copy, every file has its full length, and the copy is on the disk (fsync,
/// syncfs). In that case:
/// - The move is not atomic: a failure leaves the copy, or a part of it, and what remains of
///   `from`. What others add to `from` between the copying and the removal is lost.
/// - An existing file at `to` is an error, but an existing directory is not, nor a link to one: a
///   directory is merged into it, up to the first file that both contain, and a file is put inside
///   it, without its time.
/// - A pipe, a socket or a device is an error, wherever it is in the tree.
/// - Hard links become separate files, and the holes of sparse files are filled.
/// - Once everything is copied, the set-uid and set-gid bits of a file are cleared if the copy's
///   owner or group differs from that of the source.
/// - For a directory named "A/." or "A/b/.." the contents are moved, but the emptied directory
///   stays, since such a name can't be removed; for "A/." EINVAL is reported.
/// - Times are those of the copying unless `options` preserve the last-write times of regular
///   files. A link to a regular file counts as one: the time is set at the path that the link's
///   target has relative to `from`, which may be outside of `to`, or not exist.
///
/// Throws
///   InvalidArgument   `from` or `to` is empty ("Empty Path not permitted"); path(): empty
///   InvalidArgument   `to` is in the directory `from`, by whatever links and mounts, or a
///                     directory below `to` leads back into it (EINVAL); nothing is made;
///                     path(): `from`, arguments(): `to`
///   SystemError       a copy is short or lacks an entry: ENOSPC if the disk is full, EFBIG beyond
///                     the process's limit for files, else EIO; or it can't be written to the disk;
///                     `from` is intact; path(): `from`, arguments(): `to`
///   the class of the error number; path():
///       `from` for a missing source, and if it has 1024 units or more
///       `to` for ENOENT otherwise, EEXIST, ENOTDIR, EISDIR, ENAMETOOLONG and ENOTEMPTY
///       `to` for EACCES if the directory of `from` is writable, else `from`
///       `from`, with `to` as the argument, for all others
///   the class of the error number if the copy is complete, but the source can't be removed;
///   path(): the file or directory that stays, arguments(): `to`
///   what the query of the source throws (`exists`), and for EACCES that of its directory
///   (`access`): PathNotFound if that is missing, InvalidArgument if `from` has no directory part
///   std::filesystem::filesystem_error if times can't be preserved (EOVERFLOW if the file system of
///   `to` can't store one), or a directory can't be listed meanwhile; the copy and `from` stay
KO_FILESYSTEM_API void rename(upath const& from, upath const& to,
                              rename_options const& options = {});
/// The same for texts, each converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void rename(std::u16string const& from, std::u16string const& to,
                              rename_options const& options = {});

/// Moves `from` to `to` so that after a cut of power `to` is whole, the old one or the new: for
/// documents that a program writes to another name first. Writes the contents of the file `from` to
/// the disk (fsync; for a directory everything in its file system), renames it as `rename` does,
/// then writes the directories of both names. To another file system the move is that of `rename`.
///
/// If the directories can't be written, the move is complete when the exception is thrown.
///
/// Throws like `rename`, also for a failure to write to the disk.
///
/// rename_durably(u"~/notes.txt.new", u"~/notes.txt");
KO_FILESYSTEM_API void rename_durably(upath const& from, upath const& to);
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API void rename_durably(std::u16string const& from, std::u16string const& to);

}  // namespace ko::filesystem
