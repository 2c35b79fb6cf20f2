#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

/// Operations of other platforms. Stubs, so that portable callers link.
namespace ko::filesystem {

/// `p`, converted to UTF-8 and back, in native form: a leading tilde that `p` kept is expanded.
/// Accesses no file and ignores `flag`. Empty if the conversion fails.
KO_FILESYSTEM_API upath get_unc_path(upath const& p, bool flag);
/// The same for text, without conversion to native form.
KO_FILESYSTEM_API std::u16string get_unc_path(std::u16string const& p, bool flag);

/// Always throws InvalidOperation: POSIX has no shortcuts.
KO_FILESYSTEM_API void create_shortcut(upath const& from, upath const& to);
/// The same for texts.
KO_FILESYSTEM_API void create_shortcut(std::u16string const& from, std::u16string const& to);

}  // namespace ko::filesystem
