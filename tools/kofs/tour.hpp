#pragma once

namespace kofs {

/// Walks through every operation on paths of this machine and of scratch directories, which are
/// gone afterwards, also when a signal ends the tour.
int tour();

}  // namespace kofs
