// Internal: not installed.
#pragma once

#include <dirent.h>

#include <ko/filesystem/posix/handles.hpp>

namespace ko::filesystem::posix::detail {

/// Opens the directory `path8`, relative to the directory `base`, with `flags` in addition to those
/// that every directory needs. Returns the descriptor, or -1 and sets errno.
int open_directory(int base, char const* path8, int flags) noexcept;

/// The same as a stream; returns null and sets errno on failure.
dir_stream open_directory_stream(int base, char const* path8, int flags) noexcept;

/// The next entry except "." and "..". Null at the end, with errno 0, and after a failure.
::dirent const* next_entry(DIR* stream) noexcept;

}  // namespace ko::filesystem::posix::detail
