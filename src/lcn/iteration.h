// iteration.h: the solver's outer loop.
#pragma once

#include "pressure_solve.h"
#include "records.h"

namespace lcn
{

/// Asked once per iteration and once per step of the search for starting values; true requests a stop. May be
/// null.
using CancelCallback = bool (*)();

/// Which of the faster paths an iteration takes; all of them, but where two are compared.
struct IterationPaths {
    Factorisation factorisation = Factorisation::kFast;
    bool startsNearSolution = true;
    bool sweepsPipes = true;
};

/// Iterates prepared records to convergence: linearise, solve for pressure corrections, update flows,
/// measure, update temperatures and minor losses, until mass and pressure errors are below Concrit, numitermm
/// iterations are done, a stop is requested or a value is no longer finite. dt [s] is the time step,
/// kSteadyState for a steady solve.
/// Returns true when it converged and nothing but 700480 was recorded; else the reasons are in var.Messages
/// and the last iterate stays in the records. var.startedNear tells whether it began near the solution; it then
/// gives up after 200 iterations: the ordinary start, from records prepared anew, has the last word. relaxpp may be lowered to 0.1 and stays so.
/// Raises FatalException for an empty node list, kNoInternalNodes, and a singular unsymmetric matrix.
bool iterate(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var, double dt,
             CancelCallback cancel, const IterationPaths& paths = {});

}  // namespace lcn
