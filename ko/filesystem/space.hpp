#pragma once

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// The size and the free space of the file system that contains `p`. There is no overload for text.
///
/// Throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"); path(): empty
///   the class of the error number, including PathNotFound; path(): `p`, with only the low byte of
///   each UTF-16 unit
KO_FILESYSTEM_API space_info space(upath const& p);

}  // namespace ko::filesystem
