// Internal: not installed.
#pragma once

#include <string_view>

namespace ko::filesystem::detail {

/// Throws the exception for the error number `errnum` of a failed system call.
///
/// `path1` is the UTF-8 path passed to the call, `path2` the second one of a call on two paths;
/// either may be empty. The exception has `path1` in UTF-16, with U+FFFD for each byte that is not
/// UTF-8. Only InvalidArgument (EINVAL) and SystemError have `path2`, as their only argument, even
/// if it is empty.
[[noreturn]] void throw_errno_exception(int errnum, std::string_view path1,
                                        std::string_view path2 = {});

}  // namespace ko::filesystem::detail
