// global_gradient.h: starting values close to the solution of a large network.
#pragma once

#include <vector>

#include "iteration.h"
#include "pipe_sweep.h"
#include "pressure_solve.h"
#include "records.h"

namespace lcn
{

/// What became of the search for starting values.
enum class NearStart {
    kNotTried,   // a network for which it does not pay
    kNotFound,   // the ordinary starting values stand
    kFound,      // pressures of free nodes and flows of open elements are close to the solution
    kCancelled,  // the ordinary starting values stand
};

/// Brings the pressures of the free nodes and the flows of the open elements close to the solution by the
/// global gradient method (Todini and Pilati 1988): Newton's method on flows and pressures together, each step
/// one solution of the system's equations. Elements with a fixed flow or a flow target keep it; control valves
/// and non-return elements enter as they stand, open or fixed.
/// Tried when the pipes are in the sweep and nothing is traced, from 300 free nodes on: an iteration from here
/// takes one or two rounds instead of some 28, and a step costs less than a round.
/// Writes only when it is kFound, that is when the flows that the laws still ask for have fallen below 1e-3 of
/// the flows within 20 steps: Pressure of nodes, the flows in pipes, Massflow of the others. equations and
/// corrections are work space, left as they happen to be. cancel may be null.
NearStart startNearSolution(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                            PipeSweep& pipes, PressureSystem& system, NodeEquations& equations,
                            std::vector<double>& corrections, CancelCallback cancel);

}  // namespace lcn
