// temperature.h: temperatures of nodes and elements.
#pragma once

#include "records.h"

namespace lcn
{

/// Outcome of one call of the temperature solve.
struct TemperatureSolve {
    bool converged = true;
    double error = 0.0;  // [-] relative change of the sum of node temperatures in the last sweep
    int sweeps = 0;
};

/// Node temperatures from the energy balance of the flows that enter each node, element temperatures from their upstream
/// node. No heat is exchanged yet: every temperature keeps its starting value.
TemperatureSolve solveTemperatures(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

}  // namespace lcn
