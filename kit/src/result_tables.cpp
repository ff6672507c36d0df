#include "result_tables.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "element_inputs.h"
#include "element_kinds.h"
#include "number_text.h"
#include "result_file.h"

namespace kit
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr int kLargestDigits = 5;        // significant digits of a column's largest value
constexpr int kSmallestDigits = 3;       // and at least this many of its smallest one
constexpr double kSmallestShare = 1e-4;  // values below this share of the largest may lose theirs
constexpr int kMostDecimals = 9;
constexpr std::size_t kTextWidth = 100;  // of titles and texts
constexpr double kFixedBelow = 1e9;      // columns with larger values use exponents
constexpr double kFixedFrom = 1e-5;      // and so do those without a value of at least this
constexpr const char* kNoValue = "-";
constexpr const char* kClosed = "closed";
constexpr const char* kGap = "  ";

/// A column of numbers in display units; what is no number has no value.
struct Column {
    std::string key;    // "mass_flow"
    std::string title;  // of text tables: "mass flow"
    std::string unit;   // "" for none
    std::vector<double> values;
};

/// Texts in front of the numbers: names, types.
struct TextColumn {
    std::string key;
    std::vector<std::string> cells;
};

struct Table {
    std::vector<TextColumn> texts;
    std::vector<Column> columns;
    std::size_t rows = 0;
};

Column makeColumn(std::string key, std::string title, Quantity quantity, const UnitSet& units,
                  std::vector<double> values)
{
    const std::string unit = displayUnit(units, quantity);
    for (double& value : values)
        value = fromSi(value, unit, quantity);
    return {std::move(key), std::move(title), unit, std::move(values)};
}

/// Supplies and demands at boundaries; elsewhere the flow is nothing but a residual.
std::vector<double> externalFlows(const Network& network, const Solution& solution)
{
    std::vector<double> flows = solution.externalMassFlow;
    for (std::size_t i = 0; i < flows.size(); ++i) {
        if (!network.nodes[i].boundary) flows[i] = std::nan("");
    }
    return flows;
}

Table nodeTable(const Network& network, const Solution& solution, const UnitSet& units)
{
    Table table;
    table.rows = network.nodes.size();
    std::vector<std::string> names;
    std::vector<double> heights;
    for (const Node& node : network.nodes) {
        names.push_back(node.name);
        heights.push_back(heightOf(network, node));
    }
    table.texts.push_back({"node", std::move(names)});
    table.columns.push_back(makeColumn("height", "height", Quantity::length, units, std::move(heights)));
    table.columns.push_back(makeColumn("pressure", "pressure", Quantity::pressure, units, solution.pressure));
    if (gravityOf(network) > 0.0)
        table.columns.push_back(makeColumn("head", "head", Quantity::head, units, solution.head));
    if (solution.hasTemperatures)
        table.columns.push_back(
            makeColumn("temperature", "temperature", Quantity::temperature, units, solution.nodeTemperature));
    table.columns.push_back(makeColumn("external_mass_flow", "external flow", Quantity::massFlow, units,
                                       externalFlows(network, solution)));
    return table;
}

Table elementTable(const Network& network, const Solution& solution, const UnitSet& units)
{
    Table table;
    table.rows = network.elements.size();
    std::vector<std::string> names;
    std::vector<std::string> types;
    std::vector<std::string> starts;
    std::vector<std::string> ends;
    for (const Element& element : network.elements) {
        names.push_back(element.name);
        types.emplace_back(element.kind->name);
        starts.push_back(network.nodes[element.from].name);
        ends.push_back(network.nodes[element.to].name);
    }
    table.texts = {{"element", std::move(names)},
                   {"type", std::move(types)},
                   {"from", std::move(starts)},
                   {"to", std::move(ends)}};
    const auto add = [&](const char* key, const char* title, Quantity quantity,
                         const std::vector<double>& values) {
        table.columns.push_back(makeColumn(key, title, quantity, units, values));
    };
    add("mass_flow", "flow", Quantity::massFlow, solution.massFlow);
    add("volume_flow", "flow", Quantity::volumeFlow, solution.volumeFlow);
    add("velocity", "velocity", Quantity::velocity, solution.velocity);
    add("reynolds", "Re", Quantity::none, solution.reynolds);
    add("pressure_difference", "pressure difference", Quantity::pressure, solution.pressureDifference);
    if (solution.hasTemperatures)
        add("temperature", "temperature", Quantity::temperature, solution.elementTemperature);
    return table;
}

/// Width on a terminal: UTF-8 characters, that is bytes but for continuation bytes.
std::size_t shownWidth(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; }));
}

/// Power of ten of a value's first digit.
int decimalExponent(double value)
{
    return value > 0.0 ? static_cast<int>(std::floor(std::log10(value))) : 0;
}

/// Magnitudes between which the values of a column lie, zeros and negligible ones left out.
struct Span {
    double largest = 0.0;
    double smallest = 0.0;
};

Span spanOf(const std::vector<double>& values)
{
    Span span;
    for (const double value : values) {
        if (std::isfinite(value)) span.largest = std::max(span.largest, std::fabs(value));
    }
    span.smallest = span.largest;
    for (const double value : values) {
        if (std::isfinite(value) && std::fabs(value) > kSmallestShare * span.largest)
            span.smallest = std::min(span.smallest, std::fabs(value));
    }
    return span;
}

/// Decimals that show the values of a column, the same for all of them.
int columnDecimals(const Span& span)
{
    const int forLargest = kLargestDigits - 1 - decimalExponent(span.largest);
    const int forSmallest = kSmallestDigits - 1 - decimalExponent(span.smallest);
    return span.largest == 0.0 ? 1 : std::clamp(std::max(forLargest, forSmallest), 0, kMostDecimals);
}

std::vector<std::string> numberCells(const std::vector<double>& values)
{
    const Span span = spanOf(values);
    const bool isFixed = span.largest == 0.0 || (span.largest >= kFixedFrom && span.largest < kFixedBelow);
    const int decimals = columnDecimals(span);
    std::vector<std::string> cells;
    cells.reserve(values.size());
    for (const double value : values) {
        if (!std::isfinite(value))
            cells.emplace_back(kNoValue);
        else
            cells.push_back(isFixed ? fixedNumber(value, decimals) : scientificNumber(value));
    }
    return cells;
}

/// A column as texts, its title first.
struct ShownColumn {
    std::vector<std::string> cells;
    bool isNumeric = false;
    std::size_t width = 0;
};

ShownColumn shown(std::string title, std::vector<std::string> cells, bool isNumeric)
{
    cells.insert(cells.begin(), std::move(title));
    std::size_t width = 0;
    for (const std::string& cell : cells)
        width = std::max(width, shownWidth(cell));
    return {std::move(cells), isNumeric, width};
}

/// Text to the left, numbers to the right, no blanks at line ends.
void appendTable(const std::vector<ShownColumn>& columns, std::string& text)
{
    const std::size_t rows = columns.front().cells.size();
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const ShownColumn& column = columns[i];
            const std::string& cell = column.cells[row];
            const std::size_t padding = column.width - shownWidth(cell);
            if (i > 0) text += kGap;
            if (column.isNumeric) text.append(padding, ' ');
            text += cell;
            if (!column.isNumeric) text.append(padding, ' ');
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
}

std::string titleOf(const Column& column)
{
    const std::string unit = column.unit.empty() ? "-" : column.unit;
    return column.title + " [" + unit + ']';
}

/// The columns of a table as texts; isClosed, when given, says which rows show no flow.
std::vector<ShownColumn> shownColumns(const Table& table, const std::vector<bool>& isClosed)
{
    std::vector<ShownColumn> columns;
    for (const TextColumn& column : table.texts) {
        std::vector<std::string> cells;
        cells.reserve(column.cells.size());
        for (const std::string& cell : column.cells)
            cells.push_back(oneLine(cell));
        columns.push_back(shown(column.key, std::move(cells), false));
    }
    for (const Column& column : table.columns) {
        std::vector<std::string> cells = numberCells(column.values);
        const bool isFirst = column.key == table.columns.front().key;
        const bool keepsValue = column.key == "pressure_difference";
        for (std::size_t row = 0; row < isClosed.size() && !keepsValue; ++row) {
            if (isClosed[row]) cells[row] = isFirst ? kClosed : kNoValue;
        }
        columns.push_back(shown(titleOf(column), std::move(cells), true));
    }
    return columns;
}

/// A heading with its text, broken between words to the width of a terminal.
void appendParagraph(const char* heading, const std::string& paragraph, std::string& text)
{
    if (paragraph.empty()) return;
    const std::string words = heading + oneLine(paragraph);
    std::size_t width = 0;
    std::size_t start = 0;
    while (start < words.size()) {
        const std::size_t end = std::min(words.find(' ', start), words.size());
        const std::string_view word(words.data() + start, end - start);
        const bool isFirst = width == 0;
        if (!isFirst && width + 1 + shownWidth(word) > kTextWidth) {
            text += '\n';
            width = 0;
        } else if (!isFirst) {
            text += ' ';
            ++width;
        }
        text += word;
        width += shownWidth(word);
        start = end + 1;
    }
    text += '\n';
}

std::string textTables(const Network& network, const Solution& solution, const Certificate& certificate,
                       const UnitSet& units)
{
    std::string text;
    appendParagraph("", network.title, text);
    appendParagraph("Source: ", network.source, text);
    if (!text.empty()) text += '\n';
    if (!solution.hasResults()) return text + "There are no results.\n";
    std::vector<bool> isClosed;
    for (const Element& element : network.elements)
        isClosed.push_back(element.isClosed);
    appendTable(shownColumns(nodeTable(network, solution, units), {}), text);
    text += '\n';
    appendTable(shownColumns(elementTable(network, solution, units), isClosed), text);
    text += '\n';
    if (network.answer && !network.answer->text.empty()) {
        appendParagraph("Expected answer: ", network.answer->text, text);
        text += '\n';
    }
    return text + certificateText(certificate);
}

/// A field of RFC 4180: between quotes where it holds a separator.
std::string csvField(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string field = "\"";
    for (const char c : text) {
        field += c;
        if (c == '"') field += c;
    }
    return field + '"';
}

void appendCsv(const Table& table, std::string& text)
{
    std::string line;
    for (const TextColumn& column : table.texts)
        line += column.key + ',';
    for (const Column& column : table.columns)
        line += csvField(column.key + (column.unit.empty() ? "" : " [" + column.unit + ']')) + ',';
    line.back() = '\n';
    text += line;
    for (std::size_t row = 0; row < table.rows; ++row) {
        for (const TextColumn& column : table.texts)
            text += csvField(column.cells[row]) + ',';
        for (const Column& column : table.columns) {
            if (std::isfinite(column.values[row])) text += exactNumber(column.values[row]);
            text += ',';
        }
        text.back() = '\n';
    }
}

std::string csvTables(const Network& network, const Solution& solution, const UnitSet& units)
{
    std::string text;
    if (!solution.hasResults()) return text;
    Table elements = elementTable(network, solution, units);
    std::vector<std::string> states;
    for (const Element& element : network.elements)
        states.emplace_back(element.isClosed ? kClosed : "open");
    elements.texts.push_back({"state", std::move(states)});
    appendCsv(elements, text);
    text += '\n';
    appendCsv(nodeTable(network, solution, units), text);
    return text;
}

Json unitsObject(const Table& nodes, const Table& elements)
{
    Json object = Json::object();
    for (const Table* table : {&nodes, &elements}) {
        for (const Column& column : table->columns)
            object[column.key] = column.unit;
    }
    return object;
}

Json rowObject(const Table& table, std::size_t row)
{
    Json object = Json::object();
    for (const Column& column : table.columns) {
        const double value = column.values[row];
        object[column.key] = std::isfinite(value) ? Json(value) : Json(nullptr);
    }
    return object;
}

/// One object per line.
void appendRows(const char* key, const std::vector<Json>& rows, std::string& text)
{
    text += std::string(",\n  \"") + key + "\": [";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        text += i == 0 ? "\n    " : ",\n    ";
        text += rows[i].dump(-1, ' ', false, Json::error_handler_t::replace);
    }
    text += rows.empty() ? "]" : "\n  ]";
}

/// Every line but the first moved to the right.
std::string indented(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        result += c;
        if (c == '\n') result += "  ";
    }
    return result;
}

std::string jsonTables(const Network& network, const Solution& solution, const Certificate& certificate,
                       const UnitSet& units)
{
    const auto dumped = [](const Json& value) {
        return indented(value.dump(2, ' ', false, Json::error_handler_t::replace));
    };
    std::string text = "{\n  \"title\": " + dumped(Json(network.title));
    text += ",\n  \"outcome\": " + dumped(Json(outcomeName(solution.outcome)));
    text += ",\n  \"iterations\": " + std::to_string(solution.iterations);
    if (solution.hasResults()) {
        const Table nodes = nodeTable(network, solution, units);
        const Table elements = elementTable(network, solution, units);
        text += ",\n  \"fluid\": " + dumped(fluidValuesObject(solution.fluid));
        text += ",\n  \"units\": " + dumped(unitsObject(nodes, elements));
        std::vector<Json> rows;
        for (std::size_t i = 0; i < nodes.rows; ++i) {
            rows.push_back({{"name", network.nodes[i].name}});
            rows.back().update(rowObject(nodes, i));
        }
        appendRows("nodes", rows, text);
        rows.clear();
        for (std::size_t i = 0; i < elements.rows; ++i) {
            const Element& element = network.elements[i];
            rows.push_back({{"name", element.name},
                            {"type", element.kind->name},
                            {"from", network.nodes[element.from].name},
                            {"to", network.nodes[element.to].name},
                            {"closed", element.isClosed}});
            rows.back().update(rowObject(elements, i));
        }
        appendRows("elements", rows, text);
    }
    Json check = certificateObject(certificate);
    check["model_hash"] = certificate.modelHash;
    check["version"] = certificate.version;
    text += ",\n  \"certificate\": " + dumped(check);
    text += ",\n  \"findings\": " + indented(solution.findings.json());
    while (text.back() == '\n' || text.back() == ' ')
        text.pop_back();
    return text + "\n}\n";
}

}  // namespace

std::string resultTables(const Network& network, const Solution& solution, const Certificate& certificate,
                         TableFormat format, const UnitSet& units)
{
    switch (format) {
    case TableFormat::text:
        return textTables(network, solution, certificate, units);
    case TableFormat::csv:
        return csvTables(network, solution, units);
    case TableFormat::json:
        break;
    }
    return jsonTables(network, solution, certificate, units);
}

}  // namespace kit
