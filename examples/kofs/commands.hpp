#pragma once

#include <vector>

#include "command_line.hpp"

namespace kofs {

/// One command for each operation of the library, and the tour.
std::vector<command> commands();

}  // namespace kofs
