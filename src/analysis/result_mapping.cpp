#include "result_mapping.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

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

/// One value for each node or element.
using Values = std::vector<double>;

/// The quantities of the elements, by element from position 0.
struct ElementValues {
    std::vector<int> ids;  // the host's
    Values reynolds, velocity, volumeFlow, massFlow, temperature, pressureDifference;
};

/// The quantities of the nodes, by node from position 0.
struct NodeValues {
    std::vector<int> ids;  // the host's
    Values temperature, pressure, externalMassFlow;
};

/// One walk over the wide records fills all quantities: a walk for each of them takes three times as long.
/// Adds up the net inflow [kg/s] into each node from its elements, which come in the order of its lists.
ElementValues readElements(const lcn::NodeArray& nodes, const lcn::ElementArray& elements,
                           const lcnNET_var& var, Values& inflow)
{
    const auto count = static_cast<std::size_t>(var.ElemTotal);
    ElementValues values;
    values.ids.resize(count);
    for (Values* list : {&values.reynolds, &values.velocity, &values.volumeFlow, &values.massFlow,
                         &values.temperature, &values.pressureDifference})
        list->resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const lcnNET_elems& elem = elements[static_cast<int>(i) + 1];
        values.ids[i] = elem.elem_no;
        values.volumeFlow[i] = elem.volumeFlow();
        values.velocity[i] = velocityOf(elem, values.volumeFlow[i]);
        values.reynolds[i] = reynoldsOf(elem, values.velocity[i], var);
        values.massFlow[i] = elem.Massflow;
        values.temperature[i] = elem.Temperature;
        values.pressureDifference[i] =
            nodes[elem.LocalEndNode].Pressure - nodes[elem.LocalStartNode].Pressure;
        inflow[static_cast<std::size_t>(elem.LocalStartNode)] -= elem.Massflow;
        inflow[static_cast<std::size_t>(elem.LocalEndNode)] += elem.Massflow;
    }
    return values;
}

/// External mass flow into the circuit [kg/s]: minus the net inflow from the elements, by solver number.
NodeValues readNodes(const lcn::NodeArray& nodes, const lcnNET_var& var, const Values& inflow)
{
    const auto count = static_cast<std::size_t>(var.NodeTotal);
    NodeValues values;
    values.ids.resize(count);
    for (Values* list : {&values.temperature, &values.pressure, &values.externalMassFlow})
        list->resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const lcnNET_nodes& node = nodes[static_cast<int>(i) + 1];
        values.ids[i] = node.node_no;
        values.temperature[i] = node.Temperature;
        values.pressure[i] = node.Pressure;
        values.externalMassFlow[i] = inflow[i + 1] == 0.0 ? 0.0 : -inflow[i + 1];
    }
    return values;
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
    Values inflow(static_cast<std::size_t>(var.NodeTotal) + 1, 0.0);
    ElementValues element = readElements(nodes, elements, var, inflow);
    NodeValues node = readNodes(nodes, var, inflow);

    const auto elementIds = std::make_shared<const std::vector<int>>(std::move(element.ids));
    const auto nodeIds = std::make_shared<const std::vector<int>>(node.ids);
    std::map<int, ResultsSet> results;
    const auto add = [&results](int key, bool nodal, const ResultsSet::Ids& ids, Values& values) {
        results.emplace(key, ResultsSet(nodal, ids, std::move(values)));
    };
    add(TAVELL_RESULT_REYNOLDS, false, elementIds, element.reynolds);
    add(TAVELL_RESULT_VELOCITY, false, elementIds, element.velocity);
    add(TAVELL_RESULT_VOLUME_FLOW, false, elementIds, element.volumeFlow);
    add(TAVELL_RESULT_MASS_FLOW, false, elementIds, element.massFlow);
    add(TAVELL_RESULT_ELEMENT_TEMPERATURE, false, elementIds, element.temperature);
    add(TAVELL_RESULT_PRESSURE_DIFFERENCE, false, elementIds, element.pressureDifference);
    add(TAVELL_RESULT_NODE_TEMPERATURE, true, nodeIds, node.temperature);
    add(TAVELL_RESULT_PRESSURE, true, nodeIds, node.pressure);
    results.emplace(TAVELL_RESULT_EXTERNAL_MASS_FLOW,
                    gatherNodeResults(std::move(node.ids), std::move(node.externalMassFlow)));
    return results;
}

IResultsSet* Circuit::GetResults(int key)
{
    if (!m_hasResults) return nullptr;
    const auto found = m_results.find(key);
    return found == m_results.end() ? nullptr : &found->second;
}

}  // namespace Velcor::Tavell
