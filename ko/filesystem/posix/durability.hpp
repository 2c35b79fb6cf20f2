// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

// These write to the disk what the system has so far only in memory, and return when the disk has
// it: the error number of a failure, or 0. What may not be opened is written with everything else
// that the system has (sync), which reports no failures.

/// The contents and attributes of the regular file, or the entries of the directory, `path8`.
int sync_file(char const* path8) noexcept;

/// The entries of the directory that contains `path8`, or would.
int sync_directory_of(std::string const& path8);

/// Everything in the file system of the directory `path8`. ENOTSUP if the system can't do that for
/// one file system.
int sync_file_system(char const* path8) noexcept;

}  // namespace ko::filesystem::detail
