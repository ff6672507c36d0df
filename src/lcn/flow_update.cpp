#include "flow_update.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "preparation.h"

namespace lcn
{

namespace
{

constexpr double kSettledTolerance = 1e-13;  // [-] of a flow between fixed pressures
constexpr double kFirstDifference = 1e-9;    // [-] of a pressure

bool isFree(const lcnNET_nodes& node)
{
    return node.flag == kFreeNode;
}

double velocity(const lcnNET_elems& elem)
{
    return std::fabs(elem.Area) < kTiny ? 0.0 : elem.volumeFlow() / elem.Area;
}

/// Ideal gas: density toward p / (R T).
void relaxGasDensity(lcnNET_elems& elem, const lcnNET_var& var, double meanEndPressure)
{
    if (elem.Pressure <= 0.0) elem.Pressure = meanEndPressure / 2.0;
    const double RT = var.gasConstant * elem.Temperature;
    if (std::fabs(RT) < kTiny) return;
    elem.density += var.densityWeight * (elem.Pressure / RT - elem.density);
}

}  // namespace

void updatePressures(const NodeArray& nodes, const lcnNET_var& var, const std::vector<double>& corrections)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        nodes[i].PressureOld = nodes[i].Pressure;
        nodes[i].Pressure += var.relaxpp * corrections[static_cast<std::size_t>(i)];
    }
}

void updateFlows(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                 const std::vector<int>& listed, const NodeEquations& equations,
                 const std::vector<double>& corrections)
{
    for (const int e : listed) {
        lcnNET_elems& elem = elements[e];
        elem.MassflowOld = elem.Massflow;
        if (elem.fix != 0 || (!isFree(nodes[elem.LocalStartNode]) && !isFree(nodes[elem.LocalEndNode])))
            continue;
        const auto slot = static_cast<std::size_t>(e);
        const double difference = corrections[static_cast<std::size_t>(elem.LocalStartNode)] -
                                  corrections[static_cast<std::size_t>(elem.LocalEndNode)];
        const double resistance = equations.flowResistance[slot];
        const double change = std::fabs(resistance) < kTiny ? 0.0 : var.relaxpp * difference / resistance;
        elem.Massflow = elem.density * (change + equations.flowEstimate[slot]);
    }
}

void updateElementPressures(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    // side by side: the ends of an element may be anywhere among the records
    struct State {
        double Pressure, Height;
    };
    std::vector<State> states(static_cast<std::size_t>(var.NodeTotal) + 1);
    for (int i = 1; i <= var.NodeTotal; ++i)
        states[static_cast<std::size_t>(i)] = {nodes[i].Pressure, nodes[i].Height};
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        const State start = states[static_cast<std::size_t>(elem.LocalStartNode)];
        const State end = states[static_cast<std::size_t>(elem.LocalEndNode)];
        elem.PressureOld = elem.Pressure;
        elem.densityOld = elem.density;
        if (isCurve(elem.type)) {
            elem.Pressure = start.Pressure;
        } else {
            const double V = velocity(elem);
            elem.Pressure = (start.Pressure + end.Pressure) / 2.0 - elem.density * V * V / 2.0 -
                            elem.density * kGravity * (start.Height + end.Height) / 2.0;
        }
        if (var.compressible) relaxGasDensity(elem, var, (start.Pressure + end.Pressure) / 2.0);
    }
}

void FixedPressureElements::prepare(const NodeArray& nodes, const ElementArray& elements,
                                    const lcnNET_var& var)
{
    m_elements.clear();
    for (const int e : elementsBetweenFixedPressures(nodes, elements, var))
        if (elements[e].fix == 0) m_elements.push_back(e);
}

bool FixedPressureElements::update(const NodeArray& nodes, const ElementArray& elements,
                                   const lcnNET_var& var) const
{
    bool settled = true;
    for (const int e : m_elements) {
        lcnNET_elems& elem = elements[e];
        if (elem.FlowLimited != 0 && (elem.type == kControlValve || elem.type == kNonReturn))
            applyFlowLimit(elem);
        if (elem.fix == 0)
            settled = settleFlowBetweenFixedPressures(nodes, elements, var, e, kSettledTolerance) && settled;
    }
    return settled;
}

void FlowEnds::prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    m_ends.clear();
    for (int i = 1; i <= var.NodeTotal; ++i) {
        if (nodes[i].flag != kFlowBoundary) continue;
        const int entry = nodes[i].LocalElements[1];
        const int e = std::abs(entry);
        const int inner = entry > 0 ? elements[e].LocalStartNode : elements[e].LocalEndNode;
        // two flow ends joined by one element: no pressure to go by
        if (nodes[inner].flag == kFlowBoundary) continue;
        m_ends.push_back({i, inner, e, entry > 0 ? -1 : +1, 0.0});
    }
    m_holdsLosses = false;
}

double FlowEnds::riseOf(const End& end, const NodeArray& nodes, const ElementArray& elements,
                        const lcnNET_var& var, double dt)
{
    const lcnNET_elems& elem = elements[end.element];
    double rise = signedPressureLoss(nodes, elements, var, end.element, end.direction, Friction::kStored);
    if (dt <= kSteadyTimeStep) rise += (elem.Massflow - elem.MassflowOld) * elem.length / elem.Area / dt;
    return rise;
}

void FlowEnds::holdLosses(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                          double dt)
{
    for (End& end : m_ends)
        end.rise = riseOf(end, nodes, elements, var, dt);
    m_holdsLosses = true;
}

bool FlowEnds::update(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                      double dt) const
{
    bool finite = true;
    for (const End& end : m_ends) {
        const double rise = m_holdsLosses ? end.rise : riseOf(end, nodes, elements, var, dt);
        nodes[end.node].Pressure = nodes[end.innerNode].Pressure + rise;
        finite = finite && std::isfinite(nodes[end.node].Pressure);
    }
    return finite;
}

void separateEqualPressures(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                            const NodeEquations& equations, const std::vector<double>& corrections,
                            double averageFlow)
{
    const double smallest = var.Concrit * averageFlow;
    for (const int e : equations.withoutDrop) {
        const lcnNET_elems& elem = elements[e];
        lcnNET_nodes& start = nodes[elem.LocalStartNode];
        lcnNET_nodes& end = nodes[elem.LocalEndNode];
        if (elem.fix != 0 || start.Pressure != end.Pressure) continue;

        const auto s = static_cast<std::size_t>(elem.LocalStartNode);
        const auto t = static_cast<std::size_t>(elem.LocalEndNode);
        const double difference = corrections[s] - corrections[t];
        if (!(std::fabs(equations.coef[static_cast<std::size_t>(e)] * difference) > smallest)) continue;
        if (!(std::fmax(std::fabs(equations.rhs[s]), std::fabs(equations.rhs[t])) > smallest)) continue;

        const bool moveStart = isFree(start);
        lcnNET_nodes& moved = moveStart ? start : end;
        const double sense = (moveStart ? difference : -difference) > 0.0 ? 1.0 : -1.0;
        moved.Pressure += sense * kFirstDifference * std::fmax(std::fabs(moved.Pressure), 1.0);
    }
}

}  // namespace lcn
