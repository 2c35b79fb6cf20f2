#pragma once

#include <vector>

#include "command.hpp"

namespace kofs {

/// One command for each operation of the library, `explain`, and the tour.
std::vector<command> commands();

}  // namespace kofs
