#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

// Modes of `access`; combined with |. The values are not those of POSIX.
inline constexpr unsigned int access_exists = 1;
inline constexpr unsigned int access_read = 2;
inline constexpr unsigned int access_write = 4;
inline constexpr unsigned int access_execute = 8;  ///< for a directory: search

/// Whether the process has all the access to `p` that `mode` asks for (access(2), which goes by the
/// real user id). False if access is refused, and for write access on a read-only file system.
///
/// With `access_exists`, an unreachable path is AccessDenied and a missing one is false; without
/// it, an unreachable path is false and a missing one is PathNotFound.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"), then: `mode` is 0 or more than 15
///                     ("Unsupported Access Mode"); path(): empty
///   PathNotFound, AccessDenied   as above; path(): `p`
///   the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API bool access(upath const& p, unsigned int mode);
/// The same for text, converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API bool access(std::u16string const& p, unsigned int mode);

/// Sets the permissions of `p` to `perms`, which combines constants of `file_status`. With
/// `perms_add` it adds these bits to the present ones, with `perms_remove` it clears them. Follows
/// links unless `perms_symlink` is given, which changes a link itself if the system can (lchmod).
/// The attribute constants of `file_status`, 0xF000, are ignored.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"), then: `perms` has both
///                     `perms_add` and `perms_remove`, or all of `perms_unknown` ("File Permission
///                     not valid"); path(): empty
///   the class of the error number if the status can't be read; path(): empty
///   PathNotFound   `p` does not exist; path(): `p`
///   the class of the error number if the change fails; path(): `p`
///
/// permissions(u"~/notes", file_status::group_write | file_status::perms_remove);
KO_FILESYSTEM_API void permissions(upath const& p, unsigned int perms);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void permissions(std::u16string const& p, unsigned int perms);

}  // namespace ko::filesystem
