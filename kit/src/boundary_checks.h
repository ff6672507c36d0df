// boundary_checks.h: what the parts of a network must have together before it can be built.
#ifndef TAVELL_KIT_BOUNDARY_CHECKS_H
#define TAVELL_KIT_BOUNDARY_CHECKS_H

#include <string>

#include "findings.h"
#include "network.h"

namespace kit
{

/// The JSON pointer of findings: that of their node or element below a document, or the same for all.
enum class PointerOf { parts, all };

/// Reports the lengths that contradict the coordinates, boundary values that cannot be imposed, nodes without
/// elements, and networks without an inlet, an outlet or any given pressure. The network's own parts are
/// sound. pointer: that of the network's document, or that of all findings.
void checkTogether(const Network& network, PointerOf of, const std::string& pointer, Findings& findings);

}  // namespace kit

#endif
