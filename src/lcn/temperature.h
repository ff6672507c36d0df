// temperature.h: temperatures of nodes and elements.
#pragma once

#include <vector>

#include "records.h"

namespace lcn
{

/// Sweeps after which a temperature solve gives up.
inline constexpr int kMostTemperatureSweeps = 400;

/// Outcome of one call of the temperature solve.
struct TemperatureSolve {
    bool converged = true;  // error below Concrit
    double error = 0.0;     // [-] relative change of the sum of node temperatures in the last sweep
    int sweeps = 0;
    bool finite = true;
};

/// Solves for temperatures with flows held; keeps its working arrays from one call to the next.
class TemperatureSolver
{
public:
    /// Marches downstream once (below), then sweeps over the nodes until the sum of their temperatures
    /// settles to 1e-9 or 400 sweeps are done: each node that is not fixed moves by relaxpp toward the mixing
    /// temperature of the flows that enter it, each with the heat of its element; a node that nothing enters
    /// keeps its own. The first value that is not finite ends it. Reads flows, energy inputs; writes node and
    /// element temperatures and heats.
    TemperatureSolve solve(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

private:
    /// One unrelaxed pass from the nodes that nothing enters, each node after all its inflows. Where the flow
    /// has no closed loop this is the answer, and the sweeps only confirm it: relaxed by a half, they carry a
    /// temperature no further than a node or two each, so that a long line would take as many sweeps as it
    /// has nodes.
    void marchDownstream(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

    void markFlows(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);
    /// Moves the temperatures of all elements with flow toward the mean along their length, T_upstream + Q /
    /// (2 Cp |m|) [K], by relaxpp. In a gas the temperature is taken whole and the density follows it.
    void updateElements(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

    std::vector<char> m_hasFlow;  // per element: its flow carries heat
    std::vector<int> m_waiting;   // per node: elements whose flow enters it and has not been followed yet
    std::vector<int> m_order;     // nodes whose inflows are all known, upstream first
};

}  // namespace lcn
