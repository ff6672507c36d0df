#include "vtu.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "element_kinds.h"
#include "export_columns.h"
#include "xml_text.h"

namespace kit
{
namespace
{

using Point = std::array<double, 3>;

// Cell types of the VTK file formats.
constexpr int kVtkLine = 3;
constexpr int kVtkPolyLine = 4;

constexpr std::size_t kNumbersPerLine = 12;

double distance(const Point& a, const Point& b)
{
    return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
}

/// Where the vertices of an element lie between its start, 0, and its end, 1, by drawn length.
std::vector<double> vertexPositions(const Network& network, const Element& element)
{
    std::vector<double> positions;
    positions.reserve(element.vertices.size());
    double length = 0.0;
    const Point* previous = &network.nodes[element.from].at;
    for (const Point& vertex : element.vertices) {
        length += distance(*previous, vertex);
        positions.push_back(length);
        previous = &vertex;
    }
    length += distance(*previous, network.nodes[element.to].at);
    for (double& position : positions)
        position = length > 0.0 ? position / length : 0.0;
    return positions;
}

/// Appends arrays of the file, a line at a time.
class ArrayText
{
public:
    explicit ArrayText(std::string& out) : m_out(out) {}

    void open(std::string_view type, std::string_view name, int components = 1)
    {
        m_out += "        <DataArray type=\"";
        m_out += type;
        m_out += "\" Name=\"";
        m_out += name;
        m_out += '"';
        if (components > 1) m_out += " NumberOfComponents=\"" + std::to_string(components) + '"';
        m_out += " format=\"ascii\">\n";
        m_onLine = 0;
    }

    void add(double value)
    {
        separate();
        appendNumber(m_out, value);
    }

    void addInteger(std::size_t value)
    {
        separate();
        m_out += std::to_string(value);
    }

    /// A text as the codes of its bytes with a 0 behind them.
    void addText(std::string_view text)
    {
        for (const char c : xmlCharacters(text))
            addInteger(static_cast<unsigned char>(c));
        addInteger(0);
    }

    void close() { m_out += "\n        </DataArray>\n"; }

private:
    void separate()
    {
        if (m_onLine == kNumbersPerLine) m_out += '\n';
        if (m_onLine == kNumbersPerLine) m_onLine = 0;
        if (m_onLine > 0) m_out += ' ';
        ++m_onLine;
    }

    std::string& m_out;
    std::size_t m_onLine = 0;
};

std::size_t vertexCount(const Network& network)
{
    std::size_t count = 0;
    for (const Element& element : network.elements)
        count += element.vertices.size();
    return count;
}

void writePoints(std::string& out, const Network& network)
{
    ArrayText array(out);
    out += "      <Points>\n";
    array.open("Float64", "Points", 3);
    const auto addPoint = [&array](const Point& point) {
        for (const double coordinate : point)
            array.add(coordinate);
    };
    for (const Node& node : network.nodes)
        addPoint(node.at);
    for (const Element& element : network.elements) {
        for (const Point& vertex : element.vertices)
            addPoint(vertex);
    }
    array.close();
    out += "      </Points>\n";
}

/// The points of each line: its start node, its vertices, which follow the nodes in the elements' order, its
/// end node.
void writeConnectivity(ArrayText& array, const Network& network)
{
    std::size_t nextVertex = network.nodes.size();
    array.open("Int64", "connectivity");
    for (const Element& element : network.elements) {
        array.addInteger(element.from);
        for (std::size_t i = 0; i < element.vertices.size(); ++i)
            array.addInteger(nextVertex++);
        array.addInteger(element.to);
    }
    array.close();
}

void writeCells(std::string& out, const Network& network)
{
    ArrayText array(out);
    out += "      <Cells>\n";
    writeConnectivity(array, network);
    std::size_t end = 0;
    array.open("Int64", "offsets");
    for (const Element& element : network.elements) {
        end += element.vertices.size() + 2;
        array.addInteger(end);
    }
    array.close();
    array.open("UInt8", "types");
    for (const Element& element : network.elements)
        array.addInteger(element.vertices.empty() ? kVtkLine : kVtkPolyLine);
    array.close();
    out += "      </Cells>\n";
}

/// A node's quantity and, at vertices, what lies between the values at the element's two nodes.
void writePointColumn(ArrayText& array, const Network& network, const ExportColumn& column)
{
    array.open("Float64", column.name);
    for (const double value : column.values)
        array.add(value);
    for (const Element& element : network.elements) {
        const double from = column.values[element.from];
        const double to = column.values[element.to];
        for (const double position : vertexPositions(network, element))
            array.add(from + position * (to - from));
    }
    array.close();
}

/// External flow belongs to the nodes alone.
void writeNodeColumn(ArrayText& array, const ExportColumn& column, std::size_t vertices)
{
    array.open("Float64", column.name);
    for (const double value : column.values)
        array.add(value);
    for (std::size_t i = 0; i < vertices; ++i)
        array.add(0.0);
    array.close();
}

void writePointData(std::string& out, const Network& network, const Solution* solution)
{
    const std::size_t vertices = vertexCount(network);
    ArrayText array(out);
    out += "      <PointData>\n";
    for (const ExportColumn& column : nodeColumns(network, solution)) {
        if (column.name == "external_mass_flow_kg_s")
            writeNodeColumn(array, column, vertices);
        else
            writePointColumn(array, network, column);
    }
    array.open("UInt8", "is_node");
    for (std::size_t i = 0; i < network.nodes.size() + vertices; ++i)
        array.addInteger(i < network.nodes.size() ? 1 : 0);
    array.close();
    array.open("String", "name");
    for (const Node& node : network.nodes)
        array.addText(node.name);
    for (std::size_t i = 0; i < vertices; ++i)
        array.addText("");
    array.close();
    array.open("String", "boundary");
    for (const Node& node : network.nodes)
        array.addText(boundaryName(node));
    for (std::size_t i = 0; i < vertices; ++i)
        array.addText("");
    array.close();
    out += "      </PointData>\n";
}

void writeCellData(std::string& out, const Network& network, const Solution* solution)
{
    ArrayText array(out);
    out += "      <CellData>\n";
    for (const ExportColumn& column : elementColumns(network, solution)) {
        array.open("Float64", column.name);
        for (const double value : column.values)
            array.add(value);
        array.close();
    }
    array.open("UInt8", "type_number");
    for (const Element& element : network.elements)
        array.addInteger(element.kind ? static_cast<std::size_t>(element.kind->type) : 0);
    array.close();
    array.open("UInt8", "is_closed");
    for (const Element& element : network.elements)
        array.addInteger(element.isClosed ? 1 : 0);
    array.close();
    array.open("String", "name");
    for (const Element& element : network.elements)
        array.addText(element.name);
    array.close();
    array.open("String", "type");
    for (const Element& element : network.elements)
        array.addText(kindName(element));
    array.close();
    out += "      </CellData>\n";
}

}  // namespace

std::string vtuText(const Network& network, const Solution* solution)
{
    const std::size_t points = network.nodes.size() + vertexCount(network);
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\" "
                      "header_type=\"UInt64\">\n"
                      "  <UnstructuredGrid>\n"
                      "    <Piece NumberOfPoints=\"";
    out += std::to_string(points) + "\" NumberOfCells=\"" + std::to_string(network.elements.size()) + "\">\n";
    writePointData(out, network, solution);
    writeCellData(out, network, solution);
    writePoints(out, network);
    writeCells(out, network);
    out += "    </Piece>\n"
           "  </UnstructuredGrid>\n"
           "</VTKFile>\n";
    return out;
}

}  // namespace kit
