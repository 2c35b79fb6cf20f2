#pragma once

#include <string>
#include <vector>

#include "command.hpp"

namespace kofs {

std::vector<command> commands();

/// The options in sets of which at most one can be given.
std::vector<std::vector<option>> alternatives(std::vector<option> const& options);

/// The names of permissions.
std::vector<std::string> permission_words();

}  // namespace kofs
