#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

namespace ko::filesystem {

/// Whether `a` and `b` are the same file, links followed. False if one of them is empty, has no
/// UTF-8 form, is missing, or can't be examined.
///
/// Throws
///   InvalidArgument   both are empty ("Empty Path not permitted"); path(): empty
///   PathNotFound      neither has a UTF-8 form; path(): empty
///   PathNotFound      both are missing; path(): `a`
///   the class of the error number for every other failure; paths as for `copy_file`, with only the
///   low byte of each UTF-16 unit
KO_FILESYSTEM_API bool equivalent(upath const& a, upath const& b);
/// The same for texts, used exactly as given: no native form, no tilde expansion.
KO_FILESYSTEM_API bool equivalent(std::u16string const& a, std::u16string const& b);

}  // namespace ko::filesystem
