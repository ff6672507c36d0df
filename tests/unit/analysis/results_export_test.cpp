// results_export_test.cpp: the export text.
#include "analysis/results_export.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

#include "circuits.h"

using namespace AnalysisTest;

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// What an output stream of the "C" locale writes.
std::string streamed(double value, int digits)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(digits);
    stream << value;
    return stream.str();
}

/// Numbers with a comma for the point and groups of three, as some hosts set them globally.
class CommaNumbers : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// The results of two elements (ids 10 and 20) and two nodes (ids 1000 and 2): key k holds k + 0.25 and -(k + 0.5).
std::map<int, ResultsSet> twoRowsPerTable()
{
    std::map<int, ResultsSet> results;
    for (int key = 0; key <= 8; ++key) {
        const bool nodal = key >= 6;
        results.emplace(key,
                        ResultsSet(nodal, {nodal ? 1000 : 10, nodal ? 2 : 20}, {key + 0.25, -(key + 0.5)}));
    }
    return results;
}

/// The options of a host that titles every column.
void setLabels(IResultsExporterOptions& options)
{
    options.SetElementLabel("Element");
    options.SetNodeLabel("Node");
    options.SetResultLabel(0, "Re");
    options.SetResultLabel(1, "v");
    options.SetResultLabel(2, "Q");
    options.SetResultLabel(3, "m");
    options.SetResultLabel(6, "T");
    options.SetResultLabel(7, "p");
}

/// Gives a circuit the results of a solve.
void setResults(Circuit& circuit, std::map<int, ResultsSet> results)
{
    circuit.results() = std::move(results);
    circuit.setHasResults(true);
}

class ExportResults : public ::testing::Test
{
protected:
    ObjectRegistry registry;
    Circuit circuit{registry};
};

}  // namespace

TEST(ExportedNumber, has_at_most_the_given_significant_digits)
{
    EXPECT_EQ(exportedNumber(101325.0, 3), "1.01e+05");
    EXPECT_EQ(exportedNumber(101325.0, 6), "101325");
    EXPECT_EQ(exportedNumber(0.1, 17), "0.10000000000000001");
    EXPECT_EQ(exportedNumber(0.5, 17), "0.5");
    EXPECT_EQ(exportedNumber(0.0, 17), "0");
    EXPECT_EQ(exportedNumber(-0.0, 17), "-0");
}

TEST(ExportedNumber, is_what_an_output_stream_writes)
{
    // The extremes of the notation: both sides of 1e-4 and of 10^digits, the longest numbers, the largest and smallest.
    const double values[] = {0.0,          -0.0,
                             1.0,          -1.5,
                             0.1,          1e-4,
                             9.9999e-5,    0.00012345678,
                             1e5,          999999.5,
                             1e6,          123456789.0,
                             1e15,         1e16,
                             1e17,         1.0 / 3.0,
                             2.0 / 3,      1e22,
                             1e23,         1e100,
                             -1e-100,      DBL_MAX,
                             -DBL_MAX,     DBL_MIN,
                             DBL_TRUE_MIN, DBL_MIN - DBL_TRUE_MIN,
                             4.9e-300,     0.00010000000000000002};
    const int digits[] = {
        -2147483647 - 1, -1, 0, 1, 2, 3, 5, 6, 7, 15, 16, 17, 18, 20, 50, 309, 310, 766, 767, 768, 5000};
    for (const double value : values)
        for (const int count : digits)
            EXPECT_EQ(exportedNumber(value, count), streamed(value, count)) << value << " with " << count;
}

TEST(ExportedNumber, no_digits_count_as_one_and_a_negative_number_of_digits_as_six)
{
    EXPECT_EQ(exportedNumber(2.75, 0), "3");
    EXPECT_EQ(exportedNumber(1.0 / 3.0, -1), "0.333333");
}

TEST(ExportedNumber, with_very_many_digits_is_exact)
{
    EXPECT_EQ(exportedNumber(0.1, 1000), "0.1000000000000000055511151231257827021181583404541015625");
    EXPECT_EQ(exportedNumber(0.1, std::numeric_limits<int>::max()), exportedNumber(0.1, 1000));
    // The largest subnormal has 767 digits, the most that any double has; then comes "e-308" and the point.
    EXPECT_EQ(exportedNumber(DBL_MIN - DBL_TRUE_MIN, 5000).size(), 767u + 1u + 5u);
    EXPECT_EQ(exportedNumber(DBL_MAX, 5000).size(), 309u);
}

TEST(ExportedNumber, writes_infinities_and_nan_as_a_stream_does)
{
    EXPECT_EQ(exportedNumber(kInfinity, 17), "inf");
    EXPECT_EQ(exportedNumber(-kInfinity, 17), "-inf");
    EXPECT_EQ(exportedNumber(kNan, 17), streamed(kNan, 17));
    EXPECT_EQ(exportedNumber(-kNan, 3), streamed(-kNan, 3));
}

TEST(ExportText, has_an_element_table_and_a_node_table_with_headers)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    setLabels(options);
    EXPECT_EQ(exportText(results, options), "\"Element\",\"Re\",\"v\",\"Q\",\"m\"\n"
                                            "10,0.25,1.25,2.25,3.25\n"
                                            "20,-0.5,-1.5,-2.5,-3.5\n"
                                            "\"Node\",\"p\",\"T\"\n"
                                            "1000,7.25,6.25\n"
                                            "2,-7.5,-6.5\n");
}

TEST(ExportText, empty_labels_leave_their_quotes)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    const std::string text = exportText(results, options);
    EXPECT_EQ(text.substr(0, text.find('\n')), "\"\",\"\",\"\",\"\",\"\"");
    EXPECT_NE(text.find("\n\"\",\"\",\"\"\n"), std::string::npos);
}

TEST(ExportText, labels_are_written_as_they_are)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    options.SetElementLabel("Id, \"unique\"");
    options.SetResultLabel(0, "Re, signed");
    const std::string text = exportText(results, options);
    EXPECT_EQ(text.substr(0, text.find('\n')), "\"Id, \"unique\"\",\"Re, signed\",\"\",\"\",\"\"");
}

TEST(ExportText, a_key_without_a_unit_takes_that_of_the_key_before_it)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    options.SetL10n(1, 2.0, 1.0);
    // The order of keys is 0, 1, 2, 3, 6, 7: only key 0 keeps 1 and 0, temperature and pressure follow mass flow.
    EXPECT_EQ(exportText(results, options), "\"\",\"\",\"\",\"\",\"\"\n"
                                            "10,0.25,3.5,5.5,7.5\n"
                                            "20,-0.5,-2,-4,-6\n"
                                            "\"\",\"\",\"\"\n"
                                            "1000,15.5,13.5\n"
                                            "2,-14,-12\n");
}

TEST(ExportText, temperature_hands_its_unit_on_to_pressure_and_not_the_reverse)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    options.SetL10n(6, 0.001, 0.0);
    EXPECT_NE(exportText(results, options).find("\n1000,0.00725"), std::string::npos);
    ResultsExporterOptions pressureOnly;
    pressureOnly.SetL10n(7, 0.5, 0.0);
    EXPECT_NE(exportText(results, pressureOnly).find("\n1000,3.625,6.25\n"), std::string::npos);
}

TEST(ExportText, units_of_keys_that_are_not_exported_play_no_part)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    const std::string plain = exportText(results, options);
    for (const int key : {4, 5, 8})
        options.SetL10n(key, 9.0, 9.0);
    EXPECT_EQ(exportText(results, options), plain);
}

TEST(ExportText, precision_is_that_of_the_options)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    results.at(7) = ResultsSet(true, {1}, {101325.0});
    results.at(6) = ResultsSet(true, {1}, {293.15});
    ResultsExporterOptions options;
    options.SetPrecision(3);
    EXPECT_NE(exportText(results, options).find("\n1,1.01e+05,293\n"), std::string::npos);
    options.SetPrecision(17);
    EXPECT_NE(exportText(results, options).find("\n1,101325,293.14999999999998\n"), std::string::npos);
}

TEST(ExportText, does_not_depend_on_the_locale_of_the_host)
{
    std::map<int, ResultsSet> results = twoRowsPerTable();
    ResultsExporterOptions options;
    const std::string before = exportText(results, options);
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    const std::string after = exportText(results, options);
    std::locale::global(old);
    EXPECT_EQ(after, before);
    EXPECT_NE(before.find("\n1000,7.25,6.25\n"), std::string::npos);
}

TEST(ExportText, circuits_without_rows_have_headers_only)
{
    std::map<int, ResultsSet> results;
    for (int key = 0; key <= 8; ++key)
        results.emplace(key, ResultsSet(key >= 6));
    ResultsExporterOptions options;
    EXPECT_EQ(exportText(results, options), "\"\",\"\",\"\",\"\",\"\"\n\"\",\"\",\"\"\n");
}

TEST_F(ExportResults, is_empty_before_the_first_results)
{
    EXPECT_STREQ(circuit.ExportResults(), "");
}

TEST_F(ExportResults, uses_the_options_of_the_circuit)
{
    setResults(circuit, twoRowsPerTable());
    setLabels(*circuit.GetResultsExporterOptions());
    circuit.GetResultsExporterOptions()->SetPrecision(1);
    EXPECT_STREQ(circuit.ExportResults(), "\"Element\",\"Re\",\"v\",\"Q\",\"m\"\n"
                                          "10,0.2,1,2,3\n"
                                          "20,-0.5,-2,-2,-4\n"
                                          "\"Node\",\"p\",\"T\"\n"
                                          "1000,7,6\n"
                                          "2,-8,-6\n");
}

TEST_F(ExportResults, without_results_keeps_and_returns_the_previous_text)
{
    setResults(circuit, twoRowsPerTable());
    const std::string text = circuit.ExportResults();
    EXPECT_NE(text, "");
    circuit.CreateNode();
    circuit.GetResultsExporterOptions()->SetPrecision(2);
    EXPECT_EQ(circuit.ExportResults(), text);
}

TEST_F(ExportResults, with_results_replaces_the_previous_text)
{
    setResults(circuit, twoRowsPerTable());
    const std::string first = circuit.ExportResults();
    circuit.GetResultsExporterOptions()->SetNodeLabel("Node");
    EXPECT_NE(circuit.ExportResults(), first);
}
