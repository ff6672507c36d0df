// cases.h: circuits that together reach every section and every branch of the report.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/networks.h"

namespace GoldenTest
{

/// A circuit, what its description cannot say, and how it is solved. name is also its folder of expected
/// files.
struct Case {
    std::string name;
    support::Description network;
    void (*complete)(const support::Built&) = nullptr;
    bool energy = false;
};

/// A failing test names its case.
inline void PrintTo(const Case& golden, std::ostream* out)
{
    *out << golden.name;
}

/// Pump, free and fixed loss curve, Hazen-Williams pipes along and against the flow, heights, every energy
/// type.
Case pumpedLoop();
/// Both valves, orifice, general loss, control valve at its limit, non-return element open and shut, a
/// pressure fixed inside the network, an open end.
Case valvesAndOrifice();
/// A flow fixed inside the network that becomes a target, one that stays, an end with pressure and flow
/// fixed.
Case innerTarget();
/// Viscosity by temperature, an inlet of its own temperature, gravity along x, ends of one element at one
/// place.
Case viscosityLaw();
/// Temperatures solved over every kind of energy input, a mixing node.
Case heatedPipes();

std::vector<Case> allCases();

}  // namespace GoldenTest
