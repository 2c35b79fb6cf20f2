#pragma once

#include <system_error>
#include <type_traits>
#include <utility>

#include <ko/filesystem/config.hpp>

namespace ko::filesystem {

namespace detail {

/// The error number of the exception being handled, which is rethrown if `attempt` lets it pass.
[[nodiscard]] KO_FILESYSTEM_API std::error_code caught_error();

}  // namespace detail

/// Returns the result of `call`, and clears `code`; if `call` reports a failure, sets `code` and
/// returns a value-initialised result (false, 0, an empty path). In place of the overloads of
/// std::filesystem that have a `std::error_code&`.
///
/// Failures are all exceptions of this library, whose `code()` is taken, and the `filesystem_error`
/// of Boost.Filesystem and of the standard library, whose code keeps its category. Every other
/// exception passes, such as std::bad_alloc, and one of these whose error number is 0.
///
/// std::error_code code;
/// std::uint64_t const size = attempt(code, [&] { return file_size(p); });
/// if (code == std::errc::no_such_file_or_directory) return;
template <class Call>
auto attempt(std::error_code& code, Call&& call) -> std::decay_t<std::invoke_result_t<Call>> {
    using result = std::decay_t<std::invoke_result_t<Call>>;
    code.clear();
    try {
        return std::forward<Call>(call)();
    } catch (...) {
        code = detail::caught_error();
    }
    return result();
}

}  // namespace ko::filesystem
