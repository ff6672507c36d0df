#include "pressure_groups.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "element_hydraulics.h"
#include "node_sets.h"

namespace lcn
{

namespace
{

constexpr double kBalanceTolerance = 1e-9;  // [-] of the largest flow
constexpr int kFixedPressures = 0;          // the set that stands for all fixed pressures: nodes run from 1

/// Whether pressure can pass through an element. A pending limit or target counts as fixed already: the next
/// assembly imposes it.
bool isOpen(const lcnNET_elems& elem)
{
    return hasLaw(elem.type) && elem.fix == 0 && elem.FlowLimited == 0;
}

/// The flow [kg/s] that a fixed element has, or takes at the next assembly.
double imposedFlow(const lcnNET_elems& elem)
{
    if (elem.fix != 0) return elem.FixedFlow;
    switch (elem.type) {
    case kNonReturn:
        return 0.0;
    case kControlValve:
        return std::copysign(elem.FixedFlow, elem.Massflow);
    default:
        return hasLaw(elem.type) ? elem.FixedFlow : 0.0;
    }
}

NodeSets joinThroughOpenElements(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    NodeSets sets(var.NodeTotal);
    for (int i = 1; i <= var.NodeTotal; ++i)
        if (nodes[i].flag == kPressureBoundary) sets.join(i, kFixedPressures);
    for (int e = 1; e <= var.ElemTotal; ++e)
        if (isOpen(elements[e])) sets.join(elements[e].LocalStartNode, elements[e].LocalEndNode);
    return sets;
}

}  // namespace

bool PressureGroups::check(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    m_notes.clear();
    for (const int node : m_held) {
        nodes[node].flag = kFreeNode;
        nodes[node].held = 0;
        nodes[node].Masssource = 0.0;  // of the boundary node that it was
    }
    const std::vector<int> heldBefore = std::move(m_held);
    m_held.clear();

    NodeSets sets = joinThroughOpenElements(nodes, elements, var);
    std::vector<int> freeNodes(static_cast<std::size_t>(var.NodeTotal) + 1, 0);  // per representative
    for (int i = 1; i <= var.NodeTotal; ++i)
        if (nodes[i].flag == kFreeNode) ++freeNodes[static_cast<std::size_t>(sets.find(i))];

    std::map<int, Group>
        groups;  // by representative, which is the group's first node or a flow end before it
    const auto supported = sets.find(kFixedPressures);
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const int set = sets.find(i);
        if (nodes[i].flag != kFreeNode || set == supported || freeNodes[static_cast<std::size_t>(set)] < 2)
            continue;
        Group& group = groups[set];
        if (group.firstNode == 0) group.firstNode = i;
    }
    if (groups.empty()) return !heldBefore.empty();

    const auto addBoundary = [&](int node, int e, double inflow) {
        const auto found = groups.find(sets.find(node));
        if (found == groups.end()) return;
        Group& group = found->second;
        group.netInflow += inflow;
        group.largestFlow = std::max(group.largestFlow, std::fabs(inflow));
        group.boundary.push_back(e);
    };
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const lcnNET_elems& elem = elements[e];
        if (isOpen(elem) || sets.find(elem.LocalStartNode) == sets.find(elem.LocalEndNode)) continue;
        const double flow = imposedFlow(elem);
        addBoundary(elem.LocalStartNode, e, -flow);
        addBoundary(elem.LocalEndNode, e, flow);
    }

    for (const auto& [set, group] : groups) {
        const bool balanced = std::fabs(group.netInflow) <= kBalanceTolerance * group.largestFlow;
        note(group, balanced, nodes, elements);
        if (!balanced) continue;
        lcnNET_nodes& node = nodes[group.firstNode];
        node.flag = kPressureBoundary;
        node.held = 1;
        node.Pressbound = node.Pressure;
        m_held.push_back(group.firstNode);
    }
    return m_held != heldBefore;
}

void PressureGroups::note(const Group& group, bool balanced, const NodeArray& nodes,
                          const ElementArray& elements)
{
    const double number = nodes[group.firstNode].node_no;
    Note note{group.firstNode, balanced, {}};
    if (balanced) {
        note.messages.push_back({701204, {number}});
        for (const int e : group.boundary)
            note.messages.push_back({imposedFlow(elements[e]) == 0.0 ? 701205U : 701206U,
                                     {static_cast<double>(elements[e].elem_no)}});
    } else {
        note.messages.push_back({701203, {number, group.netInflow}});
    }
    m_notes.push_back(std::move(note));
}

void PressureGroups::record(lcnNET_var& var)
{
    for (const Note& note : m_notes) {
        if (!m_recorded.insert({note.firstNode, note.balanced}).second) continue;
        for (const Message& message : note.messages)
            var.AddMessage(message.id, message.parameters);
    }
}

}  // namespace lcn
