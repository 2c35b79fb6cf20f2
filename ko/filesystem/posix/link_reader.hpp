// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// The text of the symbolic link `path8` in bytes.
/// Throws the class of the error number; path(): `path8`
std::string read_link_bytes(char const* path8);

/// The same in UTF-16; empty if it is not UTF-8.
std::u16string read_link_target(char const* path8);

}  // namespace ko::filesystem::detail
