// ObjectRegistry.h: which pointers of a host are objects of a system, and where they belong.
#pragma once

#include "HashIndex.h"
#include "ObjectPool.h"

namespace Velcor::Tavell
{

class Circuit;
class Element;
class ICircuit;
class IElement;
class INode;
class Node;

/// One for each system object: every living circuit, node and element. A pointer that a host hands in is
/// looked up here before it is followed, since it may point to a released object.
struct ObjectRegistry {
    HashIndex<const ICircuit*, Circuit> circuits;
    ObjectPool<Node> nodes;
    ObjectPool<Element> elements;

    /// The circuit of a node or an element; null when the pointer is none of this system.
    Circuit* circuitOf(const INode* node) const;
    Circuit* circuitOf(const IElement* element) const;
};

}  // namespace Velcor::Tavell
