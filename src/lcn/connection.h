// connection.h: which elements meet at which node.
#pragma once

#include "records.h"

namespace lcn
{

/// Resolves every element's StartNode and EndNode to LocalStartNode and LocalEndNode (the first node record
/// with that node_no) and fills every node's no_branches and lists, in element order. Reads ElemTotal,
/// NodeTotal.
/// An end that names no node raises kNodeMissing with that number. Cost: proportional to nodes and elements.
void connect(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

}  // namespace lcn
