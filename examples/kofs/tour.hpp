#pragma once

#include "command_line.hpp"

namespace kofs {

/// Shows what the library answers about paths of this machine and of a scratch directory.
int tour(arguments const&);

}  // namespace kofs
