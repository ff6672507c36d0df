// feedback_findings.h: the library's feedback as findings, by the names of the network.
#ifndef TAVELL_KIT_FEEDBACK_FINDINGS_H
#define TAVELL_KIT_FEEDBACK_FINDINGS_H

#include <optional>

#include "circuit_builder.h"
#include "findings.h"
#include "network.h"

namespace kit
{

/// How far a solve was from its criterion when it ended without meeting it.
struct UnmetMeasures {
    std::optional<double> mass;      // [-], largest imbalance of a node over the mean flow of an element
    std::optional<double> pressure;  // [-], sum of the mismatches of the laws, each over its mean pressure
    bool isAtLimit = false;          // of the iterations
};

/// The messages of the circuit's last solve as findings; those that only say how far it was from its criterion
/// are returned instead when it did not converge. Parts that only the circuit has go by the name of the node or
/// element that they belong to.
UnmetMeasures addFeedback(const Network& network, const BuiltCircuit& built, bool hasConverged,
                          Findings& findings);

}  // namespace kit

#endif
