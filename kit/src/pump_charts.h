// pump_charts.h: what a pump can do and what the network asks of it, over the flow.
#ifndef TAVELL_KIT_PUMP_CHARTS_H
#define TAVELL_KIT_PUMP_CHARTS_H

#include <cstddef>
#include <vector>

#include "network.h"
#include "solution.h"

namespace kit
{

/// How the system curve of a pump was found.
enum class SystemCurve {
    none,      // the pump carries no flow, or the network has no answer without it
    solved,    // the network solved with the pump's flow given, once for every point
    estimated  // a static part and losses that grow with the square of the flow, through the duty point
};

/// A pump with its curves, flows [m3/s] and rises [Pa] of the liquid of the solution.
struct PumpChart {
    std::size_t element = 0;        // position in the network
    std::vector<CurvePoint> given;  // the points of its curve
    std::vector<CurvePoint> curve;  // the cubic through them, by least squares, up to where the rise ends
    std::vector<CurvePoint> system;
    SystemCurve systemCurve = SystemCurve::none;
    CurvePoint duty;  // where the solution has it; the rise is that of the static pressure and the height
};

/// Pumps beyond these have no chart: nobody would look at them, and each costs a walk through the network.
constexpr std::size_t kMostPumpCharts = 60;

/// One chart for every open pump with a curve, in the network's order; none without results. Solves at most
/// solveBudget elements in all for the points of system curves; beyond it they are estimated.
std::vector<PumpChart> pumpCharts(const Network& network, const Solution& solution,
                                  std::size_t solveBudget = 60000);

}  // namespace kit

#endif
