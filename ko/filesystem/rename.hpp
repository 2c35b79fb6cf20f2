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
/// - An existing file at `to` is an error, but an existing directory is merged with `from`, up to
///   the first file that both hold.
/// - Times are those of the copying unless `options` preserve the last-write times of regular
///   files. A link to a regular file counts as one: the time is set at the place that the link's
///   target has relative to `from`, which may lie outside of `to`, or not exist.
///
/// Throws
///   InvalidArgument   `from` or `to` is empty ("Empty Path not permitted"); path(): empty
///   the class of the error number; path(): `from` for a missing source; `to` for ENOENT otherwise,
///   EEXIST, ENOTDIR, EISDIR, ENAMETOOLONG and ENOTEMPTY; for EACCES `to` when the directory of
///   `from` is writable, else `from`; for all others `from`, with `to` as the argument. `from`
///   alone when that has 1024 units or more. whatever asking for the source, or for EACCES its
///   directory, throws: PathNotFound when that directory does not exist, InvalidArgument when
///   `from` names none std::filesystem::filesystem_error when times can't be preserved; the copy
///   stays, and so does `from`
KO_FILESYSTEM_API void rename(upath const& from, upath const& to,
                              rename_options const& options = {});
/// The same for texts, each brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void rename(std::u16string const& from, std::u16string const& to,
                              rename_options const& options = {});

}  // namespace ko::filesystem
