#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Whether `p` exists, links followed (stat). False for an empty path, a dangling link, a path
/// below a regular file, if the system reports EINVAL, and for a path that contains U+0000, which
/// names no file.
///
/// Throws the class of the error number for every other failure, such as AccessDenied for EACCES
/// and SystemError for ELOOP; path(): `p`
KO_FILESYSTEM_API bool exists(upath const& p);
/// The same for text, converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API bool exists(std::u16string const& p);

/// Whether `p` is a directory, links followed (stat). False wherever `exists` is false.
/// Throws like `exists`.
[[nodiscard]] KO_FILESYSTEM_API bool is_directory(upath const& p);
/// The same for text, converted to native form first.
[[nodiscard]] KO_FILESYSTEM_API bool is_directory(std::u16string const& p);

/// Whether `p` is a regular file, links followed (stat). False wherever `exists` is false.
/// Throws like `exists`.
[[nodiscard]] KO_FILESYSTEM_API bool is_regular_file(upath const& p);
/// The same for text, converted to native form first.
[[nodiscard]] KO_FILESYSTEM_API bool is_regular_file(std::u16string const& p);

/// Whether `p` is a symbolic link, dangling or not (lstat). False for a missing path, also below a
/// file.
/// Throws like `exists`.
[[nodiscard]] KO_FILESYSTEM_API bool is_symlink(upath const& p);
/// The same for text, converted to native form first.
[[nodiscard]] KO_FILESYSTEM_API bool is_symlink(std::u16string const& p);

/// The status of `p`, links followed (stat). `file_not_found` for a missing or empty path, if the
/// system reports EINVAL, and for a path that contains U+0000.
///
/// Throws, unlike `exists`, NotDirectoryError below a regular file; path(): empty
/// and the class of the error number for every other failure; path(): empty
///
/// if (status(u"~/notes").type == file_status::directory_file) ...
KO_FILESYSTEM_API file_status status(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API file_status status(std::u16string const& p);

/// The status of `p`, links not followed (lstat). Otherwise like `status`.
KO_FILESYSTEM_API file_status symlink_status(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API file_status symlink_status(std::u16string const& p);

/// Type, time of the last write and size of `p`, links followed (stat). The text is used exactly as
/// given: it is not converted to native form, and a tilde is not expanded. `file_not_found` in the
/// same cases as in `status`.
///
/// Throws NotDirectoryError below a regular file; path(): `p`
/// and the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API file_status_light status_express_light(std::u16string const& p);

}  // namespace ko::filesystem
