// Boundary conditions that contradict each other, are not used or have unlikely values, and the gravity
// vector.

#include <algorithm>
#include <cmath>
#include <numeric>

#include <tavell/Constants.h>

#include "doctor_checks.h"
#include "doctor_graph.h"
#include "doctor_support.h"
#include "element_inputs.h"
#include "element_kinds.h"

namespace kit::doctor
{

namespace
{

constexpr double kGravityTolerance = 1e-3;          // [-], of the length of a direction typed with few digits
constexpr double kNoResistanceLength = 1e-3;        // [m], of a pipe that loses next to nothing
constexpr double kLeastPressureDifference = 1.0;    // [Pa], between two given pressures that contradict
constexpr double kLeastLikelyPressure = 200.0;      // [Pa], below it a pressure was perhaps meant in bar
constexpr double kOrdinaryPressure = 1e4;           // [Pa], that of networks given in pascals
constexpr double kGreatestLikelyPressure = 1e8;     // [Pa]
constexpr double kGreatestLikelyVelocity = 50.0;    // [m/s], of a liquid in a pipe
constexpr double kLeastLikelyTemperature = 150.0;   // [K]
constexpr double kGreatestLikelyTemperature = 700;  // [K]

/// Nodes that share one pressure, as disjoint sets (Tarjan 1975).
class NodeSets
{
public:
    explicit NodeSets(std::size_t count) : m_above(count) { std::iota(m_above.begin(), m_above.end(), 0); }

    std::size_t find(std::size_t node)
    {
        while (m_above[node] != node)
            node = m_above[node] = m_above[m_above[node]];
        return node;
    }

    void join(std::size_t a, std::size_t b) { m_above[find(a)] = find(b); }

private:
    std::vector<std::size_t> m_above;
};

class BoundaryChecks
{
public:
    BoundaryChecks(const Network& network, Findings& findings)
        : m_network(network), m_findings(findings), m_liquid(liquidOf(network))
    {
    }

    void run()
    {
        checkGravity();
        checkPressuresAcrossNoResistance();
        checkPressureValues();
        checkFlowValues();
        checkTemperatures();
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (m_network.nodes[i].boundary) checkUse(i, *m_network.nodes[i].boundary);
        }
        checkElementsUse();
    }

private:
    void checkGravity()
    {
        const auto& g = m_network.gravity;
        const double length = std::hypot(g[0], g[1], g[2]);
        if (length == 0.0 || std::fabs(length - 1.0) <= kGravityTolerance) return;
        m_findings
            .add(Code::gravity_length, {m_network.file, 0, 0, "/gravity", ""},
                 "the gravity vector has length " + shownNumber(length) + ", so the liquid weighs " +
                     shownNumber(length) + " times its weight on Earth")
            .numbers = {{"length", length, ""}};
    }

    bool hasNoResistance(const Element& element) const
    {
        if (element.isClosed || !needsLength(element) || element.kind->type == TAVELL_GENERAL_LOSS)
            return false;
        return lengthOf(m_network, element) <= kNoResistanceLength &&
               inputsOf(m_network, element, m_liquid.density).k == 0.0;
    }

    /// Two given pressures that differ, joined by pipes too short to hold the difference.
    void checkPressuresAcrossNoResistance()
    {
        NodeSets sets(m_network.nodes.size());
        for (const Element& element : m_network.elements) {
            if (hasNoResistance(element)) sets.join(element.from, element.to);
        }
        std::vector<std::size_t> given(m_network.nodes.size(), kNone);
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const auto& boundary = m_network.nodes[i].boundary;
            if (!boundary || !boundary->pressure) continue;
            std::size_t& first = given[sets.find(i)];
            if (first == kNone)
                first = i;
            else
                comparePressures(first, i);
        }
    }

    double piezometric(std::size_t node) const
    {
        return *m_network.nodes[node].boundary->pressure +
               staticHeightPressure(m_network, node, m_liquid.density);
    }

    void comparePressures(std::size_t a, std::size_t b)
    {
        const double difference = piezometric(b) - piezometric(a);
        if (std::fabs(difference) <= kLeastPressureDifference) return;
        addAtNodes(m_network, {a, b}, Code::pressures_across_no_resistance,
                   "its " + boundaryText(*m_network.nodes[a].boundary) + " and the " +
                       boundaryText(*m_network.nodes[b].boundary) + " of " + nodeLabel(m_network, b) +
                       " are joined without any resistance, but differ by " +
                       shown(std::fabs(difference), Quantity::pressure) + " when heights are counted",
                   m_findings)
            .numbers = {{"difference", difference, "Pa"}};
    }

    void checkPressureValues()
    {
        double greatest = 0.0;
        for (const Node& node : m_network.nodes) {
            if (node.boundary && node.boundary->pressure)
                greatest = std::max(greatest, std::fabs(*node.boundary->pressure));
        }
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const auto& boundary = m_network.nodes[i].boundary;
            if (!boundary || !boundary->pressure || *boundary->pressure == 0.0) continue;
            const double size = std::fabs(*boundary->pressure);
            std::string message;
            if (size <= kLeastLikelyPressure && greatest >= kOrdinaryPressure)
                message = "its pressure of " + shown(*boundary->pressure, Quantity::pressure) +
                          " stands among pressures of up to " + shown(greatest, Quantity::pressure) +
                          "; perhaps " + shownNumber(*boundary->pressure) + " bar is meant";
            else if (size > kGreatestLikelyPressure)
                message = "its pressure is " + shown(*boundary->pressure, Quantity::pressure);
            if (message.empty()) continue;
            addAtNode(m_network, i, Code::pressure_unlikely, std::move(message), m_findings).numbers = {
                {"pressure", *boundary->pressure, "Pa"}};
        }
    }

    /// The velocity that a given flow has in all elements of its node together.
    void checkFlowValues()
    {
        constexpr double kNoSection = -1.0;
        std::vector<double> area(m_network.nodes.size(), 0.0);
        for (const Element& element : m_network.elements) {
            if (element.isClosed) continue;
            for (const std::size_t node : {element.from, element.to}) {
                if (!element.section)
                    area[node] = kNoSection;
                else if (area[node] != kNoSection)
                    area[node] += element.section->area;
            }
        }
        const std::vector<std::size_t> any = anyOpenElement(m_network);
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const auto& boundary = m_network.nodes[i].boundary;
            if (!boundary || area[i] <= 0.0) continue;
            const auto flow = givenMassFlow(m_network, *boundary, any[i], m_liquid);
            if (!flow) continue;
            const double velocity = std::fabs(*flow) / (m_liquid.density * area[i]);
            if (velocity <= kGreatestLikelyVelocity) continue;
            addAtNode(m_network, i, Code::flow_unlikely,
                      "its " + boundaryText(*boundary) + " would run at " +
                          shown(velocity, Quantity::velocity) + " through the elements that are joined here",
                      m_findings)
                .numbers = {{"velocity", velocity, "m/s"}, {"mass_flow", *flow, "kg/s"}};
        }
    }

    static bool isTemperatureLikely(double value)
    {
        return value >= kLeastLikelyTemperature && value <= kGreatestLikelyTemperature;
    }

    static std::string temperatureText(double value)
    {
        const std::string text = shown(value, Quantity::temperature);
        return value < kLeastLikelyTemperature ? text + "; perhaps " + shownNumber(value) + " degC is meant"
                                               : text;
    }

    void checkTemperatures()
    {
        const auto& ofCase = m_network.fluid.temperature;
        if (ofCase && !isTemperatureLikely(*ofCase))
            m_findings
                .add(Code::temperature_unlikely, {m_network.file, 0, 0, "/fluid/temperature", ""},
                     "the temperature of the liquid is " + temperatureText(*ofCase))
                .numbers = {{"temperature", *ofCase, "K"}};
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const auto& boundary = m_network.nodes[i].boundary;
            if (!boundary || !boundary->temperature || isTemperatureLikely(*boundary->temperature)) continue;
            addAtNode(m_network, i, Code::temperature_unlikely,
                      "the temperature given here is " + temperatureText(*boundary->temperature), m_findings)
                .numbers = {{"temperature", *boundary->temperature, "K"}};
        }
    }

    void addIgnored(std::size_t node, std::string message, std::string remedy)
    {
        addAtNode(m_network, node, Code::boundary_value_ignored, std::move(message), m_findings).remedy =
            std::move(remedy);
    }

    void checkUse(std::size_t node, const Boundary& boundary)
    {
        const bool hasFlow = boundary.flowKind != Boundary::Flow::none;
        if (hasFlow && boundary.flow < 0.0)
            addAtNode(m_network, node, Code::flow_against_its_name,
                      boundary.isInlet ? "the flow of this inlet is negative, so liquid leaves here"
                                       : "the flow of this outlet is negative, so liquid enters here",
                      m_findings)
                .numbers = {{"flow", boundary.flow, ""}};
        if (boundary.temperature && !boundary.isInlet)
            addIgnored(node, "the temperature of an outlet is not used",
                       "remove it, or make the node an inlet if liquid enters here");
        else if (boundary.temperature && !m_network.settings.solvesTemperatures)
            addIgnored(node, "the temperature of the inlet is not used, since temperatures are not solved",
                       "switch \"temperatures\" on in the settings, or remove it");
    }

    void checkElementsUse()
    {
        std::vector<std::size_t> heated;
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            if (m_network.elements[i].heat) heated.push_back(i);
        }
        if (!heated.empty() && !m_network.settings.solvesTemperatures)
            addAtElements(m_network, heated, Code::heat_not_used,
                          "the heat of " + shownCount(heated.size(), "element") +
                              " is not used, since temperatures are not solved",
                          m_findings);
    }

    const Network& m_network;
    Findings& m_findings;
    const Liquid m_liquid;
};

}  // namespace

void checkBoundaries(const Network& network, Findings& findings)
{
    BoundaryChecks(network, findings).run();
}

}  // namespace kit::doctor
