#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

/// No removal follows a symbolic link: the link itself is removed. For an empty path all of them do
/// nothing. Unlike in std::filesystem, a missing path is an error.
namespace ko::filesystem {

/// Removes the file, link or empty directory `p`.
///
/// Throws
///   PathNotFound   `p` does not exist; path(): empty
///   the class of the error number for every other failure, including DirectoryNotEmpty;
///   path(): `p`
KO_FILESYSTEM_API void remove(upath const& p);
/// The same for text, converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API void remove(std::u16string const& p);

/// Removes the file, link or empty directory `p` if it exists. Returns whether it was removed;
/// false also if it vanishes meanwhile.
///
/// Throws the class of the error number for every failure but ENOENT, including NotDirectoryError
/// below a file and DirectoryNotEmpty; path(): `p`
KO_FILESYSTEM_API bool remove_if_exists(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API bool remove_if_exists(std::u16string const& p);

/// Removes `p` like `remove_directory` if `type` is `file_status::directory_file`, otherwise like
/// `remove_file`, without a check of its actual type.
///
/// Throws like `remove_directory` or `remove_file`.
KO_FILESYSTEM_API void remove(upath const& p, unsigned int type);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void remove(std::u16string const& p, unsigned int type);

/// Removes the file or link `p`.
///
/// Throws
///   FileIsDirectory   EISDIR, and also EPERM, which some systems report for a directory, and all
///                     of them for another user's file in a sticky directory and for an immutable
///                     file; path(): `p`
///   the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API void remove_file(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void remove_file(std::u16string const& p);

/// Removes the empty directory `p`.
///
/// Throws the class of the error number, including DirectoryNotEmpty and NotDirectoryError;
/// path(): `p`
KO_FILESYSTEM_API void remove_directory(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void remove_directory(std::u16string const& p);

/// The same as `remove_file`.
KO_FILESYSTEM_API void remove_symlink(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void remove_symlink(std::u16string const& p);

/// Removes `p` and, if it is a directory, everything below it. A link is removed itself, but
/// "link/." is the directory that it leads to: that is emptied. Not atomic: what was removed before
/// a failure stays removed. A directory that vanishes before it is listed counts as removed. Before
/// each entry, the walk checks that its directory still is a directory and not a link; but entries
/// are removed by path, so a process that can rename in the tree can still redirect the walk. Where
/// paths become longer than the system takes, each entry is removed relative to its open directory,
/// never through a link. One directory stream is open per level.
///
/// Throws
///   PathNotFound   `p` is missing, or an entry vanished while it was examined; path(): empty
///   PathNotFound   a directory vanished just before its removal; path(): the directory
///   the class of the error number for every other failure; path(): the entry that failed
KO_FILESYSTEM_API void remove_all(upath const& p);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void remove_all(std::u16string const& p);

}  // namespace ko::filesystem
