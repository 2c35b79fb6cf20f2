#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

/// Operations that other platforms have. Here they are there so that callers compile and link.
namespace ko::filesystem {

/// `p` itself, converted to UTF-8 and back, in native form: a leading tilde that `p` kept is expanded.
/// No file is looked at, `flag` changes nothing. Empty when the conversion fails.
KO_FILESYSTEM_API upath get_unc_path(upath const& p, bool flag);
/// The same for text, of which no native form is made.
KO_FILESYSTEM_API std::u16string get_unc_path(std::u16string const& p, bool flag);

/// Always throws InvalidOperation: there are no shortcuts here, and nothing is made.
KO_FILESYSTEM_API void create_shortcut(upath const& from, upath const& to);
/// The same for texts.
KO_FILESYSTEM_API void create_shortcut(std::u16string const& from, std::u16string const& to);

}  // namespace ko::filesystem
