// Internal: not installed.
#pragma once

#include <dirent.h>

#include <ko/filesystem/posix/handles.hpp>

namespace ko::filesystem::posix::detail {

/// A descriptor of the directory `path8`, seen from the directory `base`, opened with `flags` besides
/// those that every directory needs. -1 when that fails, errno being why.
int open_directory(int base, char const* path8, int flags) noexcept;

/// The same as a stream; null when that fails.
dir_stream open_directory_stream(int base, char const* path8, int flags) noexcept;

/// The next entry but "." and "..". Null at the end, errno being 0 then, and after a failure.
::dirent const* next_entry(DIR* stream) noexcept;

}  // namespace ko::filesystem::posix::detail
