#pragma once

namespace kofs {

/// Shows every operation, on paths of this machine and in scratch directories, which are removed
/// afterwards, also if a signal ends the tour. Returns the exit status.
int tour();

}  // namespace kofs
