#pragma once

#include <cstddef>
#include <string>

#include <ko/filesystem/config.hpp>

/// A cursor that walks path text element by element.
namespace ko::filesystem::detail {

/// Moves a cursor over `p` to the next element. The cursor consists of `position`, where the
/// element begins, and the `element` itself; it starts at 0 with `extract_first_element(p,
/// root_length)`, where `root_length` is `get_root_path_length(p)`, and ends at the length of `p`
/// with an empty element.
///
/// Over "/a/b": (0, "/"), (1, "a"), (3, "b"), (4, ""). At the end it stays.
KO_FILESYSTEM_API void move_down(std::u16string const& p, std::size_t root_length,
                                 std::size_t& position, std::u16string& element);

/// Moves the cursor to the previous element. At the start it stays.
KO_FILESYSTEM_API void move_up(std::u16string const& p, std::size_t root_length,
                               std::size_t& position, std::u16string& element);

}  // namespace ko::filesystem::detail
