#include "boundary_checks.h"

#include <algorithm>
#include <string>
#include <vector>

#include <tavell/Constants.h>

#include "element_kinds.h"

namespace
{

bool imposesFlow(const Node& node)
{
    return node.boundary && node.boundary->flowKind != Boundary::Flow::none;
}

bool imposesPressure(const Node& node)
{
    return node.boundary && node.boundary->pressure;
}

/// Whether an element brings a flow of its own to its ends, so that one of a node would be ignored.
bool hasOwnFlow(const Element& element)
{
    if (element.kind->type == TAVELL_CONTROL_VALVE || element.kind->type == TAVELL_NON_RETURN) return true;
    return std::any_of(element.properties.begin(), element.properties.end(),
                       [](const auto& entry) { return entry.first == TAVELL_ELEMENT_FIXED_MASS_FLOW; });
}

/// JSON pointer of a node or element, with its name.
std::string placeOf(const char* list, std::size_t position, const std::string& name)
{
    return std::string("/") + list + '/' + std::to_string(position) + " (" + name + ')';
}

/// The checks over all nodes and elements, which share the number of elements at each node.
class BoundaryChecks
{
public:
    BoundaryChecks(const Network& network, Problems& problems)
        : m_network(network), m_problems(problems), m_elementCount(network.nodes.size(), 0)
    {
        for (const Element& element : network.elements) {
            ++m_elementCount[element.from];
            ++m_elementCount[element.to];
        }
    }

    void run()
    {
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i)
            checkNode(i);
        for (std::size_t i = 0; i < m_network.elements.size(); ++i)
            checkElement(i);
        if (std::none_of(m_network.nodes.begin(), m_network.nodes.end(), imposesPressure))
            m_problems.add("/nodes", "no node has a given pressure; give one inlet or outlet a \"pressure\"");
    }

private:
    void checkNode(std::size_t position)
    {
        const Node& node = m_network.nodes[position];
        const std::string place = placeOf("nodes", position, node.name);
        const std::size_t count = m_elementCount[position];
        if (count == 0)
            m_problems.add(place, "no element starts or ends here; connect the node or remove it");
        else if (count > 1 && imposesFlow(node))
            m_problems.add(place, "a given flow needs a node with one element, this one has " +
                                      std::to_string(count) +
                                      "; put the inlet or outlet at the end of a pipe of its own");
    }

    void checkElement(std::size_t position)
    {
        const Element& element = m_network.elements[position];
        const std::string place = placeOf("elements", position, element.name);
        const Node& from = m_network.nodes[element.from];
        const Node& to = m_network.nodes[element.to];
        if (imposesFlow(from) && imposesFlow(to))
            m_problems.add(place, "both of its ends have a given flow; keep one");
        if (hasOwnFlow(element) && (imposesFlow(from) || imposesFlow(to)))
            m_problems.add(
                place,
                std::string("a ") + element.kind->name +
                    " with a flow of its own cannot join a node with a given flow; put a pipe between");
        if (element.kind->hasCurve && (needsSection(from) || needsSection(to)))
            m_problems.add(place,
                           std::string("a ") + element.kind->name +
                               " has no cross-section; give its end a \"mass_flow\" or put a pipe between");
        if (element.kind->type == TAVELL_CONTROL_VALVE &&
            (isClosedEnd(element.from) || isClosedEnd(element.to)))
            m_problems.add(place,
                           "an end of a control valve leads nowhere; give it a \"pressure\" or connect it");
    }

    /// A velocity and a Reynolds number become a flow through the element's cross-section.
    static bool needsSection(const Node& node)
    {
        return imposesFlow(node) && node.boundary->flowKind != Boundary::Flow::mass;
    }

    bool isClosedEnd(std::size_t position) const
    {
        return m_elementCount[position] == 1 && !m_network.nodes[position].boundary;
    }

    const Network& m_network;
    Problems& m_problems;
    std::vector<std::size_t> m_elementCount;  // by node position
};

}  // namespace

void checkBoundaries(const Network& network, Problems& problems)
{
    BoundaryChecks(network, problems).run();
}
