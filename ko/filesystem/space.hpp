#pragma once

#include <cstdint>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// The result of `space`, in bytes.
struct space_info {
    std::uint64_t capacity;
    std::uint64_t free;
    std::uint64_t available;  ///< to a process without privileges
};

/// The size and the free space of the file system that contains `p`. There is no overload for text.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"); path(): empty
///   the class of the error number, including PathNotFound; path(): `p`, with only the low byte of
///   each UTF-16 unit
KO_FILESYSTEM_API space_info space(upath const& p);

}  // namespace ko::filesystem
