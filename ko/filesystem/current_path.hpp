#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// The process's working directory, in native form. Empty if its path is not UTF-8. A child made by
/// fork can call it, whatever the threads of its parent do.
///
/// Throws the class of the error number, such as PathNotFound for a directory that has been
/// removed; path(): empty
KO_FILESYSTEM_API std::u16string get_current_path();

/// Changes the process's working directory. Does nothing and returns false if `p` is empty;
/// otherwise returns true. Reads and changes are serialised within this library only.
///
/// Throws the class of the error number; path(): `p`
KO_FILESYSTEM_API bool change_current_path(upath const& p);
/// The same for text, converted to native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API bool change_current_path(std::u16string const& p);

}  // namespace ko::filesystem
