#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Makes the directory `p` with mode 0775 less the umask. Unlike in std::filesystem, an existing
/// `p` is an error.
///
/// Throws
///   FileExistsError   `p` exists or is "/"; path(): `p`
///   PathNotFound      `p` is empty; path(): empty
///   the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API void create_directory(upath const& p);
/// The same for text, converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void create_directory(std::u16string const& p);

/// Makes the directory `p` and every missing one above it, each with mode 0775 less the umask.
/// Unlike in std::filesystem, an existing `p` is an error. What was made before a failure stays.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"); path(): empty
///   FileExistsError   `p` exists or is "/"; path(): `p`
///   the class of the error number if a step fails; path(): the prefix that could not be made
///
/// create_directories(u"~/notes/2024");  // makes ~/notes as well
KO_FILESYSTEM_API void create_directories(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void create_directories(std::u16string const& p);

/// Makes the directory `p` and every missing one above it, like `create_directories`, but accepts
/// an existing directory, or a link to one, at `p`, also one that another process makes meanwhile.
/// Returns whether `p` was made.
///
/// Throws like `create_directories`; FileExistsError if anything else exists at `p`, including a
/// dangling link
KO_FILESYSTEM_API bool ensure_directories(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API bool ensure_directories(std::u16string const& p);

/// Makes the hard link `link` to the file `existing` (linkat). If `existing` is a symbolic link,
/// that itself is linked, not its target.
///
/// Throws
///   InvalidArgument   `existing` or `link` is empty ("Empty Path not permitted"); path(): empty
///   FileExistsError   something exists at `link`, links followed; path(): empty
///   the class of the error number if `link` can't be examined; path(): `link`
///   the class of the error number if the link can't be made, such as PathNotFound for a missing
///   `existing`, FileExistsError for a dangling link at `link`, and a SystemError with EPERM for a
///   directory or EXDEV for another file system; path(): `existing`, arguments(): `link` if the
///   class has any
KO_FILESYSTEM_API void create_hard_link(upath const& existing, upath const& link);
/// The same for texts, each converted to native form first.
KO_FILESYSTEM_API void create_hard_link(std::u16string const& existing, std::u16string const& link);

/// Makes the symbolic link `link` with the text `target`, which need not exist; if relative, the
/// system resolves it from the directory of the link. `type` is `file_type_auto`, `regular_file` or
/// `directory_file` of `file_status`; it has no effect, since a POSIX link has no type.
///
/// Throws
///   InvalidArgument   `target` or `link` is empty ("Empty Path not permitted"), then: another
///                     `type` ("Unsupported file type"); path(): empty
///   FileExistsError   something exists at `link`, links followed; path(): empty
///   the class of the error number if `link` can't be examined; path(): `link`
///   the class of the error number if the link can't be made, such as FileExistsError for a
///   dangling link at `link`; path(): `target`, arguments(): `link` if the class has any
KO_FILESYSTEM_API void create_symlink(upath const& target, upath const& link,
                                      unsigned int type = file_status::file_type_auto);
/// The same for texts, each converted to native form first, including `target`.
KO_FILESYSTEM_API void create_symlink(std::u16string const& target, std::u16string const& link,
                                      unsigned int type = file_status::file_type_auto);

}  // namespace ko::filesystem
