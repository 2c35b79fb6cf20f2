#include <ko/filesystem/exceptions/throw.hpp>

#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>

namespace ko::filesystem::detail {

void throw_invalid_argument(char const* message) {
    throw cloneable(InvalidArgument(message, {}, {}));
}

void throw_invalid_operation_exception() { throw cloneable(InvalidOperation()); }

}  // namespace ko::filesystem::detail
