// results_export.h: the results of a circuit as comma-separated text.
#pragma once

#include <map>
#include <string>

#include "ResultsExporterOptions.h"
#include "ResultsSet.h"

namespace Velcor::Tavell
{

/// A number as exported: general notation with at most this many significant digits, as an output stream of
/// that precision writes it in the "C" locale, whatever the locale of the host. 0 digits count as 1, fewer as
/// 6.
std::string exportedNumber(double value, int digits);

/// The export text: a header line and one line per element, then a header line and one line per node.
/// results, by TavellResultKey, must hold the keys 0, 1, 2, 3, 6 and 7; their display values are computed
/// here.
std::string exportText(std::map<int, ResultsSet>& results, ResultsExporterOptions& options);

}  // namespace Velcor::Tavell
