#pragma once

#include <string>

#include "command.hpp"

namespace kofs {

/// Prints the entries of the directory `path`, by the options. Goes on after an entry that can't be
/// shown and after a directory that can't be read. Returns the exit status.
int list(arguments const& given, std::u16string const& path);

}  // namespace kofs
