#include "boundary_checks.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <tavell/Constants.h>

#include "element_kinds.h"
#include "number_text.h"

namespace kit
{

namespace
{

/// Two nodes closer than this sum of coordinate differences [m] count as one place.
constexpr double kSamePlace = 1e-13;

/// [-], how much below the distance a length may be that was rounded.
constexpr double kLengthMargin = 1e-9;

constexpr int kLengthDigits = 7;  // of lengths in messages

bool imposesFlow(const Node& node)
{
    return node.boundary && node.boundary->flowKind != Boundary::Flow::none;
}

/// A velocity and a Reynolds number become a flow through the element's cross-section.
bool needsSection(const Node& node)
{
    return imposesFlow(node) && (node.boundary->flowKind == Boundary::Flow::velocity ||
                                 node.boundary->flowKind == Boundary::Flow::reynolds);
}

/// The checks over all nodes and elements, which share the number of elements at each node.
class TogetherChecks
{
public:
    TogetherChecks(const Network& network, PointerOf of, const std::string& pointer, Findings& findings)
        : m_network(network), m_of(of), m_pointer(pointer), m_findings(findings),
          m_elementCount(network.nodes.size(), 0), m_openCount(network.nodes.size(), 0)
    {
        if (network.nodes.empty()) return;
        for (const Element& element : network.elements) {
            for (const std::size_t node : {element.from, element.to}) {
                ++m_elementCount[node];
                if (!element.isClosed) ++m_openCount[node];
            }
        }
    }

    void run()
    {
        if (m_network.nodes.empty() || m_network.elements.empty()) {
            reportNetwork(Code::empty_network,
                          m_network.nodes.empty() ? "there is no node" : "there is no element");
            return;
        }
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i)
            checkNode(i);
        for (std::size_t i = 0; i < m_network.elements.size(); ++i)
            checkElement(i);
        checkWhole();
    }

private:
    void checkWhole()
    {
        const bool hasPressure =
            std::any_of(m_network.nodes.begin(), m_network.nodes.end(),
                        [](const Node& node) { return node.boundary && node.boundary->pressure; });
        if (!hasPressure) reportNetwork(Code::no_given_pressure, "no node has a given pressure");
    }

    void checkNode(std::size_t position)
    {
        const Node& node = m_network.nodes[position];
        if (m_elementCount[position] == 0)
            reportNode(Code::isolated_node, position, "no element starts or ends here");
        else if (m_openCount[position] > 1 && needsSection(node))
            reportNode(
                Code::needs_one_element, position,
                std::string("a given ") +
                    (node.boundary->flowKind == Boundary::Flow::velocity ? "velocity" : "Reynolds number") +
                    " needs a node with one element, this one has " + std::to_string(m_openCount[position]));
    }

    void checkElement(std::size_t position)
    {
        const Element& element = m_network.elements[position];
        if (m_network.coordinates == Coordinates::geometry)
            checkLength(position);
        else
            checkSchematicLength(position);
        if (element.isClosed) return;
        const Node& from = m_network.nodes[element.from];
        const Node& to = m_network.nodes[element.to];
        if (element.kind->hasCurve && (needsSection(from) || needsSection(to)))
            reportElement(Code::needs_section, position,
                          std::string("a ") + element.kind->name +
                              " has no cross-section for the velocity or Reynolds number of its end");
    }

    void checkLength(std::size_t position)
    {
        const Element& element = m_network.elements[position];
        const auto& a = m_network.nodes[element.from].at;
        const auto& b = m_network.nodes[element.to].at;
        const auto nodes = [&] {
            return inQuotes(m_network.nodes[element.from].name) + " and " +
                   inQuotes(m_network.nodes[element.to].name);
        };
        const double apart = std::fabs(a[0] - b[0]) + std::fabs(a[1] - b[1]) + std::fabs(a[2] - b[2]);
        const double distance = std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
        if (apart < kSamePlace)
            reportElement(Code::nodes_at_one_place, position,
                          "its nodes " + nodes() + " are at the same place");
        else if (!std::isfinite(apart * apart))
            reportElement(Code::nodes_too_far_apart, position, "its nodes " + nodes() + " are too far apart");
        else if (element.length && *element.length < distance * (1.0 - kLengthMargin))
            reportElement(Code::length_below_distance, position,
                          "its length " + shortNumber(*element.length, kLengthDigits) +
                              " m is below the distance between its nodes " + nodes() + ", " +
                              shortNumber(distance, kLengthDigits) + " m");
    }

    void checkSchematicLength(std::size_t position)
    {
        const Element& element = m_network.elements[position];
        const bool isByExponent = element.kind->length == LengthUse::byExponent &&
                                  element.property(TAVELL_ELEMENT_GENERAL_LOSS_B).value_or(0.0) != 0.0;
        if (element.length || (element.kind->length != LengthUse::required && !isByExponent)) return;
        reportElement(Code::length_missing, position, "its length is missing");
    }

    void reportNetwork(Code code, std::string message)
    {
        const std::string pointer = m_of == PointerOf::all ? m_pointer : m_pointer + "/nodes";
        m_findings.add(code, Place{m_network.file, 0, 0, pointer, ""}, std::move(message));
    }

    void reportNode(Code code, std::size_t position, std::string message)
    {
        const Node& node = m_network.nodes[position];
        const std::string pointer = pointerOf("/nodes/", position);
        m_findings.add(code, Place{m_network.file, lineOf(node), 0, pointer, "node " + node.name},
                       std::move(message));
    }

    void reportElement(Code code, std::size_t position, std::string message)
    {
        const Element& element = m_network.elements[position];
        const std::string pointer = pointerOf("/elements/", position);
        m_findings.add(code, Place{m_network.file, lineOf(element), 0, pointer, "element " + element.name},
                       std::move(message));
    }

    /// Line of a node or an element; 0, to be found by the pointer, for findings at another place.
    template <class Part> std::size_t lineOf(const Part& part) const
    {
        return m_of == PointerOf::parts ? part.line : 0;
    }

    std::string pointerOf(const char* list, std::size_t position) const
    {
        return m_of == PointerOf::all ? m_pointer : m_pointer + list + std::to_string(position);
    }

    const Network& m_network;
    PointerOf m_of;
    const std::string& m_pointer;
    Findings& m_findings;
    std::vector<std::size_t> m_elementCount;  // by node position
    std::vector<std::size_t> m_openCount;     // the same without closed elements
};

}  // namespace

void checkTogether(const Network& network, PointerOf of, const std::string& pointer, Findings& findings)
{
    TogetherChecks(network, of, pointer, findings).run();
}

}  // namespace kit
