// export_columns.h: the quantities that the exports carry, by node and by element, under the same names in
// every format.
#ifndef TAVELL_KIT_EXPORT_COLUMNS_H
#define TAVELL_KIT_EXPORT_COLUMNS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "network.h"
#include "solution.h"

namespace kit
{

/// One quantity of all nodes or of all elements in SI units, NaN where it has no value. The name ends with
/// the unit in lower case, "/" as "_": "pressure_pa", "mass_flow_kg_s".
struct ExportColumn {
    std::string_view name;
    std::vector<double> values;
};

/// Pressure, head, external mass flow and temperature of the nodes; empty without results. A quantity that no
/// node has is left out.
std::vector<ExportColumn> nodeColumns(const Network& network, const Solution* solution);

/// Length and diameter of the elements and, with results, their flows, velocities, Reynolds numbers, pressure
/// differences and temperatures. A quantity that no element has is left out.
std::vector<ExportColumn> elementColumns(const Network& network, const Solution* solution);

/// "pipe", "pump" ...; "" for an element without a kind.
std::string_view kindName(const Element& element);

/// "inlet", "outlet" or "".
std::string_view boundaryName(const Node& node);

}  // namespace kit

#endif
