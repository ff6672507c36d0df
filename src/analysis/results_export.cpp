// results_export.cpp: the export text and ICircuit::ExportResults.
#include "results_export.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "model/Circuit.h"
#include "tavell/Constants.h"

namespace Velcor::Tavell
{

namespace
{

// Digits of the general notation when the wanted number is negative.
constexpr int kDefaultDigits = 6;
// No double has more significant decimal digits than the largest subnormal number.
constexpr int kMaxDigits = 767;
// Room for a sign, a point and an exponent or the zeros of 0.0001 beside the digits.
constexpr std::size_t kMaxNumberLength = kMaxDigits + 16;

/// A column of the text: a result key with its display values.
struct Column {
    int key;               // TavellResultKey
    const double* values;  // in display units, one per row
};

/// Appends the line `"idLabel","label of key","label of key"...`.
void appendHeader(std::string& text, const char* idLabel, const std::vector<Column>& columns,
                  ResultsExporterOptions& options)
{
    text.append("\"").append(idLabel);
    for (const Column& column : columns)
        text.append("\",\"").append(options.GetResultLabel(column.key));
    text.append("\"\n");
}

/// Appends one line per id of the set: the id, then each column's value.
void appendRows(std::string& text, ResultsSet& set, const std::vector<Column>& columns, int digits)
{
    const int* ids = set.GetIds();
    for (std::size_t row = 0; row < set.GetSize(); ++row) {
        text.append(std::to_string(ids[row]));
        for (const Column& column : columns)
            text.append(",").append(exportedNumber(column.values[row], digits));
        text.append("\n");
    }
}

/// Whether every quantity that the text shows is there.
bool hasExportedKeys(const std::map<int, ResultsSet>& results)
{
    const auto exported = {TAVELL_RESULT_REYNOLDS,  TAVELL_RESULT_VELOCITY,         TAVELL_RESULT_VOLUME_FLOW,
                           TAVELL_RESULT_MASS_FLOW, TAVELL_RESULT_NODE_TEMPERATURE, TAVELL_RESULT_PRESSURE};
    return std::all_of(exported.begin(), exported.end(), [&](int key) { return results.count(key) != 0; });
}

}  // namespace

std::string exportedNumber(double value, int digits)
{
    const int precision = digits < 0 ? kDefaultDigits : std::min(digits, kMaxDigits);
    std::array<char, kMaxNumberLength> text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, precision);
    return std::string(text.data(), end.ptr);
}

std::string exportText(std::map<int, ResultsSet>& results, ResultsExporterOptions& options)
{
    // kept: a key without a display unit of its own takes that of the key before it, in the order of the
    // calls below;
    // hosts set all pairs or none, and texts exported with some of them rest on it.
    double scale = 1.0;
    double offset = 0.0;
    const auto column = [&](int key) {
        options.GetL10n(key, scale, offset);
        return Column{key, results.at(key).GetL10NValues(scale, offset)};
    };
    const Column reynolds = column(TAVELL_RESULT_REYNOLDS);
    const Column velocity = column(TAVELL_RESULT_VELOCITY);
    const Column volumeFlow = column(TAVELL_RESULT_VOLUME_FLOW);
    const Column massFlow = column(TAVELL_RESULT_MASS_FLOW);
    const Column temperature = column(TAVELL_RESULT_NODE_TEMPERATURE);
    const Column pressure = column(TAVELL_RESULT_PRESSURE);

    const std::vector<Column> elementColumns = {reynolds, velocity, volumeFlow, massFlow};
    // kept: pressure (key 7) comes before temperature (key 6); hosts read the node table by position.
    const std::vector<Column> nodeColumns = {pressure, temperature};

    std::string text;
    appendHeader(text, options.GetElementLabel(), elementColumns, options);
    appendRows(text, results.at(TAVELL_RESULT_REYNOLDS), elementColumns, options.GetPrecision());
    appendHeader(text, options.GetNodeLabel(), nodeColumns, options);
    appendRows(text, results.at(TAVELL_RESULT_PRESSURE), nodeColumns, options.GetPrecision());
    return text;
}

const char* Circuit::ExportResults()
{
    if (hasResults() && hasExportedKeys(m_results)) m_exportText = exportText(m_results, m_exporterOptions);
    return m_exportText.c_str();
}

}  // namespace Velcor::Tavell
