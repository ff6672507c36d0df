#include "csv_pair.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <unordered_set>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <tavell/Constants.h>

#include "catalogue.h"
#include "csv_table.h"
#include "element_kinds.h"
#include "file_text.h"
#include "network_file.h"
#include "network_keys.h"
#include "network_writer.h"
#include "number_text.h"
#include "object_reader.h"
#include "units.h"

namespace kit
{

namespace
{

using nlohmann::json;

/// How a field stands for a value of the network file.
enum class Form {
    text,
    number,
    flag,      // "yes", "no"
    curve,     // "0:3e5; 0.001:2.8e5", or the name of a curve
    fittings,  // "union threaded; 2 * gate valve"
    vertices,  // "0 0 1; 5 0 1"
};

/// A column and the path of its value in the object of a node or an element.
struct Column {
    std::string name;
    Form form;
    Quantity quantity;  // numbers only
    std::vector<std::string> path;
};

using Columns = std::vector<Column>;

/// With these columns instead of x, y and z the coordinates are schematic.
const char* const kDrawing[] = {"drawing_x", "drawing_y", "height"};
const char* const kGeometry[] = {"x", "y", "z"};

/// The type column says whether "boundary" is "inlet" or "outlet".
const char* const kBoundary = "boundary";

Columns makeNodeColumns()
{
    Columns columns{{"name", Form::text, Quantity::none, {"name"}}};
    for (const auto& names : {kGeometry, kDrawing}) {
        for (std::size_t i = 0; i < 3; ++i)
            columns.push_back({names[i], Form::number, Quantity::length, {"at", std::to_string(i)}});
    }
    columns.push_back({"type", Form::text, Quantity::none, {kBoundary, "type"}});
    columns.push_back({"pressure", Form::number, Quantity::pressure, {kBoundary, "pressure"}});
    for (const FlowKey& key : flowKeys())
        columns.push_back({key.key, Form::number, key.rule.quantity, {kBoundary, key.key}});
    columns.push_back({"temperature", Form::number, Quantity::temperature, {kBoundary, "temperature"}});
    columns.push_back({"description", Form::text, Quantity::none, {"description"}});
    return columns;
}

Columns makeElementColumns()
{
    const auto number = [](const char* name, Quantity quantity) {
        return Column{name, Form::number, quantity, {name}};
    };
    const auto other = [](const char* name, Form form) { return Column{name, form, Quantity::none, {name}}; };
    Columns columns{other("name", Form::text),
                    other("type", Form::text),
                    other("from", Form::text),
                    other("to", Form::text),
                    number("diameter", Quantity::diameter),
                    number("wetted_perimeter", Quantity::diameter),
                    number("area", Quantity::area),
                    number("length", Quantity::length),
                    other("material", Form::text)};
    std::unordered_set<std::string> added;
    for (const ElementKind& kind : elementKinds()) {
        for (const NumberKey& key : kind.numbers) {
            if (added.insert(key.key).second) columns.push_back(number(key.key, key.rule.quantity));
        }
    }
    columns.push_back(other("fittings", Form::fittings));
    columns.push_back(other("curve", Form::curve));
    columns.push_back(number("reference_density", Quantity::density));
    for (const HeatKey& key : heatKeys())
        columns.push_back({key.key, Form::number, key.rule.quantity, {"heat", key.key}});
    columns.push_back(other("closed", Form::flag));
    columns.push_back(other("check_valve", Form::flag));
    columns.push_back(other("vertices", Form::vertices));
    columns.push_back(other("description", Form::text));
    return columns;
}

const Columns& nodeColumns()
{
    static const Columns kColumns = makeNodeColumns();
    return kColumns;
}

const Columns& elementColumns()
{
    static const Columns kColumns = makeElementColumns();
    return kColumns;
}

std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t end = 0; end != std::string::npos; start = end + 1) {
        end = text.find(separator, start);
        parts.push_back(trimmed(text.substr(start, end == std::string::npos ? end : end - start)));
    }
    return parts;
}

std::optional<double> plainNumber(std::string text)
{
    if (!text.empty() && text.front() == '+') text.erase(0, 1);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// Whether a text is a number that double precision cannot hold.
bool isBeyondRange(const std::string& text)
{
    double value = 0.0;
    const char* const first = text.data() + (!text.empty() && text.front() == '+' ? 1 : 0);
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(first, last, value);
    return error == std::errc::result_out_of_range && end == last;
}

/// One table of the pair, read into objects of the network file.
class TableReader
{
public:
    TableReader(const CsvTable& table, const std::string& file, const Columns& columns, Findings& findings)
        : m_table(table), m_file(file), m_findings(findings)
    {
        readHeader(columns);
    }

    bool has(const std::string& column) const { return m_seen.count(column) > 0; }

    json objects()
    {
        json list = json::array();
        for (const CsvRow& row : m_table.rows) {
            json object = json::object();
            for (std::size_t i = 0; i < m_columns.size(); ++i) {
                const std::string field = row.fields[i];
                if (m_columns[i].column == nullptr || trimmed(field).empty()) continue;
                set(object, m_columns[i].column->path, valueOf(m_columns[i], field, row.line));
            }
            list.push_back(std::move(object));
        }
        return list;
    }

    std::size_t lineOf(std::size_t row) const { return m_table.rows[row].line; }

    void report(Code code, std::size_t line, const std::string& column, std::string message,
                std::string remedy)
    {
        m_findings.add(code, Place{m_file, line, 0, column.empty() ? "" : "column " + column, ""},
                       std::move(message), std::move(remedy));
    }

private:
    struct HeaderField {
        const Column* column = nullptr;
        std::string unit;
    };

    /// Understands "diameter" and "diameter [mm]".
    void readHeader(const Columns& columns)
    {
        const std::size_t line = m_table.header.line;
        std::vector<std::string> names;
        for (const Column& column : columns)
            names.push_back(column.name);
        for (const std::string& field : m_table.header.fields) {
            HeaderField header;
            std::string name = trimmed(field);
            const std::size_t bracket = name.find('[');
            const bool hasUnit = bracket != std::string::npos && name.back() == ']';
            if (hasUnit) {
                header.unit = trimmed(name.substr(bracket + 1, name.size() - bracket - 2));
                name = trimmed(name.substr(0, bracket));
            }
            for (const Column& column : columns) {
                if (column.name == name) header.column = &column;
            }
            if (header.column == nullptr)
                report(Code::csv_columns, line, "", "the column " + inQuotes(name) + " is unknown",
                       suggestion(name, names));
            else if (!m_seen.insert(name).second)
                report(Code::csv_columns, line, name, "the column appears twice", "keep one of them");
            else if (hasUnit && header.unit != "-" &&
                     (header.column->form != Form::number || !isUnitOf(header.unit, header.column->quantity)))
                report(Code::csv_columns, line, name,
                       "the unit " + inQuotes(header.unit) + " is unknown here", unitRemedy(*header.column));
            m_columns.push_back(std::move(header));
        }
    }

    static std::string unitRemedy(const Column& column)
    {
        if (column.form != Form::number || column.quantity == Quantity::none) return "leave the unit out";
        std::string remedy = "use one of";
        for (const std::string& unit : unitsOf(column.quantity))
            remedy += ' ' + inQuotes(unit);
        return remedy;
    }

    static void set(json& object, const std::vector<std::string>& path, json value)
    {
        json* at = &object;
        for (std::size_t i = 0; i + 1 < path.size(); ++i)
            at = &(*at)[path[i]];
        (*at)[path.back()] = std::move(value);
    }

    json valueOf(const HeaderField& header, const std::string& field, std::size_t line)
    {
        switch (header.column->form) {
        case Form::text:
            return field;
        case Form::number:
            return numberOf(header, trimmed(field), line);
        case Form::flag:
            return flagOf(header, trimmed(field), line);
        case Form::curve:
            return curveOf(header, field, line);
        case Form::fittings:
            return fittingsOf(field);
        case Form::vertices:
            return verticesOf(header, field, line);
        }
        return nullptr;
    }

    /// A number, or a text with the unit of its column; a text with its own unit is left to the reader of the
    /// network.
    json numberOf(const HeaderField& header, const std::string& field, std::size_t line)
    {
        const bool isSi =
            header.unit.empty() || header.unit == "-" || header.unit == siUnit(header.column->quantity);
        if (const auto value = plainNumber(field))
            return isSi ? json(*value) : json(exactNumber(*value) + ' ' + header.unit);
        if (isBeyondRange(field)) {
            report(Code::csv_value, line, header.column->name,
                   inQuotes(field) + " is too large or too small to be stored",
                   "give a number between 1e-300 and 1e300");
            return 1.0;
        }
        std::string withPoint = field;
        const std::size_t comma = withPoint.find(',');
        if (comma != std::string::npos) withPoint[comma] = '.';
        if (comma != std::string::npos && plainNumber(withPoint)) {
            report(Code::csv_value, line, header.column->name, inQuotes(field) + " has a decimal comma",
                   "write " + withPoint);
            return 1.0;
        }
        return field;
    }

    json flagOf(const HeaderField& header, const std::string& field, std::size_t line)
    {
        if (field == "yes" || field == "true" || field == "TRUE" || field == "1") return true;
        if (field == "no" || field == "false" || field == "FALSE" || field == "0") return false;
        report(Code::csv_value, line, header.column->name, inQuotes(field) + " is neither yes nor no",
               "write yes or no");
        return false;
    }

    json curveOf(const HeaderField& header, const std::string& field, std::size_t line)
    {
        json points = json::array();
        for (const std::string& part : split(field, ';')) {
            const auto pair = split(part, ':');
            const auto flow = plainNumber(pair.front());
            const auto pressure = pair.size() == 2 ? plainNumber(pair.back()) : std::nullopt;
            if (flow && pressure) {
                points.push_back(json::array({*flow, *pressure}));
                continue;
            }
            report(Code::csv_value, line, header.column->name, inQuotes(part) + " is no point of a curve",
                   "write the points as \"flow:pressure; flow:pressure\" in m3/s and Pa");
            break;
        }
        return points;
    }

    /// "2 * gate valve" is two of them.
    static json fittingsOf(const std::string& field)
    {
        json fittings = json::array();
        for (const std::string& part : split(field, ';')) {
            const std::size_t star = part.find('*');
            const auto count =
                star == std::string::npos ? std::nullopt : plainNumber(trimmed(part.substr(0, star)));
            if (count)
                fittings.push_back({{"fitting", trimmed(part.substr(star + 1))}, {"count", *count}});
            else
                fittings.push_back(part);
        }
        return fittings;
    }

    json verticesOf(const HeaderField& header, const std::string& field, std::size_t line)
    {
        json vertices = json::array();
        for (const std::string& part : split(field, ';')) {
            json vertex = json::array();
            for (const std::string& word : split(part, ' ')) {
                if (word.empty()) continue;
                if (const auto number = plainNumber(word)) {
                    vertex.push_back(*number);
                    continue;
                }
                report(Code::csv_value, line, header.column->name, inQuotes(word) + " is no coordinate",
                       "write the vertices as \"x y z; x y z\" in m");
                return json::array();
            }
            vertices.push_back(std::move(vertex));
        }
        return vertices;
    }

    const CsvTable& m_table;
    const std::string& m_file;
    Findings& m_findings;
    std::vector<HeaderField> m_columns;  // by field
    std::unordered_set<std::string> m_seen;
};

/// Gives the boundary of each node the name of its type, and refuses values without a type.
void nameBoundaries(json& nodes, TableReader& table)
{
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        json& node = nodes[i];
        const auto found = node.find(kBoundary);
        if (found == node.end()) continue;
        json boundary = std::move(*found);
        node.erase(kBoundary);
        const std::string type = boundary.value("type", "");
        boundary.erase("type");
        if (type == "inlet" || type == "outlet")
            node[type] = std::move(boundary);
        else
            table.report(Code::csv_value, table.lineOf(i), "type",
                         type.empty() ? "the node has values of an inlet or outlet but no type"
                                      : inQuotes(type) + " is no type of node",
                         "write inlet or outlet, or leave the fields empty");
    }
}

/// Makes three coordinates of those given; a missing one is 0.
void fillCoordinates(json& nodes)
{
    for (json& node : nodes) {
        json at = json::array({0.0, 0.0, 0.0});
        const auto found = node.find("at");
        if (found != node.end()) {
            for (std::size_t i = 0; i < at.size(); ++i)
                at[i] = found->value(std::to_string(i), json(0.0));
        }
        node["at"] = std::move(at);
    }
}

/// The column of a JSON pointer into a row: "diameter" of "/elements/3/diameter", "y" of "/nodes/0/at/1".
std::string columnOf(const std::vector<std::string>& keys, bool isSchematic)
{
    if (keys.size() < 3) return "";
    if (keys[2] == "at") {
        const std::size_t axis = keys.size() > 3 && keys[3].size() == 1 ? std::size_t(keys[3][0] - '0') : 0;
        return axis < 3 ? (isSchematic ? kDrawing : kGeometry)[axis] : "";
    }
    const bool isNested = keys[2] == "inlet" || keys[2] == "outlet" || keys[2] == "heat";
    return isNested && keys.size() > 3 ? keys[3] : keys[2];
}

/// Moves findings about the document to the lines and columns of the tables.
class FindingMover
{
public:
    FindingMover(const TableReader& nodes, const std::string& nodesFile, const TableReader& elements,
                 const std::string& elementsFile, bool isSchematic)
        : m_nodes(nodes), m_nodesFile(nodesFile), m_elements(elements), m_elementsFile(elementsFile),
          m_isSchematic(isSchematic)
    {
    }

    Finding moved(Finding finding) const
    {
        const auto keys = split(finding.place.pointer, '/');
        const bool isNode = keys.size() > 1 && keys[1] == "nodes";
        const bool isElement = keys.size() > 1 && keys[1] == "elements";
        if (!isNode && !isElement) return finding;
        const TableReader& table = isNode ? m_nodes : m_elements;
        finding.place.file = isNode ? m_nodesFile : m_elementsFile;
        if (keys.size() > 2) finding.place.line = table.lineOf(std::stoul(keys[2]));
        const std::vector<std::string> inRow(keys.begin() + 1, keys.end());
        const std::string column = columnOf(inRow, m_isSchematic);
        finding.place.pointer = column.empty() ? "" : "column " + column;
        return finding;
    }

private:
    const TableReader& m_nodes;
    const std::string& m_nodesFile;
    const TableReader& m_elements;
    const std::string& m_elementsFile;
    bool m_isSchematic;
};

/// Text of a JSON value of the network file as a field.
std::string fieldOf(const nlohmann::ordered_json& value, Form form)
{
    std::string field;
    const auto append = [&field](const std::string& part, const char* separator) {
        if (!field.empty()) field += separator;
        field += part;
    };
    switch (form) {
    case Form::text:
        return value.get<std::string>();
    case Form::number:
        return exactNumber(value.get<double>());
    case Form::flag:
        return value.get<bool>() ? "yes" : "no";
    case Form::curve:
        for (const auto& point : value)
            append(exactNumber(point[0].get<double>()) + ':' + exactNumber(point[1].get<double>()), "; ");
        return field;
    case Form::fittings:
        for (const auto& use : value) {
            if (use.is_string())
                append(use.get<std::string>(), "; ");
            else
                append(std::to_string(use["count"].get<int>()) + " * " + use["fitting"].get<std::string>(),
                       "; ");
        }
        return field;
    case Form::vertices:
        for (const auto& vertex : value)
            append(exactNumber(vertex[0].get<double>()) + ' ' + exactNumber(vertex[1].get<double>()) + ' ' +
                       exactNumber(vertex[2].get<double>()),
                   "; ");
        return field;
    }
    return field;
}

/// The value at a path; null when there is none.
const nlohmann::ordered_json* findAt(const nlohmann::ordered_json& object,
                                     const std::vector<std::string>& path)
{
    const nlohmann::ordered_json* at = &object;
    for (const std::string& key : path) {
        if (at->is_array()) {
            at = &(*at)[static_cast<std::size_t>(key[0] - '0')];
            continue;
        }
        const auto found = at->find(key);
        if (found == at->end()) return nullptr;
        at = &*found;
    }
    return at;
}

/// A table with a header and a line for each item, with the columns that some item needs.
template <class Items, class MakeObject>
std::string tableText(const Columns& columns, const Items& items, MakeObject makeObject)
{
    std::vector<bool> isUsed(columns.size(), false);
    for (const auto& item : items) {
        const nlohmann::ordered_json object = makeObject(item);
        for (std::size_t i = 0; i < columns.size(); ++i)
            isUsed[i] = isUsed[i] || findAt(object, columns[i].path) != nullptr;
    }
    std::vector<std::string> fields;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!isUsed[i]) continue;
        const std::string unit =
            columns[i].form == Form::number ? std::string(siUnit(columns[i].quantity)) : "";
        fields.push_back(unit.empty() ? columns[i].name : columns[i].name + " [" + unit + ']');
    }
    std::string text = csvLine(fields);
    for (const auto& item : items) {
        const nlohmann::ordered_json object = makeObject(item);
        fields.clear();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (!isUsed[i]) continue;
            const auto* value = findAt(object, columns[i].path);
            fields.push_back(value == nullptr ? "" : fieldOf(*value, columns[i].form));
        }
        text += csvLine(fields);
    }
    return text;
}

/// An element with the values of the network's own materials, fittings and curves instead of their names.
Element withOwnValues(const Network& network, Element element)
{
    if (network.materials.count(element.material) > 0) {
        const bool isRoughness = element.kind->material == MaterialUse::roughness;
        const auto value = isRoughness ? roughnessOf(network, element) : hazenWilliamsOf(network, element);
        if (value)
            element.setProperty(isRoughness ? int{TAVELL_ELEMENT_ROUGHNESS}
                                            : int{TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT},
                                *value);
        element.material.clear();
    }
    std::vector<FittingUse> known;
    for (FittingUse& use : element.fittings) {
        const auto own = network.fittings.find(use.name);
        if (own == network.fittings.end()) {
            known.push_back(std::move(use));
            continue;
        }
        const double k = element.property(TAVELL_ELEMENT_K_SPECIFIED).value_or(0.0);
        element.setProperty(TAVELL_ELEMENT_K_SPECIFIED, k + use.count * own->second.k);
    }
    element.fittings = std::move(known);
    if (const Curve* curve = findCurve(network, element.curveName)) {
        element.curve = curve->points;
        if (!element.referenceDensity) element.referenceDensity = curve->referenceDensity;
        element.curveName.clear();
    }
    return element;
}

/// Whether a table has a column, whatever its unit.
bool hasColumn(const CsvTable& table, const std::string& name)
{
    return std::any_of(table.header.fields.begin(), table.header.fields.end(), [&](const std::string& field) {
        return trimmed(field.substr(0, field.find('['))) == name;
    });
}

/// Whether the elements, which have ends, stand in the table of nodes.
bool areSwapped(const CsvTable& nodes, const CsvTable& elements)
{
    return hasColumn(nodes, "from") && hasColumn(nodes, "to") && !hasColumn(elements, "from") &&
           !hasColumn(elements, "to");
}

}  // namespace

std::optional<Network> readCsvPair(const std::string& nodesPath, const std::string& elementsPath,
                                   Findings& findings, std::optional<Network>* flawed)
{
    const auto nodes = readTextFile(nodesPath, Encoding::utf8OrLatin1, findings);
    const auto elements = readTextFile(elementsPath, Encoding::utf8OrLatin1, findings);
    if (!nodes || !elements) return std::nullopt;
    return readCsvTexts(*nodes, nodesPath, *elements, elementsPath, findings, flawed);
}

std::optional<Network> readCsvTexts(const std::string& nodes, const std::string& nodesFile,
                                    const std::string& elements, const std::string& elementsFile,
                                    Findings& findings, std::optional<Network>* flawed)
{
    Findings found;
    const auto nodesTable = parseCsv(nodes, nodesFile, found);
    const auto elementsTable = parseCsv(elements, elementsFile, found);
    if (!nodesTable || !elementsTable) {
        findings.append(found);
        return std::nullopt;
    }
    if (areSwapped(*nodesTable, *elementsTable)) {
        found.add(Code::other_kind_of_file, Place{nodesFile, nodesTable->header.line, 0, "", ""},
                  "the table of elements stands in the place of the table of nodes",
                  "name the nodes first: NODES.csv,ELEMENTS.csv");
        findings.append(found);
        return std::nullopt;
    }
    TableReader nodesReader(*nodesTable, nodesFile, nodeColumns(), found);
    TableReader elementsReader(*elementsTable, elementsFile, elementColumns(), found);
    const bool isSchematic = nodesReader.has("height");
    json document{{"tavell", 1}};
    if (isSchematic) document["coordinates"] = "schematic";
    document["nodes"] = nodesReader.objects();
    document["elements"] = elementsReader.objects();
    nameBoundaries(document["nodes"], nodesReader);
    fillCoordinates(document["nodes"]);

    const bool areTablesGood = !found.hasErrors();
    Findings inDocument;
    auto network = readNetworkDocument(document, "", nodesFile, inDocument, areTablesGood ? flawed : nullptr);
    const FindingMover mover(nodesReader, nodesFile, elementsReader, elementsFile, isSchematic);
    for (const Finding& finding : inDocument.list())
        found.add(mover.moved(finding));
    findings.append(found);
    const auto setLines = [&](std::optional<Network>& read) {
        for (std::size_t i = 0; read && i < read->nodes.size(); ++i)
            read->nodes[i].line = nodesReader.lineOf(i);
        for (std::size_t i = 0; read && i < read->elements.size(); ++i)
            read->elements[i].line = elementsReader.lineOf(i);
    };
    if (flawed != nullptr) setLines(*flawed);
    if (!network || found.hasErrors()) return std::nullopt;
    setLines(network);
    return network;
}

std::string nodesCsv(const Network& network)
{
    Columns columns;
    const bool isSchematic = network.coordinates == Coordinates::schematic;
    const auto& others = isSchematic ? kGeometry : kDrawing;
    for (const Column& column : nodeColumns()) {
        if (column.name != others[0] && column.name != others[1] && column.name != others[2])
            columns.push_back(column);
    }
    return tableText(columns, network.nodes, [](const Node& node) {
        nlohmann::ordered_json object = nodeObject(node);
        for (const char* type : {"inlet", "outlet"}) {
            if (!object.contains(type)) continue;
            nlohmann::ordered_json boundary = object[type];
            boundary["type"] = type;
            object[kBoundary] = std::move(boundary);
        }
        return object;
    });
}

std::string elementsCsv(const Network& network)
{
    return tableText(elementColumns(), network.elements, [&network](const Element& element) {
        return elementObject(network, withOwnValues(network, element));
    });
}

void reportCsvLosses(const Network& network, Findings& findings)
{
    const auto report = [&](bool isLost, const char* pointer, const char* what) {
        if (isLost)
            findings.add(Code::csv_cannot_hold, Place{network.file, 0, 0, pointer, ""},
                         std::string("the tables do not hold ") + what);
    };
    report(!network.title.empty() || !network.source.empty(), "/title", "the title and the source");
    report(network.answer.has_value(), "/answer", "the expected answer");
    report(!fluidObject(network.fluid).empty(), "/fluid", "the fluid");
    report(network.gravity != Network().gravity, "/gravity", "the direction of gravity");
    report(!settingsObject(network.settings).empty(), "/settings", "the settings");
    report(!network.resultUnits.empty(), "/result_units", "the units of results");
    report(!network.materials.empty(), "/materials", "the materials, only their values at each element");
    report(!network.fittings.empty(), "/fittings", "the fittings, only their K at each element");
    report(!network.curves.empty(), "/curves", "the curves by name, only their points at each element");
    report(!network.scenarios.empty(), "/scenarios", "the scenarios");
}

}  // namespace kit
