// golden_test.cpp: the files of whole solves against the expected ones in the folders beside this file. When
// a change of the solver is meant to change them, run this program once with TAVELL_UPDATE_GOLDEN=1 in the
// environment, read the difference and say in the commit why it is right.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "decimal_comma/c_numbers.h"
#include "golden/cases.h"
#include "golden/scratch_directory.h"
#include "support/networks.h"

namespace
{

using GoldenTest::Case;
using GoldenTest::DebugSetting;
using GoldenTest::linesOf;
using GoldenTest::ScratchDirectory;
using support::Built;

const std::set<std::string> kFiles = {"Initial_debug_file.dat", "Results_c.dat", "forcedbc.dat",
                                      "network_results.dat"};

/// A circuit of a case, not solved yet.
std::unique_ptr<Built> build(const Case& golden)
{
    auto built = std::make_unique<Built>(golden.network);
    if (golden.complete != nullptr) golden.complete(*built);
    return built;
}

/// Solves and returns what went to standard output.
std::string solveAndListen(const Case& golden, const Built& built)
{
    testing::internal::CaptureStdout();
    EXPECT_TRUE(built.circuit().Solve(golden.energy, nullptr)) << golden.name << ": " << built.feedback();
    return testing::internal::GetCapturedStdout();
}

std::vector<std::vector<double>> allResults(const Built& built)
{
    std::vector<std::vector<double>> all;
    for (int key = 0; key <= TAVELL_RESULT_EXTERNAL_MASS_FLOW; ++key)
        all.push_back(built.results(key));
    return all;
}

/// A piece of a line: text, or a number with the blanks before it.
struct Field {
    std::string text;
    bool isReal = false;
    double value = 0.0;
    std::size_t decimals = 0;
    char letter = ' ';       // of the exponent
    double lastPlace = 0.0;  // value of one unit of the last digit
};

bool isDigitAt(const std::string& line, std::size_t at)
{
    return at < line.size() && std::isdigit(static_cast<unsigned char>(line[at])) != 0;
}

std::size_t skipDigits(const std::string& line, std::size_t at)
{
    while (isDigitAt(line, at))
        ++at;
    return at;
}

/// The real number at line[at], with a point and perhaps an exponent; empty when there is none.
Field realAt(const std::string& line, std::size_t at)
{
    std::size_t from = at;
    while (from < line.size() && line[from] == ' ')
        ++from;
    std::size_t end = from;
    if (end < line.size() && line[end] == '-') ++end;
    if (!isDigitAt(line, end)) return {};
    end = skipDigits(line, end);
    if (end >= line.size() || line[end] != '.' || !isDigitAt(line, end + 1)) return {};
    Field field;
    field.decimals = skipDigits(line, end + 1) - end - 1;
    end += 1 + field.decimals;
    int exponent = 0;
    if (end + 2 < line.size() && (line[end] == 'e' || line[end] == 'E') && isDigitAt(line, end + 2)) {
        field.letter = line[end];
        exponent = std::atoi(line.c_str() + end + 1);
        end = skipDigits(line, end + 2);
    }
    field.text = line.substr(at, end - at);
    field.isReal = true;
    const DecimalComma::CNumbers numbers;
    field.value = std::strtod(line.c_str() + from, nullptr);
    field.lastPlace = std::pow(10.0, exponent - static_cast<int>(field.decimals));
    return field;
}

std::vector<Field> fieldsOf(const std::string& line)
{
    std::vector<Field> fields(1);
    std::size_t at = 0;
    while (at < line.size()) {
        const bool mayStart = line[at] == ' ' || line[at] == '-' || isDigitAt(line, at);
        Field real = mayStart ? realAt(line, at) : Field{};
        if (!real.isReal) {
            fields.back().text += line[at++];
            continue;
        }
        at += real.text.size();
        fields.push_back(real);
        fields.emplace_back();
    }
    return fields;
}

/// Residuals of a solve, such as the flow of a shut element, are rounding errors; neither digits nor sign
/// mean anything.
constexpr double kNegligible = 1e-9;

bool isSame(const Field& expected, const Field& actual)
{
    if (expected.isReal != actual.isReal) return false;
    if (!expected.isReal) return expected.text == actual.text;
    if (expected.decimals != actual.decimals || expected.letter != actual.letter) return false;
    const double a = expected.value;
    const double b = actual.value;
    if (std::fabs(a) < kNegligible && std::fabs(b) < kNegligible) return true;
    // one unit of the last digit beside the relative tolerance: a rounding error can move that digit
    const double tolerance = 1e-6 * std::fabs(a) + 1.001 * std::max(expected.lastPlace, actual.lastPlace);
    return expected.text.size() == actual.text.size() && std::fabs(a - b) <= tolerance;
}

bool isSame(const std::string& expected, const std::string& actual)
{
    const std::vector<Field> a = fieldsOf(expected);
    const std::vector<Field> b = fieldsOf(actual);
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Field& l, const Field& r) { return isSame(l, r); });
}

/// Numbers of reals within the tolerance, everything else exactly.
void expectSameText(const std::string& expected, const std::string& actual, const std::string& name)
{
    const std::vector<std::string> a = linesOf(expected);
    const std::vector<std::string> b = linesOf(actual);
    ASSERT_EQ(a.size(), b.size()) << name;
    for (std::size_t i = 0; i < a.size(); ++i)
        EXPECT_TRUE(isSame(a[i], b[i]))
            << name << ":" << i + 1 << "\nexpected " << a[i] << "\nbut got  " << b[i];
    EXPECT_EQ(expected.empty() || expected.back() == '\n', actual.empty() || actual.back() == '\n') << name;
}

class Golden : public testing::TestWithParam<Case>
{
};

std::string nameOf(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

}  // namespace

TEST(GoldenComparison, tells_formats_apart_and_forgives_rounding)
{
    EXPECT_TRUE(isSame("| 12.3456| 0.000E+00|", "| 12.3457| 0.000E+00|"));
    EXPECT_TRUE(isSame("x 12345.678 y", "x 12345.690 y"));
    EXPECT_TRUE(isSame(" %  -0.000|", " %   0.000|"));
    EXPECT_TRUE(isSame("1.2345678e-17", "-3.1000000e-12"));
    EXPECT_FALSE(isSame("| 12.3456|", "| 12.3459|"));
    EXPECT_FALSE(isSame("| 12.3456|", "|  12.3456|"));
    EXPECT_FALSE(isSame("| 12.3456|", "| 12.345|"));
    EXPECT_FALSE(isSame(" 17 |", " 18 |"));
    EXPECT_FALSE(isSame("1.5E+01", "1.5e+01"));
    EXPECT_FALSE(isSame("1.0 ", "1.0"));
}

TEST_P(Golden, files_of_a_solve_are_the_expected_ones)
{
    const std::filesystem::path folder = std::filesystem::path(TAVELL_GOLDEN) / GetParam().name;
    const ScratchDirectory scratch;
    const DebugSetting debug("1");
    solveAndListen(GetParam(), *build(GetParam()));
    ASSERT_EQ(scratch.names(), kFiles);

    const char* update = std::getenv("TAVELL_UPDATE_GOLDEN");
    if (update != nullptr && std::string(update) == "1") {
        std::filesystem::create_directories(folder);
        for (const std::string& name : kFiles)
            std::filesystem::copy_file(name, folder / name,
                                       std::filesystem::copy_options::overwrite_existing);
        GTEST_SKIP() << "expected files of " << GetParam().name << " written";
    }
    for (const std::string& name : kFiles)
        expectSameText(GoldenTest::readFile(folder / name), scratch.read(name), GetParam().name + "/" + name);
}

TEST_P(Golden, without_the_switch_a_solve_writes_no_file_and_prints_nothing)
{
    for (const char* setting : {static_cast<const char*>(nullptr), "", "0", "2", "-1", "yes", "10"}) {
        const ScratchDirectory scratch;
        const DebugSetting debug(setting);
        EXPECT_EQ(solveAndListen(GetParam(), *build(GetParam())), "");
        EXPECT_TRUE(scratch.names().empty());
    }
}

TEST_P(Golden, writing_changes_no_result)
{
    const ScratchDirectory scratch;
    const auto silent = build(GetParam());
    const auto loud = build(GetParam());
    {
        const DebugSetting debug(nullptr);
        solveAndListen(GetParam(), *silent);
    }
    const DebugSetting debug("1");
    solveAndListen(GetParam(), *loud);
    EXPECT_EQ(allResults(*loud), allResults(*silent));
    EXPECT_EQ(loud->feedback(), silent->feedback());
}

TEST_P(Golden, files_that_cannot_be_opened_change_no_result)
{
    const ScratchDirectory scratch;
    const auto silent = build(GetParam());
    const auto hindered = build(GetParam());
    {
        const DebugSetting debug(nullptr);
        solveAndListen(GetParam(), *silent);
    }
    // a folder that bears a file's name stands in its way
    for (const std::string& name : kFiles)
        std::filesystem::create_directory(name);
    const DebugSetting debug("1");
    EXPECT_NE(solveAndListen(GetParam(), *hindered), "");
    EXPECT_EQ(allResults(*hindered), allResults(*silent));
    for (const std::string& name : kFiles)
        EXPECT_TRUE(std::filesystem::is_empty(name));
}

TEST_P(Golden, the_trace_has_a_heading_and_a_line_of_fixed_width_for_each_iteration)
{
    const ScratchDirectory scratch;
    const DebugSetting debug("1");
    const std::vector<std::string> lines = linesOf(solveAndListen(GetParam(), *build(GetParam())));
    ASSERT_GE(lines.size(), 5U);
    EXPECT_EQ(lines[0], "");
    EXPECT_EQ(lines[1], "");
    EXPECT_EQ(lines[2], "Circ nIter  massfrac      mass[2]    pp[2]"
                        "       summass    delpreserr   maxmasserr  ip   temperror    it    Minorerr   im");
    for (std::size_t i = 3; i < lines.size(); ++i) {
        // 5 columns of 3 and 8 of 12 characters, a blank between two, two blanks at the end
        EXPECT_EQ(lines[i].size(), 5U * 3 + 8U * 12 + 12 + 2) << lines[i];
        EXPECT_EQ(std::atoi(lines[i].substr(0, 3).c_str()), 0);
        EXPECT_EQ(std::atoi(lines[i].substr(4, 3).c_str()), static_cast<int>(i) - 2);
        EXPECT_EQ(lines[i].substr(21, 12), "  0.0000E+00");
    }
}

INSTANTIATE_TEST_SUITE_P(Circuits, Golden, testing::ValuesIn(GoldenTest::allCases()), nameOf);

namespace
{

bool stopAtOnce()
{
    return true;
}

/// Pressure [Pa] that a report's list of raw node records shows for a solver node.
double rawPressure(const ScratchDirectory& scratch, const std::string& file, int node)
{
    const std::vector<std::string> lines = scratch.lines(file);
    const auto heading = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.rfind("i  node_no  no_branches", 0) == 0;
    });
    std::istringstream row(*(heading + node));
    row.imbue(std::locale::classic());
    double value = 0.0;
    for (int column = 1; column <= 6; ++column)
        row >> value;
    return value;
}

}  // namespace

TEST(DebugFiles, a_solve_that_is_stopped_still_writes_every_file)
{
    const ScratchDirectory scratch;
    const DebugSetting debug("1");
    const auto built = build(GoldenTest::pumpedLoop());
    testing::internal::CaptureStdout();
    EXPECT_FALSE(built->circuit().Solve(false, stopAtOnce));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(scratch.names(), kFiles);
}

TEST(DebugFiles, a_solve_replaces_the_files_of_the_one_before)
{
    const ScratchDirectory scratch;
    const DebugSetting debug("1");
    solveAndListen(GoldenTest::pumpedLoop(), *build(GoldenTest::pumpedLoop()));
    solveAndListen(GoldenTest::innerTarget(), *build(GoldenTest::innerTarget()));
    const std::string second = scratch.read("Results_c.dat");
    const ScratchDirectory fresh;
    solveAndListen(GoldenTest::innerTarget(), *build(GoldenTest::innerTarget()));
    EXPECT_EQ(second, fresh.read("Results_c.dat"));
}

TEST(DebugFiles, pressures_hold_the_hydrostatic_part_until_the_last_file)
{
    const ScratchDirectory scratch;
    const DebugSetting debug("1");
    const Case golden = GoldenTest::pumpedLoop();
    solveAndListen(golden, *build(golden));
    // The tank, node 7, stands 14 m above the well: 200000 Pa + 997.4000244140625 x 9.80665 x 14 m.
    const double hydrostatic = 997.4000244140625 * 9.80665 * 14.0;
    EXPECT_NEAR(rawPressure(scratch, "Initial_debug_file.dat", 7), 200000.0 + hydrostatic, 1e-5);
    EXPECT_NEAR(rawPressure(scratch, "network_results.dat", 7), 200000.0 + hydrostatic, 1e-5);
    EXPECT_NEAR(rawPressure(scratch, "Results_c.dat", 7), 200000.0, 1e-5);
}
