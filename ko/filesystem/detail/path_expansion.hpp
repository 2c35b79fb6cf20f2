#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/detail/path_cursor.hpp>  // which was here in 1.0

/// Tilde expansion of path text.
namespace ko::filesystem::detail {

/// `p` with a leading "~" or "~name" replaced by the home directory, as by
/// `pathname_traits<char16_t>::replace_tilde_with_home_dir`; `p` itself if `suppress_expansion`.
/// Separators are left unchanged: `make_native_form` does both.
KO_FILESYSTEM_API std::u16string make_expanded_path(std::u16string const& p,
                                                    bool suppress_expansion);

/// Whether `p` begins with a slash once a leading tilde is expanded (unless `suppress_expansion`).
/// False if no home directory is found.
KO_FILESYSTEM_API bool is_absolute_path_when_expanded(std::u16string const& p,
                                                      bool suppress_expansion);

}  // namespace ko::filesystem::detail
