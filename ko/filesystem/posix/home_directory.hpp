// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// The user's own home directory, and that of `user`; empty if there is none. See
/// `pathname_traits::replace_tilde_with_home_dir`.
std::string own_home();
std::string home_of(std::string const& user);

}  // namespace ko::filesystem::detail
