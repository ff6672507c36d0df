#include "export_columns.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "element_inputs.h"
#include "element_kinds.h"

namespace kit
{
namespace
{

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

/// Adds a column unless it has no value at all or does not belong to these nodes or elements.
void addColumn(std::vector<ExportColumn>& columns, std::string_view name, std::vector<double> values,
               std::size_t count)
{
    const bool hasValue =
        std::any_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
    if (hasValue && values.size() == count) columns.push_back({name, std::move(values)});
}

std::vector<double> lengths(const Network& network)
{
    std::vector<double> values;
    values.reserve(network.elements.size());
    for (const Element& element : network.elements)
        values.push_back(lengthOf(network, element));
    return values;
}

/// [m], hydraulic diameters; NaN for elements that are given by curves.
std::vector<double> diameters(const Network& network)
{
    std::vector<double> values;
    values.reserve(network.elements.size());
    for (const Element& element : network.elements)
        values.push_back(element.section ? element.section->hydraulicDiameter() : kNoValue);
    return values;
}

}  // namespace

std::vector<ExportColumn> nodeColumns(const Network& network, const Solution* solution)
{
    std::vector<ExportColumn> columns;
    if (!solution || !solution->hasResults()) return columns;

    const std::size_t count = network.nodes.size();
    addColumn(columns, "pressure_pa", solution->pressure, count);
    addColumn(columns, "head_m", solution->head, count);
    addColumn(columns, "external_mass_flow_kg_s", solution->externalMassFlow, count);
    if (solution->hasTemperatures) addColumn(columns, "temperature_k", solution->nodeTemperature, count);
    return columns;
}

std::vector<ExportColumn> elementColumns(const Network& network, const Solution* solution)
{
    std::vector<ExportColumn> columns;
    const std::size_t count = network.elements.size();
    addColumn(columns, "length_m", lengths(network), count);
    addColumn(columns, "diameter_m", diameters(network), count);
    if (!solution || !solution->hasResults()) return columns;

    addColumn(columns, "mass_flow_kg_s", solution->massFlow, count);
    addColumn(columns, "volume_flow_m3_s", solution->volumeFlow, count);
    addColumn(columns, "velocity_m_s", solution->velocity, count);
    addColumn(columns, "reynolds", solution->reynolds, count);
    addColumn(columns, "pressure_difference_pa", solution->pressureDifference, count);
    if (solution->hasTemperatures) addColumn(columns, "temperature_k", solution->elementTemperature, count);
    return columns;
}

std::string_view kindName(const Element& element)
{
    return element.kind ? std::string_view(element.kind->name) : std::string_view();
}

std::string_view boundaryName(const Node& node)
{
    if (!node.boundary) return "";
    return node.boundary->isInlet ? "inlet" : "outlet";
}

}  // namespace kit
