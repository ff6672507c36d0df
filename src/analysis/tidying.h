// tidying.h: what ICircuit::Validate mends before it answers.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Velcor::Tavell
{

class Circuit;
class Entity;

/// Changes of identifiers that can be taken back.
class IdentifierChanges
{
public:
    /// Stores a number under a property of an entity and remembers what was there.
    void set(Entity& entity, int property, double value);
    /// Puts back what was there, the latest change first.
    void undo();

private:
    struct Change {
        Entity* entity;
        int property;
        std::optional<std::string> text;  // none: the property was absent
    };
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
