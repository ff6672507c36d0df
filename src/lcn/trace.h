// trace.h: one line per iteration on standard output.
#pragma once

#include "records.h"

namespace lcn
{

/// What a line of the trace shows besides the iteration number.
struct TraceLine {
    double massFraction;      // [-] relative change of the total flow
    double tracedCorrection;  // [Pa] pressure correction of the traced node
    double sumMass;           // [-]
    double pressureError;     // [-]
    double massError;         // [-]
    int flowUpdates;
    double temperatureError;  // [-]
    int temperatureSweeps;
    double minorError;  // [-]
    int minorUpdates;
};

/// Column titles; nothing unless Debug is set.
void traceHeader(const lcnNET_var& var);
/// The line of iteration var.nIter; nothing unless Debug is set.
void traceIteration(const lcnNET_var& var, const TraceLine& line);

}  // namespace lcn
