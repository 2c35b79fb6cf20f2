// Internal: not installed.
#pragma once

#include <boost/exception/enable_current_exception.hpp>

namespace ko::filesystem::detail {

/// `error` in the form that every exception leaves the library in, which `boost::current_exception()`
/// captures with its exact class.
template <class Error>
auto cloneable(Error const& error) {
    return boost::enable_current_exception(error);
}

/// Throws InvalidArgument for a check of the library's own: the message only, no path.
[[noreturn]] void throw_invalid_argument(char const* message);

/// Throws InvalidOperation: this platform has no such operation.
[[noreturn]] void throw_invalid_operation_exception();

}  // namespace ko::filesystem::detail
