#include "result_mapping.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "lcn/constants.h"
#include "lcn/viscosity.h"
#include "model/Circuit.h"
#include "tavell/Constants.h"

namespace Velcor::Tavell
{

namespace
{

/// Kinds with a mean velocity: pipes of both laws, loss curves, control valves and non-return elements.
bool hasVelocity(int type)
{
    constexpr unsigned kKinds = 1562;  // bits 1, 3, 4, 9, 10
    return type >= 0 && type < 11 && ((kKinds >> type) & 1U) != 0;
}

/// Mean velocity [m/s], signed as the flow; 0.0 for a kind without one and for an element without area or
/// diameter.
double velocityOf(const lcnNET_elems& elem, double volumeFlow)
{
    const bool hasSection = std::fabs(elem.Area) > lcn::kTiny && std::fabs(elem.diam) > lcn::kTiny;
    return hasVelocity(elem.type) && hasSection ? volumeFlow / elem.Area : 0.0;
}

/// Reynolds number [-], signed as the flow.
double reynoldsOf(const lcnNET_elems& elem, double velocity, const lcnNET_var& var)
{
    const double mu = lcn::viscosity(var, elem.Temperature);
    return velocity == 0.0 || std::fabs(mu) < lcn::kTiny ? 0.0 : elem.density * velocity * elem.diam / mu;
}

/// External mass flow into the circuit at a node [kg/s]: minus the net inflow from its elements.
double externalMassFlow(const lcnNET_nodes& node, const lcn::ElementArray& elements)
{
    double inflow = 0.0;
    for (int b = 1; b <= node.no_branches; ++b) {
        const int entry = node.LocalElements[b];
        const double flow = elements[std::abs(entry)].Massflow;
        inflow += entry > 0 ? flow : -flow;
    }
    return inflow == 0.0 ? 0.0 : -inflow;
}

template <typename Value> ResultsSet nodeSet(const lcn::NodeArray& nodes, int count, Value&& value)
{
    ResultsSet set(true);
    set.reserve(static_cast<std::size_t>(count));
    for (int i = 1; i <= count; ++i)
        set.append(nodes[i].node_no, value(nodes[i]));
    return set;
}

template <typename Value> ResultsSet elementSet(const lcn::ElementArray& elements, int count, Value&& value)
{
    ResultsSet set(false);
    set.reserve(static_cast<std::size_t>(count));
    for (int e = 1; e <= count; ++e)
        set.append(elements[e].elem_no, value(elements[e]));
    return set;
}

ResultsSet externalMassFlows(const lcn::NodeArray& nodes, const lcn::ElementArray& elements, int count)
{
    std::vector<int> ids;
    std::vector<double> values;
    ids.reserve(static_cast<std::size_t>(count));
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 1; i <= count; ++i) {
        ids.push_back(nodes[i].node_no);
        values.push_back(externalMassFlow(nodes[i], elements));
    }
    return gatherNodeResults(std::move(ids), std::move(values));
}

}  // namespace

ResultsSet gatherNodeResults(std::vector<int> ids, std::vector<double> values)
{
    if (ids.size() != values.size()) throw std::runtime_error("Sizes don't match in NodeResults::Set");
    if (ids.size() > values.max_size()) throw std::length_error("list too long");
    return ResultsSet(true, std::move(ids), std::move(values));
}

std::map<int, ResultsSet> mapResults(const lcn::NodeArray& nodes, const lcn::ElementArray& elements,
                                     const lcnNET_var& var)
{
    const auto velocity = [](const lcnNET_elems& elem) { return velocityOf(elem, elem.volumeFlow()); };
    const auto reynolds = [&](const lcnNET_elems& elem) { return reynoldsOf(elem, velocity(elem), var); };
    const auto difference = [&](const lcnNET_elems& elem) {
        return nodes[elem.LocalEndNode].Pressure - nodes[elem.LocalStartNode].Pressure;
    };
    const int E = var.ElemTotal;
    const int N = var.NodeTotal;

    std::map<int, ResultsSet> results;
    results.emplace(TAVELL_RESULT_REYNOLDS, elementSet(elements, E, reynolds));
    results.emplace(TAVELL_RESULT_VELOCITY, elementSet(elements, E, velocity));
    results.emplace(TAVELL_RESULT_VOLUME_FLOW,
                    elementSet(elements, E, [](const lcnNET_elems& elem) { return elem.volumeFlow(); }));
    results.emplace(TAVELL_RESULT_MASS_FLOW,
                    elementSet(elements, E, [](const lcnNET_elems& elem) { return elem.Massflow; }));
    results.emplace(TAVELL_RESULT_ELEMENT_TEMPERATURE,
                    elementSet(elements, E, [](const lcnNET_elems& elem) { return elem.Temperature; }));
    results.emplace(TAVELL_RESULT_PRESSURE_DIFFERENCE, elementSet(elements, E, difference));
    results.emplace(TAVELL_RESULT_NODE_TEMPERATURE,
                    nodeSet(nodes, N, [](const lcnNET_nodes& node) { return node.Temperature; }));
    results.emplace(TAVELL_RESULT_PRESSURE,
                    nodeSet(nodes, N, [](const lcnNET_nodes& node) { return node.Pressure; }));
    results.emplace(TAVELL_RESULT_EXTERNAL_MASS_FLOW, externalMassFlows(nodes, elements, N));
    return results;
}

IResultsSet* Circuit::GetResults(int key)
{
    if (!m_hasResults) return nullptr;
    const auto found = m_results.find(key);
    return found == m_results.end() ? nullptr : &found->second;
}

}  // namespace Velcor::Tavell
