#pragma once

#include "command_line.hpp"

namespace kofs {

/// Walks through every operation on paths of this machine and of scratch directories, which are
/// gone afterwards, also when a signal ends the tour.
int tour(arguments const&);

}  // namespace kofs
