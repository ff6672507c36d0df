#include "trace.h"

#include <cstdio>

namespace lcn
{

void traceHeader(const lcnNET_var& var)
{
    if (!var.Debug) return;
    std::printf("\n\nCirc nIter  massfrac      mass[%d]    pp[%d]", var.nxx, var.nxx);
    std::printf("       summass    delpreserr   maxmasserr  ip   temperror    it    Minorerr   im\n");
}

void traceIteration(const lcnNET_var& var, const TraceLine& line)
{
    if (!var.Debug) return;
    // kept: the mass column always shows zero; readers of traces count columns.
    std::printf("%3d %3d %12.4lE %12.4lE %12.4lE %12.4lE %12.4lE %12.4lE %3d %12.4lE %3d %12.4lE %3d  \n", 0,
                var.nIter, line.massFraction, 0.0, line.tracedCorrection, line.sumMass, line.pressureError,
                line.massError, line.flowUpdates, line.temperatureError, line.temperatureSweeps,
                line.minorError, line.minorUpdates);
}

}  // namespace lcn
