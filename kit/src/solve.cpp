#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include <tavell/Constants.h>
#include <tavell/IResultsSet.h>

#include "circuit_builder.h"
#include "element_inputs.h"
#include "element_kinds.h"
#include "feedback_findings.h"
#include "number_text.h"
#include "solution.h"

namespace kit
{

namespace
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IResultsSet;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// The solve that runs on this thread: the library's callback takes no argument.
struct RunningSolve {
    const Progress* progress = nullptr;
    int step = 0;
    bool isStopped = false;
};

thread_local RunningSolve* runningSolve = nullptr;

/// Makes a solve the thread's own for as long as it lives; solves may be nested in a progress call.
class RunningSolveScope
{
public:
    explicit RunningSolveScope(RunningSolve& solve) : m_outer(runningSolve) { runningSolve = &solve; }
    ~RunningSolveScope() { runningSolve = m_outer; }
    RunningSolveScope(const RunningSolveScope&) = delete;
    RunningSolveScope& operator=(const RunningSolveScope&) = delete;

private:
    RunningSolve* m_outer;
};

/// Called by the library once an iteration and once a round of its search for a start. Nothing is thrown through it: what a progress function throws
/// stops the solve.
bool isStopWanted() noexcept
{
    RunningSolve& solve = *runningSolve;
    ++solve.step;
    try {
        const Progress& progress = *solve.progress;
        if (progress.isStopWanted != nullptr)
            solve.isStopped = solve.isStopped || progress.isStopWanted(progress.user, solve.step);
    } catch (...) {
        solve.isStopped = true;
    }
    return solve.isStopped;
}

/// Whether a solve refuses what is not suitable for analysis: the library reads the variable in the same way.
bool isDetailCheckOn()
{
    const char* value = std::getenv("TAVELL_DETAIL_CHECK");
    return value != nullptr && std::strtol(value, nullptr, 10) == 1;
}

/// What the library itself asks for: without the detailed check it solves small networks and networks in
/// parts.
bool isAccepted(const Network& network, ICircuit& circuit, Findings& findings)
{
    circuit.Validate();
    Place place;
    place.file = network.file;
    const int state = circuit.IsValid();
    if (state == TAVELL_INVALID_PRESSURE_AND_FLOW) {
        findings.add(Code::pressure_and_flow_alone, place,
                     "a node has a given pressure and flow, and fewer than two others have any");
        return false;
    }
    if (!isDetailCheckOn() || circuit.IsSuitableForAnalysis()) return true;
    findings.add(Code::detail_check_refuses, place,
                 "the library's detailed check refuses the network with validity state " +
                     std::to_string(state));
    return false;
}

/// Results of the circuit by its own positions.
class CircuitResults
{
public:
    explicit CircuitResults(ICircuit& circuit) : m_circuit(circuit) {}

    /// Null when the circuit has none.
    const double* values(int key) const
    {
        IResultsSet* results = m_circuit.GetResults(key);
        return results == nullptr ? nullptr : results->GetValues();
    }

private:
    ICircuit& m_circuit;
};

/// Maps the results of the circuit to the nodes and elements of the network.
class ResultReader
{
public:
    ResultReader(const Network& network, const BuiltCircuit& built, Solution& solution)
        : m_network(network), m_built(built), m_solution(solution), m_results(*built.circuit)
    {
    }

    void read()
    {
        readNodes();
        readElements();
    }

private:
    void readNodes()
    {
        const double* pressures = m_results.values(TAVELL_RESULT_PRESSURE);
        const double* temperatures = m_results.values(TAVELL_RESULT_NODE_TEMPERATURE);
        const double* flows = m_results.values(TAVELL_RESULT_EXTERNAL_MASS_FLOW);
        const double weight = m_built.fluid.density * gravityOf(m_network);
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const NodeInCircuit& place = m_built.nodes[i];
            const Node& node = m_network.nodes[i];
            double pressure = kNotANumber;
            double temperature = kNotANumber;
            double flow = 0.0;
            if (place.node != kNotInCircuit) {
                pressure = pressures[place.node] - m_built.pressureOffsets[i];
                temperature = temperatures[place.node];
                flow = flows[place.stubEnd != kNotInCircuit ? place.stubEnd : place.node];
            }
            // A given pressure is given back as it is, without what the datum rounded off.
            if (node.boundary && node.boundary->pressure) pressure = *node.boundary->pressure;
            m_solution.pressure.push_back(pressure);
            m_solution.head.push_back(weight > 0.0 ? heightOf(m_network, node) + pressure / weight
                                                   : kNotANumber);
            m_solution.nodeTemperature.push_back(temperature);
            m_solution.externalMassFlow.push_back(flow);
        }
    }

    void readElements()
    {
        const double* flows = m_results.values(TAVELL_RESULT_MASS_FLOW);
        const double* volumeFlows = m_results.values(TAVELL_RESULT_VOLUME_FLOW);
        const double* velocities = m_results.values(TAVELL_RESULT_VELOCITY);
        const double* reynolds = m_results.values(TAVELL_RESULT_REYNOLDS);
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            const ElementInCircuit& place = m_built.elements[i];
            const bool hasVelocity = element.section.has_value();
            m_solution.massFlow.push_back(meanOf(flows, place));
            m_solution.volumeFlow.push_back(meanOf(volumeFlows, place));
            m_solution.velocity.push_back(hasVelocity ? velocityOf(velocities, i) : kNotANumber);
            m_solution.reynolds.push_back(hasVelocity ? reynoldsOf(reynolds, i) : kNotANumber);
            m_solution.pressureDifference.push_back(m_solution.pressure[element.to] -
                                                    m_solution.pressure[element.from]);
            m_solution.elementTemperature.push_back(temperatureOf(i));
        }
    }

    /// The value of an element, or the mean of its two halves; 0 for a closed one.
    static double meanOf(const double* values, const ElementInCircuit& place)
    {
        if (place.first == kNotInCircuit) return 0.0;
        if (place.second == kNotInCircuit) return values[place.first];
        return (values[place.first] + values[place.second]) / 2.0;
    }

    double velocityOf(const double* velocities, std::size_t position) const
    {
        const Element& element = m_network.elements[position];
        if (element.kind->reportsVelocity) return meanOf(velocities, m_built.elements[position]);
        return m_solution.volumeFlow[position] / element.section->area;
    }

    double reynoldsOf(const double* reynolds, std::size_t position) const
    {
        const Element& element = m_network.elements[position];
        if (element.kind->reportsVelocity) return meanOf(reynolds, m_built.elements[position]);
        return m_solution.velocity[position] * m_built.fluid.density * element.section->hydraulicDiameter() /
               m_built.fluid.viscosity;
    }

    /// Mean of the temperatures at inlet and outlet [K]. Of an element in two halves it is that of the fluid
    /// that enters and of the fluid that leaves, which the second half's own mean and the node between them
    /// give.
    double temperatureOf(std::size_t position) const
    {
        const ElementInCircuit& place = m_built.elements[position];
        if (place.first == kNotInCircuit) return kNotANumber;
        const double* temperatures = m_results.values(TAVELL_RESULT_ELEMENT_TEMPERATURE);
        const double* nodeTemperatures = m_results.values(TAVELL_RESULT_NODE_TEMPERATURE);
        if (place.second == kNotInCircuit) return temperatures[place.first];
        const double flow = m_solution.massFlow[position];
        if (flow == 0.0 || !m_solution.hasTemperatures) return meanOf(temperatures, place);
        const Element& element = m_network.elements[position];
        const std::size_t upstream = m_built.nodes[flow > 0.0 ? element.from : element.to].node;
        const double last = temperatures[flow > 0.0 ? place.second : place.first];
        const double leaving = 2.0 * last - nodeTemperatures[place.detourNode];
        return (nodeTemperatures[upstream] + leaving) / 2.0;
    }

    const Network& m_network;
    const BuiltCircuit& m_built;
    Solution& m_solution;
    const CircuitResults m_results;
};

void clearResults(Solution& solution)
{
    for (std::vector<double>* values :
         {&solution.pressure, &solution.head, &solution.nodeTemperature, &solution.externalMassFlow,
          &solution.massFlow, &solution.volumeFlow, &solution.velocity, &solution.reynolds,
          &solution.pressureDifference, &solution.elementTemperature})
        values->clear();
}

/// Pressures of nodes in the circuit and all flows are numbers.
bool areFinite(const Network& network, const BuiltCircuit& built, Solution& solution)
{
    bool isFinite = true;
    for (std::size_t i = 0; i < network.nodes.size(); ++i) {
        if (built.nodes[i].node == kNotInCircuit || std::isfinite(solution.pressure[i])) continue;
        solution.findings.add(Code::values_not_finite, nodePlace(network, i), "its pressure is no number");
        isFinite = false;
    }
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        if (std::isfinite(solution.massFlow[i])) continue;
        solution.findings.add(Code::values_not_finite, elementPlace(network, i), "its flow is no number");
        isFinite = false;
    }
    return isFinite;
}

std::string measureText(double value)
{
    return std::isfinite(value) ? shortNumber(value) : "that is no number";
}

/// ": the flows do not balance (relative error 0.3) and ..."; "" when no measure is known.
std::string unmetText(const UnmetMeasures& unmet)
{
    std::string text;
    if (unmet.mass) text += "the flows do not balance (relative error " + measureText(*unmet.mass) + ')';
    if (unmet.pressure)
        text += std::string(text.empty() ? "" : " and ") +
                "the pressures do not fit the laws of the elements (relative error " +
                measureText(*unmet.pressure) + ')';
    return text.empty() ? text : ": " + text + "; 1e-06 is allowed";
}

void addVerdict(const Network& network, const RunningSolve& solve, const UnmetMeasures& unmet,
                Solution& solution)
{
    Place place;
    place.file = network.file;
    const std::string steps = std::to_string(solve.step) + (solve.step == 1 ? " step" : " steps");
    if (solve.isStopped) solution.outcome = Outcome::cancelled;
    Finding& finding =
        solve.isStopped
            ? solution.findings.add(Code::solve_cancelled, place, "the solve was cancelled after " + steps)
            : solution.findings.add(Code::not_converged, place,
                                    "the solve ended after " + steps +
                                        (unmet.isAtLimit ? ", at the limit of its iterations," : "") +
                                        " without meeting its criterion" + unmetText(unmet));
    finding.numbers.push_back({"iterations", static_cast<double>(solve.step), ""});
    if (unmet.mass) finding.numbers.push_back({"relative mass error", *unmet.mass, ""});
    if (unmet.pressure) finding.numbers.push_back({"relative pressure error", *unmet.pressure, ""});
}

}  // namespace

Solution solveNetwork(const Network& network, const Progress& progress)
{
    Solution solution;
    const auto built = buildCircuit(network, solution.findings);
    if (!built) return solution;
    solution.fluid = built->fluid;
    solution.hasTemperatures = network.settings.solvesTemperatures;
    if (!isAccepted(network, *built->circuit, solution.findings)) return solution;

    RunningSolve solve;
    solve.progress = &progress;
    bool hasConverged = false;
    {
        const RunningSolveScope scope(solve);
        hasConverged = built->circuit->Solve(network.settings.solvesTemperatures, &isStopWanted);
    }
    solution.iterations = solve.step;
    const UnmetMeasures unmet = addFeedback(network, *built, hasConverged, solution.findings);
    if (!hasConverged) {
        addVerdict(network, solve, unmet, solution);
        return solution;
    }
    ResultReader(network, *built, solution).read();
    if (areFinite(network, *built, solution))
        solution.outcome = Outcome::converged;
    else
        clearResults(solution);
    return solution;
}

}  // namespace kit
