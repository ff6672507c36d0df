// What the command prints and writes for networks that can be solved, and for those that do not converge.
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "command/base_network.h"
#include "command/run_command.h"
#include "decimal_comma/c_numbers.h"

namespace
{

using command_test::baseNetwork;
using command_test::linesOf;
using command_test::Outcome;
using command_test::runCommand;
using command_test::solveText;
using command_test::TemporaryDirectory;
using command_test::textOf;
using nlohmann::json;

/// Solves a network with pressures printed in kPa.
Outcome solveNetwork(json network)
{
    network["result_units"] = {{"pressure", "kPa"}};
    return solveText(network.dump());
}

std::vector<std::string> wordsOf(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> words;
    std::string word;
    while (stream >> word)
        words.push_back(word);
    return words;
}

/// The cells of the table row that begins with a name; cells must not have blanks.
std::vector<std::string> rowOf(const std::string& output, const std::string& name)
{
    for (const std::string& line : linesOf(output)) {
        std::vector<std::string> words = wordsOf(line);
        if (!words.empty() && words[0] == name) return words;
    }
    return {};
}

/// Columns of the two tables.
constexpr std::size_t kPressure = 2;      // [kPa], of a node
constexpr std::size_t kExternalFlow = 4;  // [kg/s], of a node
constexpr std::size_t kMassFlow = 4;      // [kg/s], of an element
constexpr std::size_t kVelocity = 6;      // [m/s], of an element
constexpr std::size_t kReynolds = 7;      // [-], of an element

double cellOf(const Outcome& outcome, const std::string& name, std::size_t column)
{
    const std::vector<std::string> row = rowOf(outcome.output, name);
    if (row.size() <= column) {
        ADD_FAILURE() << "no cell " << column << " for " << name << " in:\n"
                      << outcome.output << outcome.errors;
        return 0.0;
    }
    const DecimalComma::CNumbers numbers;  // the command writes a point everywhere
    return std::strtod(row[column].c_str(), nullptr);
}

/// The base network without its last pipe: two pipes, A to C.
json networkOfTwoPipes()
{
    json network = baseNetwork();
    network["elements"].erase(2);
    network["nodes"].erase(3);
    network["nodes"][2]["outlet"] = {{"pressure", 100e3}};
    return network;
}

TEST(Solve, two_pipes_in_a_row_are_enough)
{
    const Outcome outcome = solveNetwork(networkOfTwoPipes());
    EXPECT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_NEAR(150.0, cellOf(outcome, "B", kPressure), 0.01);
}

TEST(DetailCheck, makes_two_pipes_too_few_and_says_so)
{
    const Outcome outcome = solveText(networkOfTwoPipes().dump(), "TAVELL_DETAIL_CHECK=1 ");
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("", outcome.output);
    ASSERT_EQ(1U, linesOf(outcome.errors).size()) << outcome.errors;
    EXPECT_NE(std::string::npos, outcome.errors.find("unset TAVELL_DETAIL_CHECK [detail-check-refuses]"));
}

TEST(DetailCheck, is_on_for_the_number_1_alone)
{
    const std::string network = networkOfTwoPipes().dump();
    for (const char* off : {"TAVELL_DETAIL_CHECK= ", "TAVELL_DETAIL_CHECK=0 ", "TAVELL_DETAIL_CHECK=2 ",
                            "TAVELL_DETAIL_CHECK=on "})
        EXPECT_EQ(0, solveText(network, off).status) << off;
    EXPECT_EQ(2, solveText(network, "TAVELL_DETAIL_CHECK=' 1x' ").status);
}

TEST(DetailCheck, lists_what_cannot_be_reached_once)
{
    json network = baseNetwork();
    network["nodes"].push_back({{"name", "E"}, {"at", {0, 5, 0}}});
    network["nodes"].push_back({{"name", "F"}, {"at", {9, 5, 0}}});
    network["elements"].push_back(
        {{"name", "P4"}, {"type", "pipe"}, {"from", "E"}, {"to", "F"}, {"diameter", 0.1}});
    const Outcome outcome = solveText(network.dump(), "TAVELL_DETAIL_CHECK=1 ");
    EXPECT_EQ(2, outcome.status);
    const std::size_t first = outcome.errors.find("[parts-not-connected]");
    EXPECT_NE(std::string::npos, first) << outcome.errors;
    EXPECT_EQ(std::string::npos, outcome.errors.find("[parts-not-connected]", first + 1)) << outcome.errors;
}

TEST(Check, remarks_on_a_gravity_that_is_no_direction)
{
    json network = baseNetwork();
    network["gravity"] = {0, 0, -9.8};
    const TemporaryDirectory directory;
    const Outcome outcome = runCommand({"check", directory.write("net.json", network.dump())});
    EXPECT_NE(std::string::npos, outcome.output.find("gravity")) << outcome.output;
    EXPECT_NE(std::string::npos, outcome.output.find("9.8")) << outcome.output;
}

TEST(Solve, takes_a_gravity_of_length_0_or_1_without_a_remark)
{
    json network = baseNetwork();
    for (const json& gravity : {json{0, 0, 0}, json{0, 0.6, -0.8}, json{0.7071068, 0, -0.7071068}}) {
        network["gravity"] = gravity;
        EXPECT_EQ("", solveNetwork(network).errors) << gravity;
    }
}

TEST(Solve, prints_both_tables_with_units_and_nothing_on_standard_error)
{
    const Outcome outcome = solveNetwork(baseNetwork());
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ("", outcome.errors);
    const std::vector<std::string> lines = linesOf(outcome.output);
    ASSERT_LT(10U, lines.size());
    EXPECT_EQ("node  height [m]  pressure [kPa]  head [m]  external flow [kg/s]", lines[0]);
    EXPECT_EQ("element  type  from  to  flow [kg/s]  flow [m3/s]  velocity [m/s]  Re [-]  pressure "
              "difference [kPa]",
              lines[6]);
    // Three equal pipes share 100 kPa, so the inner nodes have 166.67 and 133.33 kPa.
    EXPECT_NEAR(166.667, cellOf(outcome, "B", kPressure), 0.01);
    EXPECT_NEAR(133.333, cellOf(outcome, "C", kPressure), 0.01);
    EXPECT_NE(std::string::npos, outcome.output.find("Certificate: good"));
}

TEST(Solve, counts_external_flow_into_the_network_as_positive)
{
    const Outcome outcome = solveNetwork(baseNetwork());
    const double flow = cellOf(outcome, "P1", kMassFlow);
    EXPECT_GT(flow, 0.0);
    EXPECT_DOUBLE_EQ(flow, cellOf(outcome, "A", kExternalFlow));
    EXPECT_DOUBLE_EQ(-flow, cellOf(outcome, "D", kExternalFlow));
    EXPECT_EQ("-", rowOf(outcome.output, "B").at(kExternalFlow));
}

TEST(Solve, takes_an_outlet_flow_as_leaving_whichever_way_its_element_is_drawn)
{
    json network = baseNetwork();
    network["nodes"][3]["outlet"] = {{"mass_flow", 5}};
    EXPECT_DOUBLE_EQ(5.0, cellOf(solveNetwork(network), "P3", kMassFlow));
    network["elements"][2]["from"] = "D";
    network["elements"][2]["to"] = "C";
    const Outcome outcome = solveNetwork(network);
    EXPECT_DOUBLE_EQ(-5.0, cellOf(outcome, "P3", kMassFlow));
    EXPECT_DOUBLE_EQ(-5.0, cellOf(outcome, "D", kExternalFlow));
    EXPECT_DOUBLE_EQ(5.0, cellOf(outcome, "P1", kMassFlow));
}

TEST(Solve, takes_an_inlet_flow_as_entering_whichever_way_its_element_is_drawn)
{
    json network = baseNetwork();
    network["nodes"][0]["inlet"] = {{"velocity", 1.5}};
    EXPECT_DOUBLE_EQ(1.5, cellOf(solveNetwork(network), "P1", kVelocity));
    network["elements"][0]["from"] = "B";
    network["elements"][0]["to"] = "A";
    const Outcome outcome = solveNetwork(network);
    EXPECT_DOUBLE_EQ(-1.5, cellOf(outcome, "P1", kVelocity));
    EXPECT_GT(cellOf(outcome, "A", kExternalFlow), 0.0);
}

TEST(Solve, takes_a_reynolds_number_at_an_inlet)
{
    json network = baseNetwork();
    network["nodes"][0]["inlet"] = {{"reynolds", 1000}};
    EXPECT_DOUBLE_EQ(1000.0, cellOf(solveNetwork(network), "P2", kReynolds));
}

TEST(Solve, takes_a_pressure_where_several_elements_meet)
{
    json network = baseNetwork();
    network["nodes"][1]["inlet"] = {{"pressure", 150000}};
    EXPECT_DOUBLE_EQ(150.0, cellOf(solveNetwork(network), "B", kPressure));
}

TEST(Solve, lets_equal_parallel_pipes_share_the_flow)
{
    json network = baseNetwork();
    json twin = network["elements"][1];
    twin["name"] = "P2b";
    network["elements"].push_back(twin);
    const Outcome outcome = solveNetwork(network);
    const double total = cellOf(outcome, "P1", kMassFlow);
    EXPECT_NEAR(total / 2.0, cellOf(outcome, "P2", kMassFlow), 1e-3 * total);
    EXPECT_NEAR(total / 2.0, cellOf(outcome, "P2b", kMassFlow), 1e-3 * total);
}

TEST(Solve, gives_a_square_duct_its_hydraulic_diameter)
{
    // 0.1 m x 0.1 m: Dh = 4 A / P = 0.1 m, so Re = v 0.1 m 997.4 / 0.00098 for the default water.
    json network = baseNetwork();
    for (json& element : network["elements"]) {
        element.erase("diameter");
        element.update({{"area", 0.01}, {"wetted_perimeter", 0.4}});
    }
    network["nodes"][0]["inlet"] = {{"velocity", 1}};
    EXPECT_NEAR(0.1 * 997.4 / 0.00098, cellOf(solveNetwork(network), "P1", kReynolds), 1.0);
}

TEST(Solve, shows_no_velocity_for_elements_without_one)
{
    json network = baseNetwork();
    network["elements"][1] = json::parse(R"({"name": "P2", "type": "loss", "from": "B", "to": "C",
        "curve": [[0, 0], [0.01, 1000], [0.02, 4000], [0.03, 9000]]})");
    const Outcome outcome = solveNetwork(network);
    EXPECT_EQ("-", rowOf(outcome.output, "P2").at(kVelocity));
    EXPECT_EQ("-", rowOf(outcome.output, "P2").at(kReynolds));
}

TEST(Solve, applies_the_height_along_gravity)
{
    // Still fluid: P3 ends closed. Hydrostatic pressure at rest is rho g h, 997.4 x 9.80665 x 10 = 97811.5 Pa.
    json network = baseNetwork();
    network["nodes"].push_back({{"name", "E"}, {"at", {20, 0, -10}}});
    network["elements"].push_back(
        {{"name", "P4"}, {"type", "pipe"}, {"from", "C"}, {"to", "E"}, {"diameter", 0.1}});
    const Outcome down = solveNetwork(network);
    EXPECT_NEAR(97.8115, cellOf(down, "E", kPressure) - cellOf(down, "C", kPressure), 0.011);
    network["gravity"] = {0, 0, 0};
    const Outcome none = solveNetwork(network);
    EXPECT_NEAR(0.0, cellOf(none, "E", kPressure) - cellOf(none, "C", kPressure), 0.011);
}

TEST(Solve, prints_title_source_and_expected_answer)
{
    json network = baseNetwork();
    network["title"] = "Three pipes";
    network["source"] = "made up";
    network["answer"] = {{"text", "something"}};
    const Outcome outcome = solveNetwork(network);
    const std::vector<std::string> lines = linesOf(outcome.output);
    ASSERT_LT(2U, lines.size());
    EXPECT_EQ("Three pipes", lines[0]);
    EXPECT_EQ("Source: made up", lines[1]);
    EXPECT_NE(std::string::npos, outcome.output.find("\nExpected answer: something\n"));
}

TEST(Solve, aligns_names_by_characters_and_not_by_bytes)
{
    json network = baseNetwork();
    network["nodes"][1]["name"] = "Kühl";
    network["elements"][0]["to"] = "Kühl";
    network["elements"][1]["from"] = "Kühl";
    const std::vector<std::string> lines = linesOf(solveNetwork(network).output);
    EXPECT_EQ(lines[1].size() + 1, lines[2].size());
}

/// A pump whose pressure rise grows with the flow and never falls to zero.
json networkWithUselessPump()
{
    json network = baseNetwork();
    network["elements"][1] = json::parse(R"({"name": "P2", "type": "pump", "from": "B", "to": "C",
                        "curve": [[0, 100000], [0.01, 200000], [0.02, 300000], [0.03, 400000]]})");
    return network;
}

TEST(NotConverged, has_status_1_and_prints_no_tables)
{
    const Outcome outcome = solveNetwork(networkWithUselessPump());
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("", outcome.output);
    const std::vector<std::string> lines = linesOf(outcome.errors);
    ASSERT_LE(2U, lines.size());
    EXPECT_NE(std::string::npos, lines[0].find("does not fall to zero pressure rise")) << lines[0];
    EXPECT_NE(std::string::npos, lines[0].find("P2")) << lines[0];
    EXPECT_NE(std::string::npos, outcome.errors.find("[not-converged]"));
    EXPECT_NE(std::string::npos, lines.back().find("net.json: there are no results; \"tavell doctor "));
}

TEST(NotConverged, has_status_1_when_one_of_several_pumps_has_a_useless_curve)
{
    json network = networkWithUselessPump();
    network["elements"][0] = network["elements"][1];
    network["elements"][0].update({{"name", "P1"}, {"from", "A"}, {"to", "B"}});
    const Outcome outcome = solveNetwork(network);
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos, outcome.errors.find("does not fall to zero pressure rise"))
        << outcome.errors;
}

TEST(Solve, solves_a_network_whose_pressures_are_all_given)
{
    json network = baseNetwork();
    network["nodes"][1]["outlet"] = {{"pressure", 1}};
    network["nodes"][2]["outlet"] = {{"pressure", 2}};
    EXPECT_EQ(0, solveNetwork(network).status);
}

/// Adds a loop X, Y, Z that a pump feeds with 1 kg/s from B.
json networkWithFedLoop()
{
    json network = baseNetwork();
    network["nodes"].push_back({{"name", "X"}, {"at", {0, 5, 0}}});
    network["nodes"].push_back({{"name", "Y"}, {"at", {0, 9, 0}}});
    network["nodes"].push_back({{"name", "Z"}, {"at", {3, 9, 0}}});
    const auto pipe = [](const char* name, const char* from, const char* to) {
        return json{{"name", name}, {"type", "pipe"}, {"from", from}, {"to", to}, {"diameter", 0.1}};
    };
    network["elements"].push_back(pipe("XY", "X", "Y"));
    network["elements"].push_back(pipe("YZ", "Y", "Z"));
    network["elements"].push_back(pipe("ZX", "Z", "X"));
    network["elements"].push_back(json::parse(R"({"name": "feed", "type": "pump", "from": "B", "to": "X",
        "fixed_mass_flow": 1, "curve": [[0, 100000], [0.01, 90000], [0.02, 70000], [0.03, 40000]]})"));
    return network;
}

TEST(NotConverged, names_the_part_whose_flows_do_not_balance)
{
    const Outcome outcome = solveNetwork(networkWithFedLoop());
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("", outcome.output);
    EXPECT_NE(
        std::string::npos,
        outcome.errors.find("node X: the part of the network around this node has no given pressure, and its "
                            "given flows leave 1 kg/s"))
        << outcome.errors;
}

TEST(Solve, remarks_on_a_part_without_pressure_and_still_prints_results)
{
    json network = networkWithFedLoop();
    network["elements"].push_back(json::parse(R"({"name": "return", "type": "pump", "from": "Y", "to": "C",
        "fixed_mass_flow": 1, "curve": [[0, 100000], [0.01, 90000], [0.02, 70000], [0.03, 40000]]})"));
    const Outcome outcome = solveNetwork(network);
    EXPECT_EQ(0, outcome.status);
    EXPECT_DOUBLE_EQ(1.0, cellOf(outcome, "feed", kMassFlow));
    for (const char* name : {"node X", "element feed", "element return"})
        EXPECT_NE(std::string::npos, outcome.errors.find(name)) << outcome.errors;
}

TEST(Solve, names_parts_without_pressure_in_one_line_and_no_open_pipe_at_rest)
{
    constexpr int kLoops = 12;
    json network = baseNetwork();
    const char* const kCurve = "[[0, 100000], [0.01, 90000], [0.02, 70000], [0.03, 40000]]";
    for (int i = 0; i < kLoops; ++i) {
        const std::string number = std::to_string(i);
        const auto node = [&](const char* name, int x) {
            network["nodes"].push_back({{"name", name + number}, {"at", {x, 100 + i, 0}}});
        };
        const auto add = [&](const std::string& name, const char* type, const std::string& ends,
                             const std::string& values) {
            network["elements"].push_back(json::parse(R"({"name": ")" + name + number + R"(", "type": ")" +
                                                      type + "\", " + ends + ", " + values + "}"));
        };
        node("X", 0);
        node("Y", 5);
        node("Z", 9);
        network["nodes"].back()["outlet"]["mass_flow"] = 0;
        const std::string x = "\"X" + number + "\"";
        const std::string y = "\"Y" + number + "\"";
        const std::string z = "\"Z" + number + "\"";
        const std::string pump = std::string(R"("fixed_mass_flow": 0.01, "curve": )") + kCurve;
        add("open", "pipe", "\"from\": " + x + ", \"to\": " + y, "\"diameter\": 0.1");
        add("rest", "pipe", "\"from\": " + y + ", \"to\": " + z, "\"diameter\": 0.1");
        add("feed", "pump", "\"from\": \"B\", \"to\": " + x, pump);
        add("return", "pump", "\"from\": " + y + ", \"to\": \"C\"", pump);
    }
    const Outcome outcome = solveNetwork(network);
    EXPECT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_EQ(2U, linesOf(outcome.errors).size()) << outcome.errors;
    EXPECT_NE(std::string::npos,
              outcome.errors.find("12 parts of the network have no given pressure, those around node X0, "))
        << outcome.errors;
    EXPECT_NE(std::string::npos, outcome.errors.find(" and 2 more")) << outcome.errors;
    EXPECT_EQ(std::string::npos, outcome.errors.find("rest")) << outcome.errors;
}

/// A file of the base network and the path of a CSV file beside it.
struct CsvRun {
    TemporaryDirectory directory;
    std::string network = directory.write("net.json", baseNetwork().dump());
    std::string csv = (directory.path() / "results.csv").string();

    Outcome run() const { return runCommand({"solve", network, "--csv", csv}); }
    std::size_t fileCount() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(directory.path()),
                                                      std::filesystem::directory_iterator()));
    }
};

TEST(Csv, has_an_element_table_and_a_node_table_in_SI_units)
{
    const CsvRun csvRun;
    EXPECT_EQ(0, csvRun.run().status);
    const std::vector<std::string> lines = linesOf(textOf(csvRun.csv));
    ASSERT_EQ(9U, lines.size());
    EXPECT_EQ("\"element\",\"Re [-]\",\"velocity [m/s]\",\"volume flow [m3/s]\",\"mass flow [kg/s]\"",
              lines[0]);
    EXPECT_EQ("\"node\",\"pressure [Pa]\",\"temperature [K]\"", lines[4]);
    EXPECT_EQ("1,200000,", lines[5].substr(0, 9));
    EXPECT_EQ("4,100000,", lines[8].substr(0, 9));
}

TEST(Csv, replaces_an_existing_file_and_leaves_nothing_else)
{
    const CsvRun csvRun;
    csvRun.directory.write("results.csv", std::string(100000, 'x'));
    EXPECT_EQ(0, csvRun.run().status);
    EXPECT_EQ("\"element\"", textOf(csvRun.csv).substr(0, 9));
    EXPECT_EQ(std::string::npos, textOf(csvRun.csv).find('x'));
    EXPECT_EQ(2U, csvRun.fileCount());
}

TEST(Csv, keeps_a_link_and_writes_the_file_behind_it)
{
    const CsvRun csvRun;
    const std::string target = csvRun.directory.write("target.csv", "old");
    std::filesystem::create_symlink(target, csvRun.csv);
    EXPECT_EQ(0, csvRun.run().status);
    EXPECT_TRUE(std::filesystem::is_symlink(csvRun.csv));
    EXPECT_EQ("\"element\"", textOf(target).substr(0, 9));
}

TEST(Csv, keeps_the_old_file_when_the_solve_does_not_converge)
{
    const CsvRun csvRun;
    csvRun.directory.write("net.json", networkWithUselessPump().dump());
    csvRun.directory.write("results.csv", "old");
    EXPECT_EQ(1, csvRun.run().status);
    EXPECT_EQ("old", textOf(csvRun.csv));
}

TEST(Csv, a_file_that_cannot_be_written_is_bad_input)
{
    const CsvRun csvRun;
    const std::string csv = (csvRun.directory.path() / "missing" / "results.csv").string();
    const Outcome outcome = runCommand({"solve", csvRun.network, "--csv", csv});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(csv + ": cannot be written: No such file or directory; create the folder, or correct its name "
                    "[cannot-write-file]\n",
              outcome.errors);
}

TEST(Csv, never_overwrites_the_network)
{
    const CsvRun csvRun;
    const Outcome outcome = runCommand({"solve", csvRun.network, "--csv", csvRun.network});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("", outcome.output);
    EXPECT_EQ(baseNetwork().dump(), textOf(csvRun.network));
}

TEST(Csv, a_directory_is_no_csv_file)
{
    const CsvRun csvRun;
    const Outcome outcome = runCommand({"solve", csvRun.network, "--csv", csvRun.directory.path().string()});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("", outcome.output);
}

TEST(Output, that_cannot_be_written_has_status_3)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full on this system";
    const CsvRun csvRun;
    const std::string line = command_test::shellQuoted(TAVELL_COMMAND) + " solve " +
                             command_test::shellQuoted(csvRun.network) + " >/dev/full 2>/dev/null";
    const int raw = std::system(line.c_str());
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(3, WEXITSTATUS(raw));
}

TEST(Help, has_status_0_and_an_example)
{
    const Outcome outcome = runCommand({"--help"});
    EXPECT_EQ(0, outcome.status);
    EXPECT_NE(std::string::npos, outcome.output.find("tavell solve examples/networks/three_reservoirs.json"));
    EXPECT_NE(std::string::npos, outcome.output.find("network-file.md: in share/doc/tavell of"));
    EXPECT_EQ("", outcome.errors);
}

TEST(Version, is_one_line)
{
    const Outcome outcome = runCommand({"--version"});
    EXPECT_EQ(0, outcome.status);
    const std::vector<std::string> lines = linesOf(outcome.output);
    ASSERT_EQ(1U, lines.size());
    EXPECT_EQ("tavell ", lines[0].substr(0, 7));
}

}  // namespace
