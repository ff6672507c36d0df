#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "network_for_tests.h"
#include "result_tables.h"

namespace kit
{

namespace
{

/// A solution of round numbers, made by hand: only its printing is of interest.
struct Example {
    Network network;
    Solution solution;
    Certificate certificate;

    Example()
    {
        TestNetwork made;
        made.node("Zulauf \xC3\xBC", {0.0, 0.0, 2.0}, pressureAt(3e5));
        made.node("b, \"tap\"", {10.0, 0.0, 0.0}, outflow(0.5));
        made.pipe("pipe", "Zulauf \xC3\xBC", "b, \"tap\"", 0.05, 0.0);
        made.pipe("spare", "Zulauf \xC3\xBC", "b, \"tap\"", 0.05, 0.0).isClosed = true;
        network = made.network();
        solution.outcome = Outcome::converged;
        solution.iterations = 7;
        solution.fluid.density = 1000.0;
        solution.pressure = {300000.0, 250000.0};
        solution.head = {32.5, 25.5};
        solution.nodeTemperature = {293.15, 293.15};
        solution.externalMassFlow = {0.5, -0.5};
        solution.massFlow = {0.5, 0.0};
        solution.volumeFlow = {0.0005, 0.0};
        solution.velocity = {0.25, 0.0};
        solution.reynolds = {12500.0, 0.0};
        solution.pressureDifference = {-50000.0, -50000.0};
        solution.elementTemperature = {293.15, std::numeric_limits<double>::quiet_NaN()};
        certificate.isGood = true;
        certificate.elementsChecked = 1;
        certificate.modelHash = "abc";
        certificate.version = "1.2.3";
    }

    std::string text(TableFormat format, const UnitSet& units = {}) const
    {
        return resultTables(network, solution, certificate, format, units);
    }
};

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace

TEST(ResultTables, text_is_aligned_by_characters_with_units_in_the_header)
{
    const UnitSet units{{Quantity::pressure, "bar"}, {Quantity::volumeFlow, "l/min"}};
    const auto lines = linesOf(Example().text(TableFormat::text, units));
    ASSERT_EQ(lines.size(), 10U);
    EXPECT_EQ(lines[0], "node      height [m]  pressure [bar]  head [m]  external flow [kg/s]");
    EXPECT_EQ(lines[1], "Zulauf \xC3\xBC      2.0000          3.0000    32.500               0.50000");
    EXPECT_EQ(lines[2], "b, \"tap\"      0.0000          2.5000    25.500              -0.50000");
    EXPECT_EQ(lines[3], "");
    EXPECT_EQ(lines[4],
              "element  type  from      to        flow [kg/s]  flow [l/min]  velocity [m/s]  Re [-]  "
              "pressure difference [bar]");
    EXPECT_EQ(
        lines[5],
        "pipe     pipe  Zulauf \xC3\xBC  b, \"tap\"      0.50000        30.000         0.25000   12500  "
        "                 -0.50000");
    EXPECT_EQ(
        lines[6],
        "spare    pipe  Zulauf \xC3\xBC  b, \"tap\"       closed             -               -       -  "
        "                 -0.50000");
    EXPECT_EQ(lines[8].rfind("Certificate: good", 0), 0U);
    EXPECT_EQ(lines[9], "1 element checked; model abc, version 1.2.3");
}

TEST(ResultTables, csv_quotes_names_and_leaves_what_is_no_number_empty)
{
    Example example;
    example.solution.hasTemperatures = true;
    const auto lines = linesOf(example.text(TableFormat::csv, {{Quantity::temperature, "degC"}}));
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[0],
              "element,type,from,to,state,mass_flow [kg/s],volume_flow [m3/s],velocity [m/s],reynolds,"
              "pressure_difference [Pa],temperature [degC]");
    EXPECT_EQ(lines[1], "pipe,pipe,Zulauf \xC3\xBC,\"b, \"\"tap\"\"\",open,0.5,0.0005,0.25,12500,-50000,20");
    EXPECT_EQ(lines[2], "spare,pipe,Zulauf \xC3\xBC,\"b, \"\"tap\"\"\",closed,0,0,0,0,-50000,");
    EXPECT_EQ(lines[3], "");
    EXPECT_EQ(lines[4],
              "node,height [m],pressure [Pa],head [m],temperature [degC],external_mass_flow [kg/s]");
    EXPECT_EQ(lines[5], "Zulauf \xC3\xBC,2,300000,32.5,20,0.5");
}

TEST(ResultTables, json_holds_values_with_their_units)
{
    const auto json = nlohmann::json::parse(Example().text(TableFormat::json, {{Quantity::pressure, "kPa"}}));
    EXPECT_EQ(json["outcome"], "converged");
    EXPECT_EQ(json["iterations"], 7);
    EXPECT_EQ(json["units"]["pressure"], "kPa");
    EXPECT_EQ(json["nodes"][0]["pressure"], 300.0);
    EXPECT_EQ(json["nodes"][0]["head"], 32.5);
    EXPECT_EQ(json["elements"][1]["closed"], true);
    EXPECT_EQ(json["elements"][0]["mass_flow"], 0.5);
    EXPECT_EQ(json["certificate"]["is_good"], true);
    EXPECT_EQ(json["findings"].size(), 0U);
}

TEST(ResultTables, without_results_there_are_no_tables)
{
    Example example;
    example.solution = Solution();
    EXPECT_EQ(example.text(TableFormat::text), "There are no results.\n");
    EXPECT_EQ(example.text(TableFormat::csv), "");
    const auto json = nlohmann::json::parse(example.text(TableFormat::json));
    EXPECT_EQ(json["outcome"], "not_converged");
    EXPECT_FALSE(json.contains("nodes"));
}

}  // namespace kit
