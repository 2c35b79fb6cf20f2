#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Makes the directory `p` with mode 0775 less the umask. An existing `p` is an error, unlike in
/// std::filesystem.
///
/// Throws
///   FileExistsError   `p` exists or is "/"; path(): `p`
///   the class of the error number for every other failure, PathNotFound for an empty `p` among
///   them; path(): `p`
KO_FILESYSTEM_API void create_directory(upath const& p);
/// The same for text, brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void create_directory(std::u16string const& p);

/// Makes the directory `p` and every missing one above it, each with mode 0775 less the umask.
/// An existing `p` is an error, unlike in std::filesystem. What was made before a failure stays.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"); path(): empty
///   FileExistsError   `p` exists or is "/"; path(): `p`
///   the class of the error number when a step fails; path(): the prefix that could not be made
///
/// create_directories(u"~/notes/2024");  // makes ~/notes as well
KO_FILESYSTEM_API void create_directories(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void create_directories(std::u16string const& p);

/// Makes the directory `p` and every missing one above it, as `create_directories` does; but a
/// directory, or a link to one, that is at `p` already is no failure, also when another process
/// makes it meanwhile. Whether `p` was made.
///
/// Throws as `create_directories`; FileExistsError when something else is at `p`, a dangling link
/// too
KO_FILESYSTEM_API bool ensure_directories(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API bool ensure_directories(std::u16string const& p);

/// Makes the name `link` for the file `existing` (linkat). A symbolic link at `existing` is linked
/// itself, not what it leads to.
///
/// Throws
///   InvalidArgument   `existing` or `link` is empty ("Empty Path not permitted"); path(): empty
///   FileExistsError   something exists at `link`, links followed; path(): empty
///   the class of the error number when `link` can't be examined; path(): `link`
///   the class of the error number when the link can't be made, PathNotFound for a missing
///   `existing`, FileExistsError for a dangling link at `link`, and a SystemError with EPERM for a
///   directory or EXDEV for another file system among them; path(): `existing`, arguments(): `link`
///   where the class keeps it
KO_FILESYSTEM_API void create_hard_link(upath const& existing, upath const& link);
/// The same for texts, each brought into native form first.
KO_FILESYSTEM_API void create_hard_link(std::u16string const& existing, std::u16string const& link);

/// Makes the symbolic link `link` that holds the text `target`, which need not exist and, when
/// relative, counts from the link's directory. `type` is `file_type_auto`, `regular_file` or
/// `directory_file` of `file_status`; a POSIX link has no type, so it changes nothing.
///
/// Throws
///   InvalidArgument   `target` or `link` is empty ("Empty Path not permitted"), then: another
///                     `type` ("Unsupported file type"); path(): empty
///   FileExistsError   something exists at `link`, links followed; path(): empty
///   the class of the error number when `link` can't be examined; path(): `link`
///   the class of the error number when the link can't be made, FileExistsError for a dangling link
///   at `link` among them; path(): `target`, arguments(): `link` where the class keeps it
KO_FILESYSTEM_API void create_symlink(upath const& target, upath const& link,
                                      unsigned int type = file_status::file_type_auto);
/// The same for texts, each brought into native form first, that of the target too.
KO_FILESYSTEM_API void create_symlink(std::u16string const& target, std::u16string const& link,
                                      unsigned int type = file_status::file_type_auto);

}  // namespace ko::filesystem
