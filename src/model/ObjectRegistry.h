// ObjectRegistry.h: which pointers of a host are objects of a system, and where they belong.
#pragma once

#include "HashIndex.h"

namespace Velcor::Tavell
{

class Circuit;
class ICircuit;
class IElement;
class INode;

/// One for each system object: every living circuit, node and element with the circuit that it is or belongs
/// to. A pointer that a host hands in is looked up here before it is followed, since it may point to a
/// released object.
struct ObjectRegistry {
    HashIndex<const ICircuit*, Circuit> circuits;
    HashIndex<const INode*, Circuit> nodes;
    HashIndex<const IElement*, Circuit> elements;
};

}  // namespace Velcor::Tavell
