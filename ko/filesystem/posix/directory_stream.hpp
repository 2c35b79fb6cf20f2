// Internal: not installed.
#pragma once

#include <dirent.h>

#include <memory>

namespace ko::filesystem::detail {

struct close_dir {
    void operator()(DIR* stream) const noexcept { ::closedir(stream); }
};
using dir_stream = std::unique_ptr<DIR, close_dir>;

/// Opens the directory `path8`, relative to the directory `base`, with `flags` in addition to those
/// that every directory needs. Returns the descriptor, or -1 and sets errno.
int open_directory(int base, char const* path8, int flags) noexcept;

/// 0 if `path8`, relative to the directory `base`, is a directory and not a link, else the error
/// number.
int directory_error(int base, char const* path8) noexcept;

/// The same as a stream; returns null and sets errno on failure.
dir_stream open_directory_stream(int base, char const* path8, int flags) noexcept;

/// The next entry except "." and "..". Null at the end, with errno 0, and after a failure.
::dirent const* next_entry(DIR* stream) noexcept;

}  // namespace ko::filesystem::detail
