// CircuitIndex.h: the nodes and elements of a circuit by their identifiers.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "FirstHolderIndex.h"
#include "IdIndex.h"

namespace Velcor::Tavell
{

class Element;
class Node;

/// An identifier as the index read it: absent ones read 0; one whose text is no number is unreadable.
struct FiledIdentifier {
    int value = 0;
    bool isReadable = true;
};

/// What an object was filed under; kept in the object, written by CircuitIndex only.
struct NodeFiling {
    FiledIdentifier id;
};
struct ElementFiling {
    FiledIdentifier start, end;
};

/// Finds what a walk over the circuit in order of creation would find first, and throws where such a walk
/// would: when it meets an identifier that is no number before it finds a match.
class CircuitIndex
{
public:
    // File an object, take it out, or file it anew after its identifiers changed. When an allocation fails,
    // nothing has changed; remove never throws.
    void add(Node& node);
    void remove(const Node& node);
    void refile(Node& node);
    void add(Element& element);
    void remove(const Element& element);
    void refile(Element& element);

    /// Note in an object the identifiers that it has, for an index that has it filed under them.
    static void readIdentifiers(Node& node);
    static void readIdentifiers(Element& element);

    /// The oldest node with this id; null when there is none. Throws as requireReadable.
    Node* firstNode(int id) const;
    /// The oldest element from start to end; null when there is none. Throws as requireReadable; an end id is
    /// only read where the start id matches.
    Element* firstElement(int start, int end) const;

private:
    void file(Node& node, const NodeFiling& filing);
    void takeOut(const Node& node, const NodeFiling& filing);
    void file(Element& element, const ElementFiling& filing);
    void takeOut(const Element& element, const ElementFiling& filing);

    using Ends = std::pair<int, int>;  // start and end node id

    FirstHolderIndex<int, Node, IdIndex<Node>> m_nodes;
    std::map<std::uint64_t, Node*> m_unreadableNodes;  // by sequence number

    FirstHolderIndex<Ends, Element> m_elementsByEnds;
    FirstHolderIndex<int, Element> m_unreadableEnds;       // start id readable, end id not; by start id
    std::map<std::uint64_t, Element*> m_unreadableStarts;  // by sequence number
};

}  // namespace Velcor::Tavell
