// circuits.h: random circuits of every shape and kind of element, for comparisons.
#pragma once

#include <random>

#include "support/networks.h"

namespace reference
{

/// What a random circuit may hold.
struct Choice {
    std::vector<int> kinds = {TAVELL_PIPE};  // element types, drawn with equal chance
    int fewestNodes = 1;                     // inner nodes
    int mostNodes = 34;
    bool onlyPressures = false;  // boundary nodes have pressures alone
    bool allFrictionMethods = true;
    bool innerBoundaries = true;  // pressures also at nodes inside, not at stubs alone
};

/// Every kind of element but pumps, control valves and non-return elements; pipes most often.
std::vector<int> passiveKinds();

/// A tree, a loop with branches, a ladder, a grid or a mesh of inner nodes with one to three inlets and up to four
/// outlets; a liquid between water and oil; gravity in any direction. Any two elements that join the same nodes
/// count as parallel.
support::Description randomCircuit(std::mt19937& random, const Choice& choice);

/// A random element of a kind between two nodes; size: a usual diameter [m].
support::ElementData randomElement(std::mt19937& random, int start, int end, int kind, double size);

/// Number in [low, high).
double uniform(std::mt19937& random, double low, double high);
/// Number in [low, high), its logarithm uniform.
double logUniform(std::mt19937& random, double low, double high);
/// Number of 0 .. count - 1.
int pick(std::mt19937& random, int count);

}  // namespace reference
