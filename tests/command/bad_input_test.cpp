// What is wrong with a file is said in one line each, with status 2 and no results.
#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "command/base_network.h"
#include "command/run_command.h"

namespace
{

using command_test::baseNetwork;
using command_test::linesOf;
using command_test::Outcome;
using command_test::runCommand;
using command_test::solveText;
using command_test::TemporaryDirectory;
using nlohmann::json;

/// "/elements/1 (element P2) [unknown-key]" of a line, without its file, the number of the line, message and
/// remedy; all of them have to be there.
std::string placeAndCode(const std::string& line)
{
    static const std::regex kForm(
        R"(^.*net\.json(:\d+){0,2}: (?:(/\S*(?: \([^)]*\))?): )?[^;]+; .+ (\[[a-z0-9-]+\])$)");
    std::smatch match;
    if (!std::regex_match(line, match, kForm)) return "not of the form of a finding: " + line;
    return match[2].str() + (match[2].length() > 0 ? " " : "") + match[3].str();
}

/// Expects status 2, nothing on standard output and one line for each place and code.
void expectRefusal(const std::string& text, const std::vector<std::string>& expected)
{
    const Outcome outcome = solveText(text);
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("", outcome.output);
    std::vector<std::string> found;
    for (const std::string& line : linesOf(outcome.errors))
        found.push_back(placeAndCode(line));
    EXPECT_EQ(expected, found) << outcome.errors;
}

void expectRefusal(const std::function<void(json&)>& change, const std::vector<std::string>& expected)
{
    json network = baseNetwork();
    change(network);
    expectRefusal(network.dump(), expected);
}

TEST(BadFile, the_network_that_the_tests_change_is_sound)
{
    const Outcome outcome = solveText(baseNetwork().dump());
    EXPECT_EQ(0, outcome.status) << outcome.errors;
}

TEST(BadFile, a_missing_file_is_named)
{
    const Outcome outcome = runCommand({"solve", "no-such-file.json"});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(
        "no-such-file.json: cannot be opened: No such file or directory; correct the path or the rights "
        "[cannot-open-file]\n",
        outcome.errors);
}

TEST(BadFile, a_directory_is_no_network)
{
    const TemporaryDirectory directory;
    const Outcome outcome = runCommand({"solve", directory.path().string()});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(directory.path().string() + ": is a directory; name a file [is-a-directory]\n", outcome.errors);
}

TEST(BadFile, a_line_end_in_the_file_name_keeps_the_message_on_one_line)
{
    const Outcome outcome = runCommand({"[json-syntax]"});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(1U, linesOf(outcome.errors).size());
}

TEST(BadSyntax, an_error_has_its_line_and_column)
{
    const Outcome outcome = solveText("{\"tavell\": 1,\n  \"nodes\": [1,,2]}");
    EXPECT_EQ(2, outcome.status);
    EXPECT_NE(std::string::npos, outcome.errors.find("net.json:2:15: syntax error")) << outcome.errors;
    EXPECT_EQ(1U, linesOf(outcome.errors).size());
}

TEST(BadSyntax, an_empty_file_is_an_error_at_its_start)
{
    expectRefusal("", {"[json-syntax]"});
}

TEST(BadSyntax, a_number_beyond_the_range_is_an_error)
{
    expectRefusal("{\"tavell\": 1e999}", {"/tavell [number-too-large]", "[missing-key]", "[missing-key]"});
}

TEST(BadSyntax, a_key_given_twice_is_reported)
{
    std::string text = baseNetwork().dump();
    text.replace(text.find("\"diameter\":0.1"), 14, "\"diameter\":0.1,\"diameter\":0.2");
    expectRefusal(text, {"/elements/0/diameter (element P1) [duplicate-key]"});
}

TEST(BadSyntax, deep_nesting_is_no_problem_for_the_program)
{
    const std::size_t depth = 200000;
    expectRefusal(std::string(depth, '[') + std::string(depth, ']'), {"[nested-too-deep]"});
}

TEST(BadKeys, an_unknown_key_gets_the_nearest_known_one)
{
    expectRefusal([](json& net) { net["elements"][1]["diametre"] = 0.1; },
                  {"/elements/1/diametre (element P2) [unknown-key]"});
}

TEST(BadKeys, an_unknown_key_far_from_all_gets_the_whole_list)
{
    expectRefusal([](json& net) { net["fluid"]["colour"] = "blue"; }, {"/fluid/colour [unknown-key]"});
}

TEST(BadKeys, a_missing_key_is_named_with_what_to_give)
{
    expectRefusal([](json& net) { net["elements"][2].erase("diameter"); },
                  {"/elements/2 (element P3) [missing-key]"});
}

TEST(BadKeys, another_version_of_the_format_is_refused)
{
    expectRefusal([](json& net) { net["tavell"] = 2; }, {"/tavell [wrong-version]"});
}

TEST(BadValues, a_number_between_quotes_is_refused)
{
    expectRefusal([](json& net) { net["elements"][0]["diameter"] = "0.1"; },
                  {"/elements/0/diameter (element P1) [wrong-type]"});
}

TEST(BadValues, a_diameter_must_be_above_zero)
{
    for (const char* value : {"0", "-0.1", "-1e-300"}) {
        expectRefusal([&](json& net) { net["elements"][0]["diameter"] = json::parse(value); },
                      {"/elements/0/diameter (element P1) [value-out-of-range]"});
    }
}

TEST(BadValues, sizes_whose_combination_leaves_the_range_of_numbers_are_refused)
{
    expectRefusal([](json& net) { net["elements"][0]["diameter"] = 1e-200; },
                  {"/elements/0 (element P1) [section-impossible]"});
}

TEST(BadValues, a_roughness_as_large_as_the_pipe_is_refused)
{
    expectRefusal([](json& net) { net["elements"][0]["roughness"] = 0.1; },
                  {"/elements/0 (element P1) [section-impossible]"});
}

TEST(BadValues, a_bore_as_large_as_the_pipe_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["elements"][0].update({{"type", "orifice"}, {"bore_diameter", 0.125}});
        },
        {"/elements/0 (element P1) [section-impossible]"});
}

TEST(BadValues, an_area_larger_than_the_circle_of_the_diameter_is_refused)
{
    // pi 0.1^2 / 4 = 0.007853982
    expectRefusal([](json& net) { net["elements"][0]["area"] = 0.00787; },
                  {"/elements/0 (element P1) [section-impossible]"});
}

TEST(BadValues, an_area_larger_than_the_circle_of_the_perimeter_is_refused)
{
    // 0.4^2 / (4 pi) = 0.01273240
    expectRefusal(
        [](json& net) {
            net["elements"][0].erase("diameter");
            net["elements"][0].update({{"wetted_perimeter", 0.4}, {"area", 0.1}});
        },
        {"/elements/0 (element P1) [section-impossible]"});
}

TEST(GoodValues, the_area_of_a_circle_may_be_rounded_up)
{
    json network = baseNetwork();
    network["elements"][0]["area"] = 0.00786;  // pi 0.1^2 / 4 = 0.007854, and 1.001 of it 0.007862
    EXPECT_EQ(0, solveText(network.dump()).status);
}

TEST(BadValues, coordinates_are_three_numbers)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][1]["at"] = {1, 2};
            net["nodes"][2]["at"] = {1, "2", nullptr};
        },
        {"/nodes/1/at (node B) [wrong-type]", "/nodes/2/at/1 (node C) [wrong-type]",
         "/nodes/2/at/2 (node C) [wrong-type]"});
}

TEST(BadValues, an_unknown_element_type_gets_the_nearest_known_one)
{
    expectRefusal([](json& net) { net["elements"][0]["type"] = "pumb"; },
                  {"/elements/0/type (element P1) [unknown-word]"});
}

TEST(BadNames, a_name_given_twice_is_refused)
{
    expectRefusal([](json& net) { net["elements"][2]["name"] = "P1"; },
                  {"/elements/2/name (element P1) [duplicate-name]"});
}

TEST(BadNames, an_element_must_name_existing_nodes)
{
    expectRefusal([](json& net) { net["elements"][1]["to"] = "Z"; },
                  {"/elements/1/to (element P2) [unknown-node]"});
}

TEST(BadNames, a_line_end_in_a_name_is_refused)
{
    expectRefusal([](json& net) { net["elements"][1]["name"] = "P\n2"; },
                  {"/elements/1/name (element P\\x0a2) [control-character]"});
}

TEST(BadGeometry, an_element_needs_two_nodes)
{
    expectRefusal(
        [](json& net) {
            net["elements"].push_back(net["elements"][0]);
            net["elements"][3]["name"] = "P4";
            net["elements"][3]["to"] = "A";
        },
        {"/elements/3/to (element P4) [ends-where-it-starts]"});
}

TEST(BadGeometry, the_nodes_of_an_element_must_not_coincide)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][1]["at"] = {20, 0, 0};
        },
        {"/elements/1 (element P2) [nodes-at-one-place]"});
}

json pump(const std::string& curve)
{
    return {{"name", "P2"}, {"type", "pump"}, {"from", "B"}, {"to", "C"}, {"curve", json::parse(curve)}};
}

TEST(BadCurve, three_points_are_too_few)
{
    expectRefusal([](json& net) { net["elements"][1] = pump("[[0, 9], [1, 8], [2, 6]]"); },
                  {"/elements/1/curve (element P2) [curve-too-short]"});
}

TEST(BadCurve, flows_must_increase_strictly)
{
    expectRefusal([](json& net) { net["elements"][1] = pump("[[0, 9], [2, 8], [2, 6], [3, 1]]"); },
                  {"/elements/1/curve/2 (element P2) [curve-not-increasing]"});
}

TEST(BadCurve, flows_that_differ_in_the_seventh_digit_only_are_refused)
{
    expectRefusal([](json& net) { net["elements"][1] = pump("[[0, 9], [2, 8], [2.0000001, 6], [3, 1]]"); },
                  {"/elements/1/curve/2 (element P2) [curve-not-increasing]"});
}

TEST(BadCurve, a_point_is_a_pair)
{
    expectRefusal([](json& net) { net["elements"][1] = pump("[[0, 9], [1, 8, 7], [2, 6], [3, 1], [4, 0]]"); },
                  {"/elements/1/curve/1 (element P2) [wrong-type]"});
}

TEST(BadBoundary, a_network_without_a_pressure_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][0]["inlet"] = {{"mass_flow", 1}};
            net["nodes"][3]["outlet"] = {{"mass_flow", 1}};
        },
        {"/nodes [no-given-pressure]"});
}

TEST(GoodBoundary, a_flow_may_be_given_where_elements_meet)
{
    json network = baseNetwork();
    network["nodes"][1]["outlet"] = {{"mass_flow", 1}};
    EXPECT_EQ(0, solveText(network.dump()).status);
}

TEST(BadBoundary, two_flows_that_do_not_agree_leave_a_part_out_of_balance)
{
    json network = baseNetwork();
    network["nodes"][0]["inlet"] = {{"mass_flow", 1}};
    network["nodes"][1]["outlet"] = {{"mass_flow", 2}};
    network["elements"].erase(1);
    const Outcome outcome = solveText(network.dump());
    EXPECT_NE(0, outcome.status);
    EXPECT_EQ("", outcome.output);
    EXPECT_NE("", outcome.errors);
}

TEST(BadBoundary, a_velocity_at_a_pump_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][0]["inlet"] = {{"velocity", 1}};
            net["elements"][0] = pump("[[0, 9], [1, 8], [2, 6], [3, 1]]");
            net["elements"][0].update({{"name", "P1"}, {"from", "A"}, {"to", "B"}});
        },
        {"/elements/0 (element P1) [needs-section]"});
}

TEST(GoodBoundary, a_control_valve_may_join_a_given_flow_below_its_limit)
{
    json network = baseNetwork();
    network["nodes"][0]["inlet"] = {{"mass_flow", 1}};
    network["elements"][0].update({{"type", "control_valve"}, {"mass_flow_limit", 2}});
    EXPECT_EQ(0, solveText(network.dump()).status);
}

TEST(BadBoundary, values_that_exclude_each_other_are_refused)
{
    expectRefusal([](json& net) { net["nodes"][0]["inlet"]["velocity"] = 1; },
                  {"/nodes/0/inlet (node A) [values-exclude-each-other]"});
}

TEST(BadBoundary, an_inlet_must_impose_something)
{
    expectRefusal([](json& net) { net["nodes"][3]["outlet"] = json::object(); },
                  {"/nodes/3/outlet (node D) [imposes-nothing]"});
}

TEST(BadNetwork, a_node_without_elements_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"].push_back({{"name", "E"}, {"at", {0, 0, 9}}});
        },
        {"/nodes/4 (node E) [isolated-node]"});
}

TEST(GoodNetwork, a_part_that_nothing_joins_is_named_by_the_check)
{
    json network = baseNetwork();
    network["nodes"].push_back({{"name", "E"}, {"at", {0, 5, 0}}});
    network["nodes"].push_back({{"name", "F"}, {"at", {9, 5, 0}}});
    network["elements"].push_back(
        {{"name", "P4"}, {"type", "pipe"}, {"from", "E"}, {"to", "F"}, {"diameter", 0.1}});
    const TemporaryDirectory directory;
    const Outcome outcome = runCommand({"check", directory.write("net.json", network.dump())});
    EXPECT_NE(std::string::npos, outcome.output.find("node E")) << outcome.output;
}

TEST(GoodNetwork, without_an_outlet_is_at_rest)
{
    json network = baseNetwork();
    network["nodes"][3].erase("outlet");
    EXPECT_EQ(0, solveText(network.dump()).status);
}

TEST(BadNetwork, every_problem_of_a_file_is_reported)
{
    expectRefusal(
        [](json& net) {
            net["titel"] = "x";
            net["gravity"] = 9.81;
            net["nodes"][0]["inlet"]["pressure"] = true;
            net["elements"][0]["k"] = -1;
            net["elements"][2]["type"] = 3;
        },
        {"/titel [unknown-key]", "/gravity [wrong-type]", "/nodes/0/inlet/pressure (node A) [wrong-type]",
         "/elements/0/k (element P1) [value-out-of-range]", "/elements/2/type (element P3) [wrong-type]"});
}

TEST(BadUsage, has_status_2_and_a_message)
{
    const std::vector<std::vector<std::string>> usages{
        {}, {"solve"}, {"frobnicate"}, {"solve", "a", "b"}, {"solve", "a", "--cvs", "b"}};
    for (const auto& arguments : usages) {
        const Outcome outcome = runCommand(arguments);
        EXPECT_EQ(2, outcome.status);
        EXPECT_EQ("", outcome.output);
        EXPECT_NE("", outcome.errors);
    }
}

}  // namespace
