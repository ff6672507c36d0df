// report.h: the plain-text dump of a network: inputs, boundary conditions, results in SI and US units, raw
// records.
#pragma once

#include <string>

#include "records.h"

namespace lcn
{

/// Writes the report of a network in its present state to fileName, replacing any earlier file: during
/// preparation, at the end of the iteration and after a solve, each time only when Debug is set (the callers
/// look). Nodes and elements come in solver order. Changes no record. Returns 1, or 0 when the file cannot be
/// opened; raises no solver error.
int writeReport(const ElementArray& elements, const NodeArray& nodes, const lcnNET_var& var,
                const std::string& fileName);

}  // namespace lcn
