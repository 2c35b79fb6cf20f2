// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// Makes the symbolic link `link` with the text `target`, both exactly as given. See
/// `create_symlink` for `type` and the exceptions.
void make_link(std::u16string const& target, std::u16string const& link, unsigned int type);

/// The same for both in UTF-8; `target8` is not empty.
void make_link_at(char const* target8, char const* link8);

/// Makes the hard link `link` to `existing`, both exactly as given. See `create_hard_link` for
/// the exceptions.
void make_hard_link(std::u16string const& existing, std::u16string const& link);

}  // namespace ko::filesystem::detail
