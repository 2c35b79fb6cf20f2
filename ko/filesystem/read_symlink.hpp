#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// The text of the symbolic link `p`, as a path: in native form, a leading tilde expanded. Empty
/// for an empty `p`, and if the text is not UTF-8.
///
/// Throws
///   InvalidArgument   `p` is not a link (EINVAL); path(): `p`
///   the class of the error number for every other failure; path(): `p`
KO_FILESYSTEM_API upath read_symlink(upath const& p);
/// The same for text, converted to native form first; the link's text is returned unchanged.
KO_FILESYSTEM_API std::u16string read_symlink(std::u16string const& p);

}  // namespace ko::filesystem
