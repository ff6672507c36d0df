#include "temperature.h"

#include <cmath>

#include "constants.h"
#include "heat_transfer.h"

namespace lcn
{

namespace
{

constexpr double kSettled = 1e-9;  // [-] relative change of the sum of temperatures
// An element's temperature alone, its upstream node known: weighted by a half it settles below six transfer
// units.
constexpr double kElementWeight = 0.5;
constexpr double kSettledElement = 1e-10;  // [-] relative change
constexpr int kMostSteps = 60;
constexpr double kLargestMach = 0.9;  // [-] of a gas

/// Moves one node by weight toward the mixing temperature of the flows that enter it, each with its element's
/// heat.
void mixNode(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
             const std::vector<char>& hasFlow, lcnNET_nodes& node, double weight)
{
    double num = 0.0;  // [W]
    double den = 0.0;  // [W/K]
    for (int b = 1; b <= node.no_branches; ++b) {
        const int entry = node.LocalElements[b];
        const lcnNET_elems& elem = elements[std::abs(entry)];
        const double inflow = entry > 0 ? elem.Massflow : -elem.Massflow;
        if (!(inflow > 0.0) || !hasFlow[static_cast<std::size_t>(std::abs(entry))]) continue;
        const lcnNET_nodes& upstream = nodes[entry > 0 ? elem.LocalStartNode : elem.LocalEndNode];
        num += elem.heat + var.Cp * inflow * upstream.Temperature;
        den += var.Cp * inflow;
    }
    if (std::fabs(den) > kTiny) node.Temperature += weight * (num / den - node.Temperature);
}

int downstreamNode(const lcnNET_elems& elem)
{
    return elem.Massflow > 0.0 ? elem.LocalEndNode : elem.LocalStartNode;
}

/// Ideal gas: density toward p / (R T), but not so low that the flow would pass 0.9 of the speed of sound.
void relaxGasDensity(lcnNET_elems& elem, const lcnNET_var& var)
{
    const double RT = var.gasConstant * elem.Temperature;
    if (!(RT > kTiny) || std::fabs(elem.Area) < kTiny) return;
    elem.density += var.densityWeight * (elem.Pressure / RT - elem.density);
    const double fastest = kLargestMach * std::sqrt(var.heatRatio * RT);
    elem.density = std::fmax(elem.density, std::fabs(elem.Massflow) / (fastest * elem.Area));
}

/// Moves the temperature of element e by weight toward the mean along its length. Returns the change [K].
double moveElementTemperature(const NodeArray& nodes, const lcnNET_var& var, lcnNET_elems& elem,
                              double weight)
{
    const double capacityFlow = var.Cp * std::fabs(elem.Massflow);
    if (!(std::fabs(capacityFlow) > kTiny)) return 0.0;
    const double mean = upstreamTemperature(nodes, elem) + elem.heat / capacityFlow * 0.5;
    const double change = weight * (mean - elem.Temperature);
    elem.Temperature += change;
    return change;
}

/// Heat and temperature of one element whose upstream node is known.
void settleElement(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e)
{
    for (int step = 0; step < kMostSteps; ++step) {
        elementHeat(nodes, elements, var, e);
        const double change = moveElementTemperature(nodes, var, elements[e], kElementWeight);
        if (!(std::fabs(change) > kSettledElement * std::fabs(elements[e].Temperature))) return;
    }
}

/// Flow [kg/s] that the mass balance, met to the criterion, cannot tell from none.
double smallestFlow(const ElementArray& elements, const lcnNET_var& var)
{
    double total = 0.0;
    for (int e = 1; e <= var.ElemTotal; ++e)
        total += std::fabs(elements[e].Massflow);
    return var.ElemTotal == 0 ? kTiny : std::fmax(kTiny, var.Concrit * total / var.ElemTotal);
}

}  // namespace

/// Marks the elements whose flow carries heat. What stands in an unfixed element below the criterion of the
/// mass balance is residue, and so is all that stands in a dead end, an element that is the only way to or
/// from a free node: heat would follow it to one neighbour or the other by rounding alone.
void TemperatureSolver::markFlows(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    const double smallest = smallestFlow(elements, var);
    m_hasFlow.assign(static_cast<std::size_t>(var.ElemTotal) + 1, 0);
    m_waiting.assign(static_cast<std::size_t>(var.NodeTotal) + 1, 0);
    m_order.clear();
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const lcnNET_elems& elem = elements[e];
        if (!(std::fabs(elem.Massflow) > (elem.fix != 0 ? kTiny : smallest))) continue;
        m_hasFlow[static_cast<std::size_t>(e)] = 1;
        ++m_waiting[static_cast<std::size_t>(elem.LocalStartNode)];
        ++m_waiting[static_cast<std::size_t>(elem.LocalEndNode)];
    }
    const auto isDeadEnd = [&](int i) {
        return nodes[i].flag == kFreeNode && m_waiting[static_cast<std::size_t>(i)] == 1;
    };
    for (int i = 1; i <= var.NodeTotal; ++i)
        if (isDeadEnd(i)) m_order.push_back(i);
    for (std::size_t at = 0; at < m_order.size(); ++at) {
        const lcnNET_nodes& node = nodes[m_order[at]];
        for (int b = 1; b <= node.no_branches; ++b) {
            const int e = std::abs(node.LocalElements[b]);
            if (!m_hasFlow[static_cast<std::size_t>(e)]) continue;
            m_hasFlow[static_cast<std::size_t>(e)] = 0;
            for (const int end : {elements[e].LocalStartNode, elements[e].LocalEndNode}) {
                --m_waiting[static_cast<std::size_t>(end)];
                if (isDeadEnd(end)) m_order.push_back(end);
            }
        }
    }
}

void TemperatureSolver::updateElements(const NodeArray& nodes, const ElementArray& elements,
                                       const lcnNET_var& var)
{
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        elem.TemperatureOld = elem.Temperature;
        if (!m_hasFlow[static_cast<std::size_t>(e)]) continue;
        moveElementTemperature(nodes, var, elem, var.compressible ? 1.0 : var.relaxpp);
        if (var.compressible) relaxGasDensity(elem, var);
    }
}

void TemperatureSolver::marchDownstream(const NodeArray& nodes, const ElementArray& elements,
                                        const lcnNET_var& var)
{
    m_waiting.assign(static_cast<std::size_t>(var.NodeTotal) + 1, 0);
    m_order.clear();
    for (int e = 1; e <= var.ElemTotal; ++e)
        if (m_hasFlow[static_cast<std::size_t>(e)])
            ++m_waiting[static_cast<std::size_t>(downstreamNode(elements[e]))];
    for (int i = 1; i <= var.NodeTotal; ++i)
        if (m_waiting[static_cast<std::size_t>(i)] == 0) m_order.push_back(i);

    for (std::size_t at = 0; at < m_order.size(); ++at) {
        const int i = m_order[at];
        const lcnNET_nodes& node = nodes[i];
        if (node.tempflag == 0) mixNode(nodes, elements, var, m_hasFlow, nodes[i], 1.0);
        for (int b = 1; b <= node.no_branches; ++b) {
            const int e = std::abs(node.LocalElements[b]);
            if (!m_hasFlow[static_cast<std::size_t>(e)] || downstreamNode(elements[e]) == i) continue;
            settleElement(nodes, elements, var, e);
            const int next = downstreamNode(elements[e]);
            if (--m_waiting[static_cast<std::size_t>(next)] == 0) m_order.push_back(next);
        }
    }
}

TemperatureSolve TemperatureSolver::solve(const NodeArray& nodes, const ElementArray& elements,
                                          const lcnNET_var& var)
{
    markFlows(nodes, elements, var);
    marchDownstream(nodes, elements, var);
    TemperatureSolve solve;
    double previousSum = 1.0;
    do {
        for (int e = 1; e <= var.ElemTotal; ++e)
            elementHeat(nodes, elements, var, e);
        double sum = 0.0;
        for (int i = 1; i <= var.NodeTotal; ++i) {
            if (nodes[i].tempflag != 0) continue;
            mixNode(nodes, elements, var, m_hasFlow, nodes[i], var.relaxpp);
            sum += nodes[i].Temperature;
        }
        ++solve.sweeps;
        solve.error = std::fabs(previousSum - sum);
        if (std::fabs(previousSum) > kTiny) solve.error /= std::fabs(previousSum);
        updateElements(nodes, elements, var);
        previousSum = sum;
        solve.finite = std::isfinite(sum);
    } while (!(solve.error < kSettled) && solve.sweeps < kMostTemperatureSweeps && solve.finite);
    solve.converged = solve.finite && solve.error < var.Concrit;
    return solve;
}

}  // namespace lcn
