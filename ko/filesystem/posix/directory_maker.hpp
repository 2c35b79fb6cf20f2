// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// Makes a directory. Returns the error number, or 0, also for a failure that leaves errno at 0.
int make_directory(char const* path8) noexcept;

/// Makes the directory `path8`, which must be missing, and the missing ones above it.
/// Throws the class of the error number; path(): the leading part that can't be made
void make_directories(std::string path8);

/// The same, but accepts existing directories. Returns whether `path8` has been made.
bool ensure_directories_at(std::string path8);

}  // namespace ko::filesystem::detail
