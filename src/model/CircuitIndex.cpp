// CircuitIndex.cpp: filing of nodes and elements.
#include "CircuitIndex.h"

#include "Element.h"
#include "Node.h"
#include "property_ids.h"

namespace Velcor::Tavell
{

namespace
{

FiledIdentifier readIdentifier(const Properties& properties, int id)
{
    if (const auto number = properties.readableNumber(id)) return {truncateToInt(*number), true};
    return {0, !properties.has(id)};
}

NodeFiling filingOf(const Node& node)
{
    return {readIdentifier(node.properties(), TAVELL_NODE_ID)};
}

ElementFiling filingOf(const Element& element)
{
    const Properties& properties = element.properties();
    return {readIdentifier(properties, TAVELL_ELEMENT_START), readIdentifier(properties, TAVELL_ELEMENT_END)};
}

bool isSame(const FiledIdentifier& a, const FiledIdentifier& b)
{
    return a.value == b.value && a.isReadable == b.isReadable;
}

/// Whether a walk meets an object before it finds `match`, which may be null.
template <class T> bool isMetBefore(const T& object, const T* match)
{
    return match == nullptr || object.sequence() < match->sequence();
}

}  // namespace

void CircuitIndex::add(Node& node)
{
    const NodeFiling filing = filingOf(node);
    file(node, filing);
    node.filing() = filing;
}

void CircuitIndex::remove(const Node& node)
{
    takeOut(node, node.filing());
}

void CircuitIndex::refile(Node& node)
{
    const NodeFiling now = filingOf(node);
    if (isSame(now.id, node.filing().id)) return;
    // In this order, since filing may fail and taking out does not.
    file(node, now);
    takeOut(node, node.filing());
    node.filing() = now;
}

void CircuitIndex::file(Node& node, const NodeFiling& filing)
{
    if (filing.id.isReadable)
        m_nodes.insert(filing.id.value, node);
    else
        m_unreadableNodes.emplace(node.sequence(), &node);
}

void CircuitIndex::takeOut(const Node& node, const NodeFiling& filing)
{
    if (filing.id.isReadable)
        m_nodes.erase(filing.id.value, node);
    else
        m_unreadableNodes.erase(node.sequence());
}

void CircuitIndex::add(Element& element)
{
    const ElementFiling filing = filingOf(element);
    file(element, filing);
    element.filing() = filing;
}

void CircuitIndex::remove(const Element& element)
{
    takeOut(element, element.filing());
}

void CircuitIndex::refile(Element& element)
{
    const ElementFiling now = filingOf(element);
    const ElementFiling filed = element.filing();
    if (isSame(now.start, filed.start) && isSame(now.end, filed.end)) return;
    // An element without a readable start is filed by its age, whatever its end is.
    if (now.start.isReadable || filed.start.isReadable) {
        file(element, now);
        takeOut(element, filed);
    }
    element.filing() = now;
}

void CircuitIndex::file(Element& element, const ElementFiling& filing)
{
    if (!filing.start.isReadable)
        m_unreadableStarts.emplace(element.sequence(), &element);
    else if (!filing.end.isReadable)
        m_unreadableEnds.insert(filing.start.value, element);
    else
        m_elementsByEnds.insert({filing.start.value, filing.end.value}, element);
}

void CircuitIndex::takeOut(const Element& element, const ElementFiling& filing)
{
    if (!filing.start.isReadable)
        m_unreadableStarts.erase(element.sequence());
    else if (!filing.end.isReadable)
        m_unreadableEnds.erase(filing.start.value, element);
    else
        m_elementsByEnds.erase({filing.start.value, filing.end.value}, element);
}

void CircuitIndex::readIdentifiers(Node& node)
{
    node.filing() = filingOf(node);
}

void CircuitIndex::readIdentifiers(Element& element)
{
    element.filing() = filingOf(element);
}

Node* CircuitIndex::firstNode(int id) const
{
    Node* match = m_nodes.find(id);
    if (!m_unreadableNodes.empty()) {
        const Node& unreadable = *m_unreadableNodes.begin()->second;
        if (isMetBefore(unreadable, match)) static_cast<void>(unreadable.id());  // throws
    }
    return match;
}

Element* CircuitIndex::firstElement(int start, int end) const
{
    Element* match = m_elementsByEnds.find({start, end});
    const Element* unreadable = m_unreadableEnds.find(start);
    if (!m_unreadableStarts.empty()) {
        const Element* withoutStart = m_unreadableStarts.begin()->second;
        if (isMetBefore(*withoutStart, unreadable)) unreadable = withoutStart;
    }
    if (unreadable != nullptr && isMetBefore(*unreadable, match)) {
        static_cast<void>(unreadable->startNodeId());  // one of the two throws
        static_cast<void>(unreadable->endNodeId());
    }
    return match;
}

}  // namespace Velcor::Tavell
