#pragma once

#include <boost/exception/enable_current_exception.hpp>

namespace ko::filesystem::detail {

/// Throws `error` in a form that `boost::current_exception()` captures with its exact class.
/// Nothing else in the library throws.
template <class Error>
[[noreturn]] void throw_cloneable(Error const& error) {
    throw boost::enable_current_exception(error);
}

/// Throws InvalidArgument for a check of the library's own: the message only, no path.
[[noreturn]] void throw_invalid_argument(char const* message);

/// Throws InvalidOperation: this platform has no such operation.
[[noreturn]] void throw_invalid_operation_exception();

}  // namespace ko::filesystem::detail
