// result_mapping.h: from the solver's records to the result sets of a circuit.
#pragma once

#include <map>

#include "ResultsSet.h"
#include "lcn/records.h"

namespace Velcor::Tavell
{

/// The result sets by key (TavellResultKey) of solved records whose pressures are static again. Ids are the
/// host's, in solver order.
std::map<int, ResultsSet> mapResults(const lcn::NodeArray& nodes, const lcn::ElementArray& elements,
                                     const lcnNET_var& var);

/// Gathers one value per node from its id and value lists. Throws std::runtime_error("Sizes don't match in
/// NodeResults::Set") when their lengths differ and std::length_error("list too long") beyond the longest
/// list.
ResultsSet gatherNodeResults(std::vector<int> ids, std::vector<double> values);

}  // namespace Velcor::Tavell
