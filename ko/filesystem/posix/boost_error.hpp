// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// Throws the class of the error number reported by Boost.Filesystem for an operation on `path1`
/// and `path2`, which may be empty. Does nothing if `error` is 0.
///
/// The exception has only the low byte of each UTF-16 unit of the paths, not their UTF-8 form: this
/// is the released interface.
void throw_error_code_exception(int error, std::u16string const& path1,
                                std::u16string const& path2);

/// The same for a copy or a comparison, with the path at fault (fault_path.hpp).
void throw_copy_error_code_exception(int error, std::u16string const& from,
                                     std::u16string const& to);

}  // namespace ko::filesystem::detail
