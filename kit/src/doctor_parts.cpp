// Connectivity: what hangs together, which parts have no pressure, which given flows cannot be carried.

#include <algorithm>
#include <cmath>

#include <tavell/Constants.h>

#include "doctor_checks.h"
#include "doctor_graph.h"
#include "doctor_support.h"
#include "element_kinds.h"

namespace kit::doctor
{

namespace
{

constexpr double kBalanceTolerance = 1e-9;    // [-], of the largest given flow, as the solver has it
constexpr std::size_t kMostShownOfAList = 5;  // names in a text; the objects of the finding have all
constexpr std::size_t kMostPartsApart = 10;   // with a finding each; more share one

/// What is given to a group of nodes from outside.
struct Given {
    std::size_t boundaries = 0;
    std::size_t pressures = 0;        // that hold whatever the flow
    std::size_t pressureAndFlow = 0;  // at the group's side of an element with a given flow
    std::size_t unknownFlows = 0;     // given, but in a form that has no value here
    double inflow = 0.0;              // [kg/s], net
    double largest = 0.0;             // [kg/s], of the given flows

    void addFlow(double flow)
    {
        inflow += flow;
        largest = std::max(largest, std::fabs(flow));
    }

    Given& operator+=(const Given& other)
    {
        boundaries += other.boundaries;
        pressures += other.pressures;
        pressureAndFlow += other.pressureAndFlow;
        unknownFlows += other.unknownFlows;
        inflow += other.inflow;
        largest = std::max(largest, other.largest);
        return *this;
    }
};

class PartChecks
{
public:
    PartChecks(const Network& network, Findings& findings)
        : m_network(network), m_findings(findings), m_liquid(liquidOf(network)),
          m_openCount(openElementCounts(network)), m_anyElement(anyOpenElement(network))
    {
    }

    void run()
    {
        const Graph open =
            makeGraph(m_network, [this](std::size_t i) { return !m_network.elements[i].isClosed; });
        checkLonelyNodes();
        checkConnection(findParts(m_network, open));
        const bool hasPressure = hasUsedPressure();
        if (!hasPressure)
            m_findings
                .add(Code::network_without_pressure, {m_network.file, 0, 0, "", ""},
                     "none of the " + shownCount(m_network.nodes.size(), "node") + " has a given pressure")
                .objects = boundaryNodes();
        checkPressures(hasPressure);
        checkOnlyWays(open);
        checkDrive();
    }

private:
    const std::optional<Boundary>& boundaryOf(std::size_t node) const
    {
        return m_network.nodes[node].boundary;
    }

    std::vector<std::string> boundaryNodes() const
    {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (boundaryOf(i)) names.push_back(nodeLabel(m_network, i));
        }
        return names;
    }

    /// Nodes that nothing joins, or nothing but closed elements.
    void checkLonelyNodes()
    {
        std::vector<bool> hasElement(m_network.nodes.size(), false);
        for (const Element& element : m_network.elements)
            hasElement[element.from] = hasElement[element.to] = true;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (m_openCount[i] > 0) continue;
            if (boundaryOf(i))
                addCutOff(i, hasElement[i]);
            else if (!hasElement[i])
                addAtNode(m_network, i, Code::node_joins_nothing, "no element starts or ends here",
                          m_findings);
            else
                addAtNode(m_network, i, Code::node_behind_closed_elements, "all elements here are closed",
                          m_findings);
        }
    }

    /// A pressure that is cut off holds nothing; a flow that is cut off cannot be, and no solve takes it.
    void addCutOff(std::size_t node, bool hasElement)
    {
        const Boundary& boundary = *boundaryOf(node);
        const bool hasFlow = boundary.flowKind != Boundary::Flow::none && boundary.flow != 0.0;
        const std::string effect = boundary.isInlet ? " cannot get in" : " cannot get out";
        Finding& finding =
            addAtNode(m_network, node, hasElement ? Code::boundary_cut_off : Code::node_joins_nothing,
                      (hasElement ? "all elements here are closed, so the "
                                  : "no element starts or ends here, so the ") +
                          boundaryText(boundary) + (hasFlow ? effect : " has no effect"),
                      m_findings);
        if (hasFlow) finding.severity = Severity::error;
    }

    bool hasUsedPressure() const
    {
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (boundaryOf(i) && boundaryOf(i)->pressure && m_openCount[i] > 0) return true;
        }
        return false;
    }

    /// Says of every part but the largest that it stands alone.
    void checkConnection(const Parts& parts)
    {
        std::size_t largest = 0;
        for (std::size_t i = 0; i < parts.nodes.size(); ++i) {
            if (parts.nodes[i].size() > parts.nodes[largest].size()) largest = i;
        }
        const std::vector<std::vector<std::size_t>> elements = elementsByPart(parts);
        const std::vector<std::size_t> separators = separatorsByPart(parts);
        for (std::size_t i = 0; i < parts.nodes.size(); ++i) {
            if (i == largest || m_openCount[parts.nodes[i].front()] == 0) continue;
            std::string message = "a part of " + shownCount(parts.nodes[i].size(), "node") + " and " +
                                  shownCount(elements[i].size(), "element") + " (" +
                                  memberText(parts.nodes[i], elements[i]) +
                                  ") is not connected to the other " +
                                  shownCount(m_network.nodes.size() - parts.nodes[i].size(), "node") + "; " +
                                  boundariesText(parts.nodes[i]);
            if (separators[i] != kNone)
                message += "; closed between them is " + elementLabel(m_network, separators[i]);
            addPart(parts.nodes[i], elements[i], Code::disconnected_part, std::move(message));
        }
    }

    std::vector<std::vector<std::size_t>> elementsByPart(const Parts& parts) const
    {
        std::vector<std::vector<std::size_t>> elements(parts.nodes.size());
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            const std::size_t part = parts.partOf[element.from];
            if (!element.isClosed && part == parts.partOf[element.to]) elements[part].push_back(i);
        }
        return elements;
    }

    /// By part: a closed element that leads out of it.
    std::vector<std::size_t> separatorsByPart(const Parts& parts) const
    {
        std::vector<std::size_t> separators(parts.nodes.size(), kNone);
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const std::size_t from = parts.partOf[m_network.elements[i].from];
            const std::size_t to = parts.partOf[m_network.elements[i].to];
            if (!m_network.elements[i].isClosed || from == to) continue;
            if (separators[from] == kNone) separators[from] = i;
            if (separators[to] == kNone) separators[to] = i;
        }
        return separators;
    }

    Finding& addPart(const std::vector<std::size_t>& nodes, const std::vector<std::size_t>& elements,
                     Code code, std::string message)
    {
        Finding& finding = addAtNodes(m_network, nodes, code, std::move(message), m_findings);
        for (const std::size_t element : elements)
            finding.objects.push_back(elementLabel(m_network, element));
        finding.numbers = {{"nodes", static_cast<double>(nodes.size()), ""},
                           {"elements", static_cast<double>(elements.size()), ""}};
        return finding;
    }

    /// "node a, node b, element pipe 1 and 12 more".
    std::string memberText(const std::vector<std::size_t>& nodes,
                           const std::vector<std::size_t>& elements) const
    {
        std::string text;
        std::size_t count = 0;
        for (std::size_t i = 0; i < nodes.size() && count < kMostShownOfAList; ++i, ++count)
            text += (text.empty() ? "" : ", ") + nodeLabel(m_network, nodes[i]);
        for (std::size_t i = 0; i < elements.size() && count < kMostShownOfAList; ++i, ++count)
            text += (text.empty() ? "" : ", ") + elementLabel(m_network, elements[i]);
        const std::size_t all = nodes.size() + elements.size();
        return all > count ? text + " and " + std::to_string(all - count) + " more" : text;
    }

    std::string boundariesText(const std::vector<std::size_t>& nodes) const
    {
        std::string text;
        std::size_t count = 0;
        for (const std::size_t node : nodes) {
            if (!boundaryOf(node)) continue;
            if (++count <= kMostShownOfAList)
                text += (text.empty() ? "" : ", ") + nodeLabel(m_network, node) + " has an " +
                        boundaryText(*boundaryOf(node));
        }
        if (count == 0) return "it has no boundary conditions";
        return count > kMostShownOfAList ? text + " and " + std::to_string(count - kMostShownOfAList) +
                                               " more have boundary conditions"
                                         : text;
    }

    /// What is given at a node itself.
    Given givenAt(std::size_t node) const
    {
        Given given;
        const auto& boundary = boundaryOf(node);
        if (!boundary || m_openCount[node] == 0) return given;
        ++given.boundaries;
        if (boundary->pressure) ++given.pressures;
        if (boundary->flowKind == Boundary::Flow::none || boundary->pressure) return given;
        if (const auto flow = givenMassFlow(m_network, *boundary, m_anyElement[node], m_liquid))
            given.addFlow(*flow);
        else
            ++given.unknownFlows;
        return given;
    }

    /// The end of an element at which pressure and flow are given together; kNone when there is none.
    std::size_t pressureAndFlowEnd(const Element& element) const
    {
        for (const std::size_t node : {element.from, element.to}) {
            if (fixesElementFlow(m_network.nodes[node], m_openCount[node])) return node;
        }
        return kNone;
    }

    /// An element with a given flow hands no pressure on: it only brings its flow to the nodes at its ends.
    bool handsPressureOn(const Element& element) const
    {
        return !element.isClosed && !hasFixedFlow(element) && pressureAndFlowEnd(element) == kNone;
    }

    void addFixedFlows(std::vector<Given>& given, const Parts& groups) const
    {
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (element.isClosed || handsPressureOn(element)) continue;
            Given& from = given[groups.partOf[element.from]];
            Given& to = given[groups.partOf[element.to]];
            const std::size_t end = pressureAndFlowEnd(element);
            std::optional<double> flow = element.property(TAVELL_ELEMENT_FIXED_MASS_FLOW);
            if (end != kNone) {
                flow = givenMassFlow(m_network, *boundaryOf(end), i, m_liquid);
                if (flow && end == element.to) flow = -*flow;
                ++(end == element.from ? to : from).pressureAndFlow;
            }
            if (!flow) {
                ++from.unknownFlows;
                ++to.unknownFlows;
                continue;
            }
            from.addFlow(-*flow);
            to.addFlow(*flow);
        }
    }

    /// Groups of nodes that share the level of their pressures need one that is given.
    void checkPressures(bool hasPressure)
    {
        const Graph graph =
            makeGraph(m_network, [this](std::size_t i) { return handsPressureOn(m_network.elements[i]); });
        const Parts groups = findParts(m_network, graph);
        std::vector<Given> given(groups.nodes.size());
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i)
            given[groups.partOf[i]] += givenAt(i);
        addFixedFlows(given, groups);
        for (std::size_t i = 0; i < groups.nodes.size(); ++i) {
            if (given[i].pressures > 0 || m_openCount[groups.nodes[i].front()] == 0) continue;
            checkGroupWithoutPressure(groups.nodes[i], given[i], hasPressure);
        }
        reportPartsWithoutPressure();
    }

    void checkGroupWithoutPressure(const std::vector<std::size_t>& nodes, const Given& given,
                                   bool hasPressure)
    {
        const std::string part =
            "a part of " + shownCount(nodes.size(), "node") + " (" + memberText(nodes, {}) + ") ";
        const bool isUnbalanced =
            given.unknownFlows == 0 && std::fabs(given.inflow) > kBalanceTolerance * given.largest;
        if (given.pressureAndFlow > 0) {
            addPart(nodes, {}, Code::pressure_and_flow_too_many,
                    part + "has no pressure of its own: each pressure at its edge is given together with the "
                           "flow of the same element, which leaves nothing to join the two");
        } else if (isUnbalanced) {
            addPart(nodes, {}, Code::part_flows_do_not_balance,
                    part + "has no given pressure, and the given flows around it add up to " +
                        shown(given.inflow, Quantity::massFlow) + " into it")
                .numbers.push_back({"net_inflow", given.inflow, "kg/s"});
        } else if (hasPressure && nodes.size() > 1) {
            m_partsWithoutPressure.push_back(nodes);
        }
    }

    /// One finding for each of a few parts, one for all of many.
    void reportPartsWithoutPressure()
    {
        const std::size_t count = m_partsWithoutPressure.size();
        if (count <= kMostPartsApart) {
            for (const auto& nodes : m_partsWithoutPressure)
                addPart(nodes, {}, Code::part_has_no_pressure,
                        "a part of " + shownCount(nodes.size(), "node") + " (" + memberText(nodes, {}) +
                            ") has no given pressure; " + boundariesText(nodes));
            return;
        }
        std::vector<std::size_t> all;
        std::string names;
        for (std::size_t i = 0; i < count; ++i) {
            const auto& nodes = m_partsWithoutPressure[i];
            if (i < kMostPartsApart) names += (i == 0 ? "" : ", ") + nodeLabel(m_network, nodes.front());
            all.insert(all.end(), nodes.begin(), nodes.end());
        }
        Finding& finding =
            addAtNodes(m_network, all, Code::part_has_no_pressure,
                       shownCount(count, "part") + " of the network have no given pressure, those around " +
                           names + " and " + std::to_string(count - kMostPartsApart) + " more",
                       m_findings);
        finding.numbers = {{"parts", static_cast<double>(count), ""},
                           {"nodes", static_cast<double>(all.size()), ""}};
    }

    /// The flow of a bridge follows from what is given beyond it, when there is no pressure on that side.
    void checkOnlyWays(const Graph& open)
    {
        const Forest forest = makeForest(m_network, open);
        std::vector<Given> below(m_network.nodes.size());
        for (std::size_t i = 0; i < below.size(); ++i)
            below[i] = givenForBalance(i);
        sumUpwards(m_network, forest, below);
        for (const std::size_t node : forest.order) {
            if (!forest.isBridgeAbove[node]) continue;
            const Given& all = below[forest.root[node]];
            const Element& element = m_network.elements[forest.elementAbove[node]];
            if (all.pressures == 0 || all.unknownFlows > 0) continue;
            double flowDown = 0.0;
            if (below[node].pressures == 0)
                flowDown = -below[node].inflow;
            else if (below[node].pressures == all.pressures)
                flowDown = all.inflow - below[node].inflow;
            else
                continue;
            if (std::fabs(flowDown) <= kBalanceTolerance * all.largest) continue;
            checkOnlyWay(forest.elementAbove[node], element.to == node ? flowDown : -flowDown);
        }
    }

    /// As givenAt, with a pressure that comes with a flow counted as that flow.
    Given givenForBalance(std::size_t node) const
    {
        Given given = givenAt(node);
        if (!fixesElementFlow(m_network.nodes[node], m_openCount[node])) return given;
        given.pressures = 0;
        if (const auto flow = givenMassFlow(m_network, *boundaryOf(node), m_anyElement[node], m_liquid))
            given.addFlow(*flow);
        else
            ++given.unknownFlows;
        return given;
    }

    /// flow [kg/s] along the element is the only one that the given flows beyond it allow.
    void checkOnlyWay(std::size_t position, double flow)
    {
        const Element& element = m_network.elements[position];
        const std::string amount = shown(std::fabs(flow), Quantity::massFlow);
        const auto add = [&](Code code, std::string message) {
            addAtElement(m_network, position, code, std::move(message), m_findings).numbers = {
                {"needed_flow", flow, "kg/s"}};
        };
        const std::string backwards = "the only way for " + amount + " leads through it from node " +
                                      m_network.nodes[element.to].name + " to node " +
                                      m_network.nodes[element.from].name;
        if (isNonReturn(element) && flow < 0.0)
            add(Code::valve_against_only_flow, backwards + ", which it blocks");
        else if (element.kind->type == TAVELL_PUMP && !hasFixedFlow(element) && flow < 0.0)
            add(Code::pump_against_only_flow, backwards + ", against the pump");
        else if (element.kind->type == TAVELL_CONTROL_VALVE) {
            const double limit =
                std::fabs(element.property(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW).value_or(0.0));
            if (std::fabs(flow) > limit * (1.0 + kBalanceTolerance))
                add(Code::limit_below_needed_flow, "the only way for " + amount +
                                                       " leads through it, and its limit is " +
                                                       shown(limit, Quantity::massFlow));
        }
    }

    /// Whether anything makes the liquid move.
    void checkDrive()
    {
        std::optional<double> first;
        std::optional<double> other;
        double size = 0.0;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (!boundaryOf(i)) continue;
            if (boundaryOf(i)->flowKind != Boundary::Flow::none && boundaryOf(i)->flow != 0.0) return;
            if (!boundaryOf(i)->pressure) continue;
            const double pressure =
                *boundaryOf(i)->pressure + staticHeightPressure(m_network, i, m_liquid.density);
            size = std::max({size, std::fabs(pressure), std::fabs(*boundaryOf(i)->pressure)});
            if (!first) first = pressure;
            if (std::fabs(pressure - *first) > kBalanceTolerance * size) other = pressure;
        }
        const auto isPump = [](const Element& element) {
            return !element.isClosed && (element.kind->type == TAVELL_PUMP || hasFixedFlow(element));
        };
        if (!first || other || std::any_of(m_network.elements.begin(), m_network.elements.end(), isPump))
            return;
        m_findings
            .add(Code::nothing_drives_flow, {m_network.file, 0, 0, "", ""},
                 "no flow is given, there is no pump, and all given pressures balance each other")
            .objects = boundaryNodes();
    }

    const Network& m_network;
    Findings& m_findings;
    const Liquid m_liquid;
    const std::vector<std::size_t> m_openCount;
    const std::vector<std::size_t> m_anyElement;
    std::vector<std::vector<std::size_t>> m_partsWithoutPressure;  // their nodes
};

}  // namespace

void checkParts(const Network& network, Findings& findings)
{
    PartChecks(network, findings).run();
}

}  // namespace kit::doctor
