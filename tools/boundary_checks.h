// boundary_checks.h: what the parts of a network must have together before it can be built.
#ifndef TAVELL_TOOLS_BOUNDARY_CHECKS_H
#define TAVELL_TOOLS_BOUNDARY_CHECKS_H

#include "network.h"
#include "problems.h"

/// Reports the boundary values that the library would ignore, a network without any given pressure, and nodes
/// without elements. The network's own parts are sound.
void checkBoundaries(const Network& network, Problems& problems);

#endif
