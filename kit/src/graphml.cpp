#include "graphml.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "export_columns.h"
#include "xml_text.h"

namespace kit
{
namespace
{

constexpr std::array<const char*, 3> kAxes{"x_m", "y_m", "z_m"};

/// The name of a key in the file: 'n' or 'e' for nodes or edges, then the name of the quantity.
std::string keyId(char owner, std::string_view name)
{
    return std::string(1, owner) + '_' + std::string(name);
}

void declareKey(std::string& out, char owner, std::string_view name, std::string_view type)
{
    out += "  <key id=\"" + keyId(owner, name) + "\" for=\"" + (owner == 'n' ? "node" : "edge") +
           "\" attr.name=\"";
    out += name;
    out += "\" attr.type=\"";
    out += type;
    out += "\"/>\n";
}

void declareKeys(std::string& out, const std::vector<ExportColumn>& ofNodes,
                 const std::vector<ExportColumn>& ofElements)
{
    declareKey(out, 'n', "name", "string");
    declareKey(out, 'n', "boundary", "string");
    for (const char* axis : kAxes)
        declareKey(out, 'n', axis, "double");
    for (const ExportColumn& column : ofNodes)
        declareKey(out, 'n', column.name, "double");
    declareKey(out, 'e', "name", "string");
    declareKey(out, 'e', "type", "string");
    declareKey(out, 'e', "closed", "boolean");
    for (const ExportColumn& column : ofElements)
        declareKey(out, 'e', column.name, "double");
}

/// <data key="n_name">text</data>; the text is escaped already.
void addData(std::string& out, char owner, std::string_view name, std::string_view text)
{
    out += "<data key=\"" + keyId(owner, name) + "\">";
    out += text;
    out += "</data>";
}

void addNumber(std::string& out, char owner, std::string_view name, double value)
{
    if (!std::isfinite(value)) return;
    std::string text;
    appendNumber(text, value);
    addData(out, owner, name, text);
}

void addNode(std::string& out, const Network& network, std::size_t i,
             const std::vector<ExportColumn>& columns)
{
    const Node& node = network.nodes[i];
    out += "    <node id=\"n" + std::to_string(i) + "\">";
    addData(out, 'n', "name", xmlText(node.name));
    if (node.boundary) addData(out, 'n', "boundary", boundaryName(node));
    for (std::size_t axis = 0; axis < kAxes.size(); ++axis)
        addNumber(out, 'n', kAxes[axis], node.at[axis]);
    for (const ExportColumn& column : columns)
        addNumber(out, 'n', column.name, column.values[i]);
    out += "</node>\n";
}

void addEdge(std::string& out, const Network& network, std::size_t i,
             const std::vector<ExportColumn>& columns)
{
    const Element& element = network.elements[i];
    out += "    <edge id=\"e" + std::to_string(i) + "\" source=\"n" + std::to_string(element.from) +
           "\" target=\"n" + std::to_string(element.to) + "\">";
    addData(out, 'e', "name", xmlText(element.name));
    addData(out, 'e', "type", kindName(element));
    if (element.isClosed) addData(out, 'e', "closed", "true");
    for (const ExportColumn& column : columns)
        addNumber(out, 'e', column.name, column.values[i]);
    out += "</edge>\n";
}

}  // namespace

std::string graphmlText(const Network& network, const Solution* solution)
{
    const std::vector<ExportColumn> ofNodes = nodeColumns(network, solution);
    const std::vector<ExportColumn> ofElements = elementColumns(network, solution);
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<graphml xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n";
    declareKeys(out, ofNodes, ofElements);
    out += "  <graph id=\"network\" edgedefault=\"directed\">\n";
    if (!network.title.empty()) out += "    <desc>" + xmlText(network.title) + "</desc>\n";
    for (std::size_t i = 0; i < network.nodes.size(); ++i)
        addNode(out, network, i, ofNodes);
    for (std::size_t i = 0; i < network.elements.size(); ++i)
        addEdge(out, network, i, ofElements);
    out += "  </graph>\n</graphml>\n";
    return out;
}

}  // namespace kit
