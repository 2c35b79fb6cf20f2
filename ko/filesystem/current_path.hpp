#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// The process's working directory, in native form. Empty when its name is not UTF-8.
///
/// Throws the class of the error number, PathNotFound for a directory that has been removed among
/// them; path(): empty
KO_FILESYSTEM_API std::u16string get_current_path();

/// Changes the process's working directory. False, and nothing happens, when `p` is empty; else
/// true. Changes and reads through this library never interleave; others are not kept out.
///
/// Throws the class of the error number; path(): `p`
KO_FILESYSTEM_API bool change_current_path(upath const& p);
/// The same for text, brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API bool change_current_path(std::u16string const& p);

}  // namespace ko::filesystem
