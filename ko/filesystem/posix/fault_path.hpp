// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// Which of the two paths of an operation an exception has.
enum class blame { source, destination, both };

/// For `error` of a move from `from`, a text in native form.
/// Throws what the query of `from` or its directory throws; see `rename`.
blame blame_for_rename(int error, std::u16string const& from);

/// For `error`, reported by Boost for a copy of `from` or a comparison with it. `from` is converted
/// to native form.
/// Throws what the query of `from` throws.
blame blame_for_copy(int error, std::u16string const& from);

}  // namespace ko::filesystem::detail
