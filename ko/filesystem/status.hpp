#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Whether something exists at `p`, links followed (stat). False for an empty path, for a dangling
/// link, below a regular file, where the system says EINVAL, and for a path with U+0000 in it,
/// which names nothing.
///
/// Throws the class of the error number for every other failure, AccessDenied for EACCES and
/// SystemError for ELOOP among them; path(): `p`
KO_FILESYSTEM_API bool exists(upath const& p);
/// The same for text, brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API bool exists(std::u16string const& p);

/// Whether a directory is at `p`, links followed (stat). False wherever `exists` is false.
/// Throws as `exists`.
KO_FILESYSTEM_API bool is_directory(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API bool is_directory(std::u16string const& p);

/// Whether a regular file is at `p`, links followed (stat). False wherever `exists` is false.
/// Throws as `exists`.
KO_FILESYSTEM_API bool is_regular_file(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API bool is_regular_file(std::u16string const& p);

/// Whether a symbolic link is at `p`, a dangling one too (lstat). False where nothing is, below a
/// file too.
/// Throws as `exists`.
KO_FILESYSTEM_API bool is_symlink(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API bool is_symlink(std::u16string const& p);

/// What is at `p`, links followed (stat). Says `file_not_found` where nothing is, for an empty
/// path, where the system says EINVAL, and for a path with U+0000 in it.
///
/// Throws, unlike `exists`, NotDirectoryError below a regular file; path(): empty
/// and the class of the error number for every other failure; path(): empty
///
/// if (status(u"~/notes").type == file_status::directory_file) ...
KO_FILESYSTEM_API file_status status(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API file_status status(std::u16string const& p);

/// What is at `p`, a link there not followed (lstat). Otherwise as `status`.
KO_FILESYSTEM_API file_status symlink_status(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API file_status symlink_status(std::u16string const& p);

/// Type, time of the last write and size of what is at `p`, links followed (stat). The text is used
/// exactly as given: no native form is made, and a tilde is a name. Says `file_not_found` as
/// `status` does.
///
/// Throws NotDirectoryError below a regular file; path(): `p`
/// and the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API file_status_light status_express_light(std::u16string const& p);

}  // namespace ko::filesystem
