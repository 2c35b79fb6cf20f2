#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Moves `from` to `to`. Within a file system it is one system call, which replaces an existing
/// `to` where POSIX does (a file by a file, an empty directory by a directory).
///
/// To another file system the tree is copied, links as links, and the source removed then. Mind:
/// - That is not atomic: a failure leaves the copy, or a part of it, beside what is left of `from`.
/// - An existing file at `to` is an error, but an existing directory is not: a directory is merged
///   with it, up to the first file that both hold, and a file is put inside it, without its time.
/// - A place below `from` on another file system is not refused; the copy then nests until names
///   get too long, and `from` stays.
/// - Times are those of the copying unless `options` preserve the last-write times of regular
///   files. A link to a regular file counts as one: the time is set at the place that the link's
///   target has relative to `from`, which may lie outside of `to`, or not exist.
///
/// Throws
///   InvalidArgument   `from` or `to` is empty ("Empty Path not permitted"); path(): empty
///   the class of the error number; path():
///       `from` for a missing source, and when it has 1024 units or more
///       `to` for ENOENT otherwise, EEXIST, ENOTDIR, EISDIR, ENAMETOOLONG and ENOTEMPTY
///       `to` for EACCES when the directory of `from` is writable, else `from`
///       `from`, with `to` as the argument, for all others
///   what asking for the source throws (`exists`), and for EACCES what asking for its directory does
///   (`access`): PathNotFound when that is missing, InvalidArgument when `from` names none
///   std::filesystem::filesystem_error when times can't be preserved, or a directory can't be listed
///   on the way; the copy stays, and so does `from`
KO_FILESYSTEM_API void rename(upath const& from, upath const& to,
                              rename_options const& options = {});
/// The same for texts, each brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void rename(std::u16string const& from, std::u16string const& to,
                              rename_options const& options = {});

}  // namespace ko::filesystem
