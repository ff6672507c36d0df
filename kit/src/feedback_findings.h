// feedback_findings.h: the library's feedback as findings, by the names of the network.
#ifndef TAVELL_KIT_FEEDBACK_FINDINGS_H
#define TAVELL_KIT_FEEDBACK_FINDINGS_H

#include "circuit_builder.h"
#include "findings.h"
#include "network.h"

namespace kit
{

/// One finding per message of the circuit's last solve. Parts that only the circuit has go by the name of the
/// node or element that they belong to.
void addFeedback(const Network& network, const BuiltCircuit& built, bool hasConverged, Findings& findings);

}  // namespace kit

#endif
