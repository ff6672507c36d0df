#include "trace.h"

#include <cstdio>
#include <string>

#include "text_format.h"

namespace lcn
{

namespace
{

constexpr int kCircuitOfTrace = 0;

void show(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace

void traceHeader(const lcnNET_var& var)
{
    if (!var.Debug) return;
    show(formatted("\n\nCirc nIter  massfrac      mass[%d]    pp[%d]", var.nxx, var.nxx));
    show("       summass    delpreserr   maxmasserr  ip   temperror    it    Minorerr   im\n");
}

void traceIteration(const lcnNET_var& var, const TraceLine& line)
{
    if (!var.Debug) return;
    // kept: the mass column always shows zero; readers of traces count columns.
    show(formatted("%3d %3d %12.4lE %12.4lE %12.4lE %12.4lE %12.4lE %12.4lE %3d %12.4lE %3d %12.4lE %3d  \n",
                   kCircuitOfTrace, var.nIter, line.massFraction, 0.0, line.tracedCorrection, line.sumMass,
                   line.pressureError, line.massError, line.flowUpdates, line.temperatureError,
                   line.temperatureSweeps, line.minorError, line.minorUpdates));
}

}  // namespace lcn
