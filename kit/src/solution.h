// solution.h: the result of a solve by the network's own nodes and elements.
#ifndef TAVELL_KIT_SOLUTION_H
#define TAVELL_KIT_SOLUTION_H

#include <string>
#include <vector>

#include "findings.h"
#include "network.h"

namespace kit
{

enum class Outcome { converged, notConverged, cancelled };

/// The liquid as the solve had it; SI units.
struct FluidValues {
    std::string name;
    double temperature = 0.0;   // [K]
    double density = 0.0;       // [kg/m3]
    double viscosity = 0.0;     // [Pa s], dynamic
    double specificHeat = 0.0;  // [J/(kg K)]
    double conductivity = 0.0;  // [W/(m K)]
    // mu = c1 exp((c2 - 273.15)/(T + c3 - 546.3)), used when the viscosity follows the temperature
    double viscosityCoefficients[3] = {0.0, 0.0, 0.0};
};

/// Values by position of the network's nodes and elements; SI units. Empty vectors when there are no results.
/// Elements that are closed have no flow; their temperature is NaN. What a quantity is not defined for is NaN too.
struct Solution {
    Outcome outcome = Outcome::notConverged;
    int iterations = 0;  // with the rounds of the search for a start, as progress counts them
    bool hasTemperatures = false;
    FluidValues fluid;

    // by node
    std::vector<double> pressure;  // [Pa], static, without the pressure datum
    std::vector<double> head;  // [m], height against gravity + pressure / (density g); NaN without gravity
    std::vector<double> nodeTemperature;  // [K]
    std::vector<double>
        externalMassFlow;  // [kg/s], > 0 into the network: supply of a boundary, residual elsewhere

    // by element
    std::vector<double> massFlow;            // [kg/s], > 0 from start to end
    std::vector<double> volumeFlow;          // [m3/s]
    std::vector<double> velocity;            // [m/s]; NaN for pumps and losses given by curves
    std::vector<double> reynolds;            // [-], signed as the flow; NaN like the velocity
    std::vector<double> pressureDifference;  // [Pa], static, end minus start
    std::vector<double> elementTemperature;  // [K]

    Findings findings;  // what the solve had to say, by the network's names

    bool hasResults() const { return !pressure.empty(); }
};

/// Called once a step, which is an iteration or a round of the search for a start; true asks to stop.
struct Progress {
    bool (*isStopWanted)(void* user, int step) = nullptr;
    void* user = nullptr;
};

/// Solves the network. Everything that is wrong with it is in the solution's findings; then there are no results.
/// Implemented in solve.cpp.
Solution solveNetwork(const Network& network, const Progress& progress = {});

}  // namespace kit

#endif
