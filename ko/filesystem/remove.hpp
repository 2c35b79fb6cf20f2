#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

/// None of the removals follows a symbolic link: a link is removed as itself. All of them do
/// nothing for an empty path. Unlike in std::filesystem, a missing path is an error.
namespace ko::filesystem {

/// Removes the file, link or empty directory `p`.
///
/// Throws
///   PathNotFound   nothing is there; path(): empty
///   the class of the error number for every other failure, DirectoryNotEmpty among them;
///   path(): `p`
KO_FILESYSTEM_API void remove(upath const& p);
/// The same for text, brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void remove(std::u16string const& p);

/// Removes the file, link or empty directory `p`, if it is there, also when it vanishes meanwhile.
/// Whether it was removed.
///
/// Throws the class of the error number for every failure but ENOENT, NotDirectoryError below a file
/// and DirectoryNotEmpty among them; path(): `p`
KO_FILESYSTEM_API bool remove_if_exists(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API bool remove_if_exists(std::u16string const& p);

/// Removes `p` as an empty directory when `type` is `file_status::directory_file`, else as
/// `remove_file` does. What is there is not looked at first.
///
/// Throws as `remove_directory` or `remove_file`.
KO_FILESYSTEM_API void remove(upath const& p, unsigned int type);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void remove(std::u16string const& p, unsigned int type);

/// Removes the file or link `p`.
///
/// Throws
///   FileIsDirectory   EISDIR, and also EPERM, which some systems report for a directory, and all for
///                     another user's file in a sticky directory and for an immutable file; path(): `p`
///   the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API void remove_file(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void remove_file(std::u16string const& p);

/// Removes the empty directory `p`.
///
/// Throws the class of the error number, DirectoryNotEmpty and NotDirectoryError among them;
/// path(): `p`
KO_FILESYSTEM_API void remove_directory(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void remove_directory(std::u16string const& p);

/// The same as `remove_file`.
KO_FILESYSTEM_API void remove_symlink(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void remove_symlink(std::u16string const& p);

/// Removes `p` and, when it is a directory, everything below it. Not atomic: what was removed
/// before a failure stays removed. A directory that vanishes before it is listed counts as removed. The walk
/// makes sure before each entry that the directory it is in is still one and no link, but an entry
/// is removed by its path, so a process that may rename in the tree can still move the walk
/// elsewhere. One directory stream is open per level.
///
/// Throws
///   PathNotFound   `p` is missing, or an entry vanished while it was looked at; path(): empty
///   PathNotFound   a directory vanished just before it was to be removed; path(): the directory
///   the class of the error number for every other failure; path(): the entry that failed
KO_FILESYSTEM_API void remove_all(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void remove_all(std::u16string const& p);

}  // namespace ko::filesystem
