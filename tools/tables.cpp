#include "tables.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include <tavell/Constants.h>
#include <tavell/IResultsSet.h>

#include "element_kinds.h"
#include "number_text.h"

namespace
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IResultsSet;

constexpr double kPascalToKilopascal = 1e-3;
constexpr double kPerSecondToPerHour = 3600.0;
constexpr int kLargestDigits = 5;        // significant digits of a column's largest value
constexpr int kSmallestDigits = 3;       // and at least this many of its smallest one
constexpr double kSmallestShare = 1e-4;  // values below this share of the largest may lose theirs
constexpr int kMostDecimals = 9;
constexpr std::size_t kTextWidth = 100;  // of titles and texts
constexpr double kFixedBelow = 1e9;      // columns with larger values use exponents
constexpr double kFixedFrom = 1e-5;      // and so do those without a value of at least this
constexpr const char* kNoValue = "-";
constexpr const char* kGap = "  ";

const int kTableKeys[] = {TAVELL_RESULT_PRESSURE,           TAVELL_RESULT_EXTERNAL_MASS_FLOW,
                          TAVELL_RESULT_MASS_FLOW,          TAVELL_RESULT_VOLUME_FLOW,
                          TAVELL_RESULT_VELOCITY,           TAVELL_RESULT_REYNOLDS,
                          TAVELL_RESULT_PRESSURE_DIFFERENCE};

/// Width on a terminal: UTF-8 characters, that is bytes but for continuation bytes.
std::size_t shownWidth(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; }));
}

struct Column {
    std::string title;
    std::vector<std::string> cells;
    bool isNumeric = false;
};

Column textColumn(std::string title, std::vector<std::string> cells)
{
    return {std::move(title), std::move(cells), false};
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
    for (const double value : values)
        span.largest = std::max(span.largest, std::fabs(value));
    span.smallest = span.largest;
    for (const double value : values) {
        if (std::fabs(value) > kSmallestShare * span.largest)
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

/// A column of numbers; hasValue, when given, says which rows are not empty.
Column numberColumn(std::string title, std::vector<double> values,
                    const std::function<bool(std::size_t)>& hasValue = nullptr)
{
    for (std::size_t i = 0; hasValue && i < values.size(); ++i) {
        if (!hasValue(i)) values[i] = 0.0;
    }
    const Span span = spanOf(values);
    const bool isFixed = span.largest == 0.0 || (span.largest >= kFixedFrom && span.largest < kFixedBelow);
    const int decimals = columnDecimals(span);
    Column column{std::move(title), {}, true};
    column.cells.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (hasValue && !hasValue(i))
            column.cells.emplace_back(kNoValue);
        else
            column.cells.push_back(isFixed ? fixedNumber(values[i], decimals) : scientificNumber(values[i]));
    }
    return column;
}

void appendCell(std::string& line, std::string_view cell, std::size_t width, bool isRight)
{
    const std::string padding(width - shownWidth(cell), ' ');
    if (isRight) line += padding;
    line += cell;
    if (!isRight) line += padding;
}

/// Text to the left, numbers to the right, no blanks at line ends.
void appendTable(std::string& text, const std::vector<Column>& columns)
{
    std::vector<std::size_t> widths;
    for (const Column& column : columns) {
        std::size_t width = shownWidth(column.title);
        for (const std::string& cell : column.cells)
            width = std::max(width, shownWidth(cell));
        widths.push_back(width);
    }
    const std::size_t rows = columns.front().cells.size();
    for (std::size_t row = 0; row <= rows; ++row) {
        std::string line;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (i > 0) line += kGap;
            appendCell(line, row == 0 ? columns[i].title : columns[i].cells[row - 1], widths[i],
                       columns[i].isNumeric);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line;
        text += '\n';
    }
}

std::vector<double> resultValues(ICircuit& circuit, int key, double factor = 1.0)
{
    IResultsSet* results = circuit.GetResults(key);
    const double* values = results->GetL10NValues(factor, 0.0);
    return values == nullptr ? std::vector<double>()
                             : std::vector<double>(values, values + results->GetSize());
}

/// Height above the origin [m], against gravity; z where there is no gravity.
std::vector<double> heights(const Network& network)
{
    const auto& g = network.gravity;
    const double strength = std::hypot(g[0], g[1], g[2]);
    std::vector<double> values;
    values.reserve(network.nodes.size());
    for (const Node& node : network.nodes) {
        const auto& at = node.at;
        values.push_back(strength > 0.0 ? -(at[0] * g[0] + at[1] * g[1] + at[2] * g[2]) / strength : at[2]);
    }
    return values;
}

void appendNodeTable(std::string& text, const Network& network, ICircuit& circuit)
{
    std::vector<std::string> names;
    for (const Node& node : network.nodes)
        names.push_back(node.name);
    const auto isBoundary = [&](std::size_t i) { return network.nodes[i].boundary.has_value(); };
    appendTable(text, {
                          textColumn("node", std::move(names)),
                          numberColumn("height [m]", heights(network)),
                          numberColumn("pressure [kPa]",
                                       resultValues(circuit, TAVELL_RESULT_PRESSURE, kPascalToKilopascal)),
                          numberColumn("external flow [kg/s]",
                                       resultValues(circuit, TAVELL_RESULT_EXTERNAL_MASS_FLOW), isBoundary),
                      });
}

void appendElementTable(std::string& text, const Network& network, ICircuit& circuit)
{
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
    const auto hasVelocity = [&](std::size_t i) { return network.elements[i].kind->reportsVelocity; };
    appendTable(
        text, {
                  textColumn("element", std::move(names)),
                  textColumn("type", std::move(types)),
                  textColumn("from", std::move(starts)),
                  textColumn("to", std::move(ends)),
                  numberColumn("flow [kg/s]", resultValues(circuit, TAVELL_RESULT_MASS_FLOW)),
                  numberColumn("flow [m3/h]",
                               resultValues(circuit, TAVELL_RESULT_VOLUME_FLOW, kPerSecondToPerHour)),
                  numberColumn("velocity [m/s]", resultValues(circuit, TAVELL_RESULT_VELOCITY), hasVelocity),
                  numberColumn("Re [-]", resultValues(circuit, TAVELL_RESULT_REYNOLDS), hasVelocity),
                  numberColumn("pressure difference [kPa]",
                               resultValues(circuit, TAVELL_RESULT_PRESSURE_DIFFERENCE, kPascalToKilopascal)),
              });
}

/// A heading with its text, broken between words to the width of a terminal.
void appendParagraph(std::string& text, const char* heading, const std::string& paragraph)
{
    if (paragraph.empty()) return;
    const std::string words = heading + paragraph;
    std::size_t width = 0;
    std::size_t start = 0;
    while (start < words.size()) {
        const std::size_t end = std::min(words.find(' ', start), words.size());
        const std::string word = words.substr(start, end - start);
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

}  // namespace

bool hasUsableResults(ICircuit& circuit)
{
    for (const int key : kTableKeys) {
        IResultsSet* results = circuit.GetResults(key);
        if (results == nullptr) return false;
        const double* values = results->GetValues();
        if (!std::all_of(values, values + results->GetSize(),
                         [](double value) { return std::isfinite(value); }))
            return false;
    }
    return true;
}

std::string resultTables(const Network& network, ICircuit& circuit)
{
    std::string text;
    appendParagraph(text, "", network.title);
    appendParagraph(text, "Source: ", network.source);
    if (!text.empty()) text += '\n';
    appendNodeTable(text, network, circuit);
    text += '\n';
    appendElementTable(text, network, circuit);
    if (!network.answer.empty()) text += '\n';
    appendParagraph(text, "Expected answer: ", network.answer);
    return text;
}
