#include "junction_losses.h"

namespace lcn
{

void addJunctionLosses(const NodeArray&, const ElementArray&, const lcnNET_var&) {}

}  // namespace lcn
