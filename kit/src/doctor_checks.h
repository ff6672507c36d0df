// doctor_checks.h: the groups of the doctor's checks. Each adds what it finds.
#ifndef TAVELL_KIT_DOCTOR_CHECKS_H
#define TAVELL_KIT_DOCTOR_CHECKS_H

#include <optional>

#include "findings.h"
#include "network.h"
#include "solution.h"

namespace kit::doctor
{

/// Parts that do not hang together, parts without a pressure, given flows that cannot be carried.
void checkParts(const Network& network, Findings& findings);

/// Boundary conditions that contradict each other or are not used, and the gravity vector.
void checkBoundaries(const Network& network, Findings& findings);

/// Lengths, diameters and other values that smell of a mistaken unit; elements and nodes on top of each
/// other.
void checkSizes(const Network& network, Findings& findings);

/// Curves of pumps and losses.
void checkCurves(const Network& network, Findings& findings);

/// The results of a solve: pumps off their curves, shut valves, elements at rest, pressures, velocities,
/// residuals.
void checkResults(const Network& network, const Solution& solution, Findings& findings);

/// How far the conductances of the elements lie apart: the ratio of the largest to the smallest.
struct ConductanceRange {
    std::size_t least = 0;     // position of the element
    std::size_t greatest = 0;  // position of the element
    double leastFlow = 0.0;    // [kg/s] at 1 kPa
    double greatestFlow = 0.0;
    double ratio() const { return greatestFlow / leastFlow; }
};

/// The range over pipes and valves that are open; nothing when there are fewer than two.
std::optional<ConductanceRange> conductanceRange(const Network& network);
void addConductanceSpread(const Network& network, const ConductanceRange& range, Findings& findings);

}  // namespace kit::doctor

#endif
