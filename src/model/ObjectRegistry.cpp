// ObjectRegistry.cpp: look-up of a host's pointers.
#include "ObjectRegistry.h"

#include "Element.h"
#include "Node.h"

namespace Velcor::Tavell
{

Circuit* ObjectRegistry::circuitOf(const INode* node) const
{
    const Node* known = nodes.find(node);
    return known != nullptr ? &known->circuit() : nullptr;
}

Circuit* ObjectRegistry::circuitOf(const IElement* element) const
{
    const Element* known = elements.find(element);
    return known != nullptr ? &known->circuit() : nullptr;
}

}  // namespace Velcor::Tavell
