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
    node.filing() = filingOf(node);
    const FiledIdentifier id = node.filing().id;
    if (id.isReadable)
        m_nodes.insert(id.value, node);
    else
        m_unreadableNodes.emplace(node.sequence(), &node);
}

void CircuitIndex::remove(const Node& node)
{
    const FiledIdentifier id = node.filing().id;
    if (id.isReadable)
        m_nodes.erase(id.value, node);
    else
        m_unreadableNodes.erase(node.sequence());
}

void CircuitIndex::refile(Node& node)
{
    if (isSame(filingOf(node).id, node.filing().id)) return;
    remove(node);
    add(node);
}

void CircuitIndex::add(Element& element)
{
    element.filing() = filingOf(element);
    const ElementFiling& filing = element.filing();
    if (!filing.start.isReadable)
        m_unreadableStarts.emplace(element.sequence(), &element);
    else if (!filing.end.isReadable)
        m_unreadableEnds.insert(filing.start.value, element);
    else
        m_elementsByEnds.insert({filing.start.value, filing.end.value}, element);
}

void CircuitIndex::remove(const Element& element)
{
    const ElementFiling& filing = element.filing();
    if (!filing.start.isReadable)
        m_unreadableStarts.erase(element.sequence());
    else if (!filing.end.isReadable)
        m_unreadableEnds.erase(filing.start.value, element);
    else
        m_elementsByEnds.erase({filing.start.value, filing.end.value}, element);
}

void CircuitIndex::refile(Element& element)
{
    const ElementFiling now = filingOf(element);
    const ElementFiling& filed = element.filing();
    if (isSame(now.start, filed.start) && isSame(now.end, filed.end)) return;
    remove(element);
    add(element);
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
