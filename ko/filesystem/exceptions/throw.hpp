// Internal: not installed.
#pragma once

#include <boost/exception/enable_current_exception.hpp>

namespace ko::filesystem::detail {

/// `error` in the form in which the library throws every exception: `boost::current_exception()`
/// captures it with its exact class.
template <class Error>
auto cloneable(Error const& error) {
    return boost::enable_current_exception(error);
}

/// Throws InvalidArgument for a check of the library: with the message only, no path.
[[noreturn]] void throw_invalid_argument(char const* message);

/// Throws InvalidOperation, for an operation that this platform does not have.
[[noreturn]] void throw_invalid_operation_exception();

}  // namespace ko::filesystem::detail
