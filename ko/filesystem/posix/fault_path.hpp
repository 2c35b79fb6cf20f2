// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// Which of the two paths of an operation a failure is reported with.
enum class blame { source, destination, both };

/// For `error` of a move from `from`, a text in native form.
/// Throws what asking for `from` or its directory throws; see `rename`.
blame blame_for_rename(int error, std::u16string const& from);

/// For `error` of Boost's in a copy or a comparison from `from`, which is brought into native form.
/// Throws what asking for `from` throws.
blame blame_for_copy(int error, std::u16string const& from);

}  // namespace ko::filesystem::detail
