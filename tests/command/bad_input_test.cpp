// What is wrong with a file is said in one line each, with status 2 and no results.
#include <filesystem>
#include <functional>
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

/// Expects status 2, nothing on standard output and exactly these lines, each behind "<directory>/net.json".
void expectRefusal(const std::string& text, const std::vector<std::string>& expected)
{
    const Outcome outcome = solveText(text);
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("", outcome.output);
    std::vector<std::string> lines = linesOf(outcome.errors);
    for (std::string& line : lines) {
        const std::size_t file = line.find("net.json");
        ASSERT_NE(std::string::npos, file) << line;
        line.erase(0, file + std::string("net.json").size());
    }
    EXPECT_EQ(expected, lines);
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
    EXPECT_EQ("no-such-file.json: cannot be opened: No such file or directory\n", outcome.errors);
}

TEST(BadFile, a_directory_is_no_network)
{
    const TemporaryDirectory directory;
    const Outcome outcome = runCommand({"solve", directory.path().string()});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(directory.path().string() + ": is a directory; name a network file\n", outcome.errors);
}

TEST(BadFile, a_line_end_in_the_file_name_keeps_the_message_on_one_line)
{
    const Outcome outcome = runCommand({"solve", "a\nb.json"});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(1U, linesOf(outcome.errors).size());
}

TEST(BadSyntax, an_error_has_its_line_and_column)
{
    expectRefusal(
        "{\"tavell\": 1,\n  \"nodes\": [1,,2]}",
        {":2:15: syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"});
}

TEST(BadSyntax, an_empty_file_is_an_error_at_its_start)
{
    expectRefusal(
        "", {":1:1: syntax error while parsing value - unexpected end of input; expected '[', '{', or a "
             "literal"});
}

TEST(BadSyntax, a_number_beyond_the_range_is_an_error)
{
    expectRefusal("{\"tavell\": 1e999}",
                  {":1:16: number overflow parsing '1e999'; a number has to be below 1.8e308"});
}

TEST(BadSyntax, a_key_given_twice_is_reported_at_its_object)
{
    std::string text = baseNetwork().dump();
    text.replace(text.find("\"diameter\":0.1"), 14, "\"diameter\":0.1,\"diameter\":0.2");
    expectRefusal(text, {": /elements/0: the key \"diameter\" appears twice; keep one"});
}

TEST(BadSyntax, deep_nesting_is_no_problem_for_the_program)
{
    const std::size_t depth = 200000;
    expectRefusal(std::string(depth, '[') + std::string(depth, ']'),
                  {": top level: an array is no object; write { } with its keys"});
}

TEST(BadKeys, an_unknown_key_gets_the_nearest_known_one)
{
    expectRefusal([](json& net) { net["elements"][1]["diametre"] = 0.1; },
                  {": /elements/1 (P2): unknown key \"diametre\"; did you mean \"diameter\"?"});
}

TEST(BadKeys, an_unknown_key_far_from_all_gets_the_whole_list)
{
    expectRefusal([](json& net) { net["fluid"]["colour"] = "blue"; },
                  {": /fluid: unknown key \"colour\"; give one of \"name\", \"density\", \"viscosity\", "
                   "\"temperature\""});
}

TEST(BadKeys, a_missing_key_is_named_with_what_to_give)
{
    expectRefusal([](json& net) { net["elements"][2].erase("diameter"); },
                  {": /elements/2 (P3): \"diameter\" is missing; give the inner diameter in m"});
}

TEST(BadKeys, another_version_of_the_format_is_refused)
{
    expectRefusal([](json& net) { net["tavell"] = 2; },
                  {": /tavell: 2 is not a version that this program reads; give 1"});
}

TEST(BadValues, a_number_between_quotes_is_refused)
{
    expectRefusal([](json& net) { net["elements"][0]["diameter"] = "0.1"; },
                  {": /elements/0/diameter (P1): \"0.1\" is text; write the inner diameter in m as a number "
                   "without quotes"});
}

TEST(BadValues, a_diameter_must_be_above_zero)
{
    for (const char* value : {"0", "-0.1", "-1e-300"}) {
        expectRefusal([&](json& net) { net["elements"][0]["diameter"] = json::parse(value); },
                      {": /elements/0/diameter (P1): " + json::parse(value).dump() +
                       " is not above 0; give the inner diameter in m"});
    }
}

TEST(BadValues, sizes_whose_combination_leaves_the_range_of_numbers_are_refused)
{
    expectRefusal(
        [](json& net) { net["elements"][0]["diameter"] = 1e-200; },
        {": /elements/0 (P1): its cross-section, 0 m2 with a hydraulic diameter of 1e-200 m, is outside the "
         "range of numbers; correct its sizes"});
}

TEST(BadValues, a_roughness_as_large_as_the_pipe_is_refused)
{
    expectRefusal(
        [](json& net) { net["elements"][0]["roughness"] = 0.1; },
        {": /elements/0 (P1): the roughness 0.1 is not below the hydraulic diameter 0.1; give both in m"});
}

TEST(BadValues, a_bore_as_large_as_the_pipe_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["elements"][0].update({{"type", "orifice"}, {"bore_diameter", 0.125}});
        },
        {": /elements/0 (P1): the bore 0.125 is not below the hydraulic diameter 0.1; give both in m"});
}

TEST(BadValues, an_area_larger_than_the_circle_of_the_diameter_is_refused)
{
    // pi 0.1^2 / 4 = 0.007853982
    expectRefusal([](json& net) { net["elements"][0]["area"] = 0.00787; },
                  {": /elements/0 (P1): the area 0.00787 m2 is above 0.007853982 m2, the largest that a "
                   "diameter of 0.1 m allows; correct one of them"});
}

TEST(BadValues, an_area_larger_than_the_circle_of_the_perimeter_is_refused)
{
    // 0.4^2 / (4 pi) = 0.01273240
    expectRefusal(
        [](json& net) {
            net["elements"][0].erase("diameter");
            net["elements"][0].update({{"wetted_perimeter", 0.4}, {"area", 0.1}});
        },
        {": /elements/0 (P1): the area 0.1 m2 is above 0.0127324 m2, the largest that a wetted perimeter of "
         "0.4 m allows; correct one of them"});
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
        {": /nodes/1/at (B): has 2 values instead of 3; give the coordinates x, y and z in m",
         ": /nodes/2/at/1 (C): \"2\" is text; write the coordinates x, y and z in m as a number without "
         "quotes",
         ": /nodes/2/at/2 (C): null is no number; give the coordinates x, y and z in m"});
}

TEST(BadValues, an_unknown_element_type_gets_the_nearest_known_one)
{
    expectRefusal([](json& net) { net["elements"][0]["type"] = "pumb"; },
                  {": /elements/0/type (P1): \"pumb\" is unknown; did you mean \"pump\"?"});
}

TEST(BadNames, a_name_given_twice_is_refused)
{
    expectRefusal(
        [](json& net) { net["elements"][2]["name"] = "P1"; },
        {": /elements/2/name (P1): \"P1\" is already the name of element number 1; give another name"});
}

TEST(BadNames, an_element_must_name_existing_nodes)
{
    expectRefusal([](json& net) { net["elements"][1]["to"] = "Z"; },
                  {": /elements/1/to (P2): there is no node \"Z\"; add it to \"nodes\" or correct the name"});
}

TEST(BadNames, a_line_end_in_a_name_is_refused)
{
    expectRefusal(
        [](json& net) { net["elements"][1]["name"] = "P\n2"; },
        {": /elements/1/name: \"P\\n2\" has a line end or another control character; leave it out"});
}

TEST(BadGeometry, an_element_needs_two_nodes)
{
    expectRefusal(
        [](json& net) {
            net["elements"].push_back(net["elements"][0]);
            net["elements"][3]["name"] = "P4";
            net["elements"][3]["to"] = "A";
        },
        {": /elements/3/to (P4): the element ends where it starts, at \"A\"; name another node"});
}

TEST(BadGeometry, the_nodes_of_an_element_must_not_coincide)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][1]["at"] = {20, 0, 0};
        },
        {": /elements/1 (P2): its nodes \"B\" and \"C\" are at the same place; an element's length is the "
         "distance between its nodes"});
}

json pump(const std::string& curve)
{
    return {{"name", "P2"}, {"type", "pump"}, {"from", "B"}, {"to", "C"}, {"curve", json::parse(curve)}};
}

TEST(BadCurve, three_points_are_too_few)
{
    expectRefusal(
        [](json& net) { net["elements"][1] = pump("[[0, 9], [1, 8], [2, 6]]"); },
        {": /elements/1/curve (P2): has 3 points; give at least 4 points [volume flow in m3/s, pressure in "
         "Pa]"});
}

TEST(BadCurve, flows_must_increase_strictly)
{
    expectRefusal(
        [](json& net) { net["elements"][1] = pump("[[0, 9], [2, 8], [2, 6], [3, 1]]"); },
        {": /elements/1/curve/2 (P2): the flow 2 is not above the one before it; order the points by "
         "strictly increasing flow (6 digits count)"});
}

TEST(BadCurve, flows_that_differ_in_the_seventh_digit_only_are_refused)
{
    expectRefusal(
        [](json& net) { net["elements"][1] = pump("[[0, 9], [2, 8], [2.0000001, 6], [3, 1]]"); },
        {": /elements/1/curve/2 (P2): the flow 2.0000001 is not above the one before it; order the points "
         "by strictly increasing flow (6 digits count)"});
}

TEST(BadCurve, a_point_is_a_pair)
{
    expectRefusal([](json& net) { net["elements"][1] = pump("[[0, 9], [1, 8, 7], [2, 6], [3, 1], [4, 0]]"); },
                  {": /elements/1/curve/1 (P2): is no pair; give [volume flow in m3/s, pressure in Pa]"});
}

TEST(BadBoundary, a_network_without_a_pressure_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][0]["inlet"] = {{"mass_flow", 1}};
            net["nodes"][3]["outlet"] = {{"mass_flow", 1}};
        },
        {": /nodes: no node has a given pressure; give one inlet or outlet a \"pressure\""});
}

TEST(BadBoundary, a_flow_at_a_node_with_two_elements_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][1]["outlet"] = {{"mass_flow", 1}};
        },
        {": /nodes/1 (B): a given flow needs a node with one element, this one has 2; put the inlet or "
         "outlet at the end of a pipe of its own"});
}

TEST(BadBoundary, two_flows_at_one_element_are_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][0]["inlet"] = {{"mass_flow", 1}};
            net["nodes"][2]["at"] = {0, 9, 0};
            net["nodes"].push_back({{"name", "E"}, {"at", {40, 0, 0}}});
            net["nodes"][1]["outlet"] = {{"velocity", 1}};
            net["elements"][1]["from"] = "E";
            net["elements"][1]["to"] = "C";
        },
        {": /elements/0 (P1): both of its ends have a given flow; keep one"});
}

TEST(BadBoundary, a_velocity_at_a_pump_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][0]["inlet"] = {{"velocity", 1}};
            net["elements"][0] = pump("[[0, 9], [1, 8], [2, 6], [3, 1]]");
            net["elements"][0].update({{"name", "P1"}, {"from", "A"}, {"to", "B"}});
        },
        {": /elements/0 (P1): a pump has no cross-section; give its end a \"mass_flow\" or put a pipe "
         "between"});
}

TEST(BadBoundary, a_control_valve_cannot_join_a_given_flow)
{
    expectRefusal(
        [](json& net) {
            net["nodes"][0]["inlet"] = {{"mass_flow", 1}};
            net["elements"][0].update({{"type", "control_valve"}, {"mass_flow_limit", 2}});
        },
        {": /elements/0 (P1): a control_valve with a flow of its own cannot join a node with a given flow; "
         "put a "
         "pipe between"});
}

TEST(BadBoundary, values_that_exclude_each_other_are_refused)
{
    expectRefusal(
        [](json& net) { net["nodes"][0]["inlet"]["velocity"] = 1; },
        {": /nodes/0/inlet: has values that exclude each other; give \"pressure\", one of \"mass_flow\", "
         "\"reynolds\" and \"velocity\", or \"pressure\" with \"mass_flow\""});
}

TEST(BadBoundary, an_inlet_must_impose_something)
{
    expectRefusal(
        [](json& net) { net["nodes"][3]["outlet"] = json::object(); },
        {": /nodes/3/outlet: imposes nothing; give \"pressure\", one of \"mass_flow\", \"reynolds\" and "
         "\"velocity\", or \"pressure\" with \"mass_flow\""});
}

TEST(BadNetwork, a_node_without_elements_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"].push_back({{"name", "E"}, {"at", {0, 0, 9}}});
        },
        {
            ": /nodes/4 (E): no element starts or ends here; connect the node or remove it",
        });
}

TEST(BadNetwork, a_part_that_cannot_be_reached_is_refused)
{
    expectRefusal(
        [](json& net) {
            net["nodes"].push_back({{"name", "E"}, {"at", {0, 5, 0}}});
            net["nodes"].push_back({{"name", "F"}, {"at", {9, 5, 0}}});
            net["elements"].push_back(
                {{"name", "P4"}, {"type", "pipe"}, {"from", "E"}, {"to", "F"}, {"diameter", 0.1}});
        },
        {": /elements/3 (P4): cannot be reached from node \"A\"; connect it or put it into a file of its "
         "own"});
}

TEST(BadNetwork, an_inlet_and_an_outlet_are_needed)
{
    expectRefusal([](json& net) { net["nodes"][3].erase("outlet"); },
                  {": no node has an \"outlet\"; a solve needs at least one"});
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
        {std::string(
             ": /gravity: 9.81 is no array; write [ ] with the direction of gravity, three numbers; ") +
             "[0, 0, -1] is downwards",
         ": /nodes/0/inlet/pressure: true is no number; give the static pressure in Pa",
         ": /elements/0/k (P1): -1 is not 0 or above; give the minor loss coefficient K",
         ": /elements/2/type (P3): 3 is no text; give between quotes the element's type, such as \"pipe\"",
         ": top level: unknown key \"titel\"; did you mean \"title\"?"});
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
