#pragma once

#include <cstddef>
#include <string>

namespace kofs {

/// The columns that `text`, printable UTF-8, takes on a terminal: two for a wide character of East
/// Asia, none for one that combines with that before it.
std::size_t columns(std::string const& text);

/// The end of `text`, after dots if something is missing, in at most `width` columns.
std::string end_that_fits(std::string const& text, std::size_t width);

}  // namespace kofs
