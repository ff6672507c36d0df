// tidying.h: what ICircuit::Validate mends before it answers.
#pragma once

namespace Velcor::Tavell
{

class Circuit;

// The passes work on identifiers only. Each returns whether it changed anything, changes nothing when called again, and
// leaves a sound circuit as it is.

/// Gives the next free element id to every element whose "element_id" is absent, no positive whole number, or taken by
/// an earlier element.
bool mendElementIds(Circuit& circuit);

/// Gives the next free node id to every node whose "node_id" is absent, no positive whole number, or taken by an
/// earlier node. The ends of elements go on meaning the same node, the first with the id that they name: they are
/// rewritten when that node gets another id. An id that an end names is not free, so no end gains a node.
bool mendNodeIds(Circuit& circuit);

/// Stores the ends of elements as the whole numbers that they are read as, so that the text a host lists and the node
/// that the element joins agree.
bool truncateEndIds(Circuit& circuit);

/// Would clear ends that name no node; changes nothing, since a host may add that node later and a solve reports it.
bool mendUnknownEnds(Circuit& circuit);

/// Would part the ends of an element that name the same node; changes nothing, since nothing tells which end is wrong.
bool mendEqualEnds(Circuit& circuit);

/// Runs the passes in this order, and truncateEndIds once more when one of the last two, which write ends, changed
/// anything.
void tidy(Circuit& circuit);

}  // namespace Velcor::Tavell
