// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// The bytes of the symbolic link at the UTF-8 path `path8`.
/// Throws the class of the error number; path(): `path8`
std::string read_link_bytes(char const* path8);

/// The same in UTF-16; empty when they are not UTF-8.
std::u16string read_link_target(char const* path8);

}  // namespace ko::filesystem::detail
