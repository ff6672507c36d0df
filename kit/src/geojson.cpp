#include "geojson.h"

#include <cstddef>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "export_columns.h"

namespace kit
{
namespace
{

using nlohmann::ordered_json;

/// One line of JSON; bytes that are no UTF-8 become U+FFFD, numbers that are not finite null.
std::string lineOfJson(const ordered_json& value)
{
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

ordered_json feature(ordered_json properties, const char* geometryType, ordered_json coordinates)
{
    return {{"type", "Feature"},
            {"properties", std::move(properties)},
            {"geometry", {{"type", geometryType}, {"coordinates", std::move(coordinates)}}}};
}

/// The member "crs" of the GeoJSON of 2008: coordinates are metres of a plan of its own, no longitudes and
/// latitudes. RFC 7946 has no such member and its readers pass over it; GDAL takes the name as WKT 1.
ordered_json localCoordinates()
{
    return {{"type", "name"}, {"properties", {{"name", "LOCAL_CS[\"network\",UNIT[\"metre\",1]]"}}}};
}

void addColumns(ordered_json& properties, const std::vector<ExportColumn>& columns, std::size_t i)
{
    for (const ExportColumn& column : columns)
        properties[std::string(column.name)] = column.values[i];
}

ordered_json nodeFeature(const Network& network, std::size_t i, const std::vector<ExportColumn>& columns)
{
    const Node& node = network.nodes[i];
    ordered_json properties{{"kind", "node"}, {"name", node.name}, {"boundary", boundaryName(node)}};
    addColumns(properties, columns, i);
    return feature(std::move(properties), "Point", node.at);
}

ordered_json elementFeature(const Network& network, std::size_t i, const std::vector<ExportColumn>& columns)
{
    const Element& element = network.elements[i];
    const Node& from = network.nodes[element.from];
    const Node& to = network.nodes[element.to];
    ordered_json properties{{"kind", "element"}, {"name", element.name}, {"type", kindName(element)},
                            {"from", from.name}, {"to", to.name},        {"closed", element.isClosed}};
    addColumns(properties, columns, i);

    ordered_json line = ordered_json::array();
    line.push_back(from.at);
    for (const auto& vertex : element.vertices)
        line.push_back(vertex);
    line.push_back(to.at);
    return feature(std::move(properties), "LineString", std::move(line));
}

}  // namespace

std::string geojsonText(const Network& network, const Solution* solution)
{
    std::string out = "{\"type\":\"FeatureCollection\",\n\"name\":" + lineOfJson(network.title) +
                      ",\n\"crs\":" + lineOfJson(localCoordinates()) + ",\n\"features\":[\n";
    const std::vector<ExportColumn> ofNodes = nodeColumns(network, solution);
    const std::vector<ExportColumn> ofElements = elementColumns(network, solution);
    const char* separator = "";
    for (std::size_t i = 0; i < network.nodes.size(); ++i) {
        out += separator + lineOfJson(nodeFeature(network, i, ofNodes));
        separator = ",\n";
    }
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        out += separator + lineOfJson(elementFeature(network, i, ofElements));
        separator = ",\n";
    }
    out += "\n]}\n";
    return out;
}

}  // namespace kit
