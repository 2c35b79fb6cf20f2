// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// The text of the symbolic link `path8` in bytes.
/// Throws the class of the error number; path(): `path8`
std::string read_link_bytes(char const* path8);

/// The same in UTF-16; empty if it is not UTF-8.
std::u16string read_link_target(char const* path8);

/// Makes the link `link8` by `call`, whose first argument is `target8`. Throws like `create_symlink`.
void make_link_by(int (*call)(char const*, char const*), char const* target8, char const* link8);

}  // namespace ko::filesystem::detail
