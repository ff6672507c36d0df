// tidying.h: what ICircuit::Validate mends before it answers.
#pragma once

#include <optional>
#include <vector>

#include "model/CircuitIndex.h"
#include "model/Properties.h"

namespace Velcor::Tavell
{

class Circuit;

/// Changes of identifiers of a circuit that can be taken back.
class IdentifierChanges
{
public:
    /// Store a number under a property and remember what was there.
    void set(Node& node, int property, double value);
    void set(Element& element, int property, double value);
    /// Puts back what was there. Never throws.
    void undo();

private:
    struct Change {
        Node* node;        // one of the two is null
        Element* element;  // likewise
        int property;
        Properties::Former former;
    };

    void keepIndexOf(Circuit& circuit);

    Circuit* m_circuit = nullptr;         // null before the first change
    std::optional<CircuitIndex> m_index;  // of the circuit, before the first change
    std::vector<Change> m_changes;
};

// The passes work on identifiers only. Each returns whether it changed anything, changes nothing when called
// again, and leaves a sound circuit as it is. What they write goes through changes.

/// Gives the next free element id to every element whose "element_id" is absent, no positive whole number, or
/// taken by an earlier element.
bool mendElementIds(Circuit& circuit, IdentifierChanges& changes);

/// Gives the next free node id to every node whose "node_id" is absent, no positive whole number, or taken by
/// an earlier node. The ends of elements go on meaning the same node, the first with the id that they name:
/// they are rewritten when that node gets another id. An id that an end names is not free, so no end gains a
/// node.
bool mendNodeIds(Circuit& circuit, IdentifierChanges& changes);

/// Stores the ends of elements as the whole numbers that they are read as, so that the text a host lists and
/// the node that the element joins agree.
bool truncateEndIds(Circuit& circuit, IdentifierChanges& changes);

/// Would clear ends that name no node; changes nothing, since a host may add that node later and a solve
/// reports it.
bool mendUnknownEnds(Circuit& circuit, IdentifierChanges& changes);

/// Would part the ends of an element that name the same node; changes nothing, since nothing tells which end
/// is wrong.
bool mendEqualEnds(Circuit& circuit, IdentifierChanges& changes);

/// Runs the passes in this order, and truncateEndIds once more when one of the last two, which write ends,
/// changed anything.
void tidy(Circuit& circuit, IdentifierChanges& changes);

}  // namespace Velcor::Tavell
