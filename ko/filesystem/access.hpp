#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

// What `access` asks for; combined with |. The values are not those of POSIX.
inline constexpr unsigned int access_exists = 1;
inline constexpr unsigned int access_read = 2;
inline constexpr unsigned int access_write = 4;
inline constexpr unsigned int access_execute = 8;  ///< for a directory: search

/// Whether the process may do all that `mode` asks for with what is at `p` (access(2): by the real
/// user id). False where access is refused, and for writing on a read-only file system.
///
/// `access_exists` changes what a failure means. With it, a missing path is false, and a path that
/// cannot even be reached is AccessDenied; without it, a missing path is PathNotFound, and one that
/// cannot be reached is false.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"), then: `mode` is 0 or more than 15
///                     ("Unsupported Access Mode"); path(): empty
///   PathNotFound, AccessDenied   as above; path(): `p`
///   the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API bool access(upath const& p, unsigned int mode);
/// The same for text, brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API bool access(std::u16string const& p, unsigned int mode);

/// Gives what is at `p` the permissions `perms` of `file_status`, or changes them: with `perms_add`
/// the bits are set, with `perms_remove` cleared, in what there is. Links are followed unless
/// `perms_symlink` is given, which changes a link itself where the system can (lchmod).
/// The attribute constants of `file_status`, 0xF000, are ignored.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"), then: `perms` holds both
///                     `perms_add` and `perms_remove`, or all of `perms_unknown` ("File Permission
///                     not valid"); path(): empty
///   the class of the error number when the status can't be read; path(): empty
///   PathNotFound when nothing is there; path(): `p`
///   the class of the error number when the change fails; path(): `p`
///
/// permissions(u"~/notes", file_status::group_write | file_status::perms_remove);
KO_FILESYSTEM_API void permissions(upath const& p, unsigned int perms);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void permissions(std::u16string const& p, unsigned int perms);

}  // namespace ko::filesystem
