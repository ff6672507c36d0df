// junction_losses.h: minor losses that follow from the geometry of a junction.
#pragma once

#include "records.h"

namespace lcn
{

/// Adds to each element's k [-] the losses of the junctions at its two ends, from the areas, directions and flows that
/// meet there. Reads flows, areas, direction vectors; writes k.
/// No junction has a loss yet: k stays as it is.
void addJunctionLosses(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

}  // namespace lcn
