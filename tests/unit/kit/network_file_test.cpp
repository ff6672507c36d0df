// Reading network files: what is accepted, and what each departure is told with its line and pointer.
#include "network_file.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavell/Constants.h>

#include "element_kinds.h"
#include "json_document.h"

namespace
{

std::vector<std::string> exampleFiles()
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(TAVELL_EXAMPLES "/networks"))
        if (entry.path().extension() == ".json") files.push_back(entry.path().string());
    return files;
}

std::optional<kit::Network> read(const std::string& text, kit::Findings& findings)
{
    return kit::readNetworkText(text, "n.json", findings);
}

/// A network of one pipe; top stands among the top-level keys (with a comma behind), pipe among those of the
/// pipe and outlet in its outlet. Its lines are: 2 top, 3 and 4 the nodes, 5 the pipe.
std::string pipeText(const std::string& top, const std::string& pipe = R"("diameter": 0.1)",
                     const std::string& outlet = R"("mass_flow": 0.1)")
{
    return "{\"tavell\": 1,\n" + top + "\n\"nodes\": [{\"name\": \"a\", \"at\": [0, 0, 0], \"inlet\": " +
           "{\"pressure\": 1e5}},\n{\"name\": \"b\", \"at\": [10, 0, 0], \"outlet\": {" + outlet +
           "}}],\n\"elements\": [{\"name\": \"p\", \"type\": \"pipe\", \"from\": \"a\", \"to\": \"b\", " +
           pipe + "}]}\n";
}

kit::Network good(const std::string& text)
{
    kit::Findings findings;
    const auto network = read(text, findings);
    EXPECT_TRUE(network) << findings.text();
    EXPECT_TRUE(findings.isEmpty()) << findings.text();
    return network.value_or(kit::Network());
}

/// The one line that a text's findings are written as.
std::string findingsOf(const std::string& text)
{
    kit::Findings findings;
    EXPECT_FALSE(read(text, findings));
    return findings.text();
}

/// Whether the findings of a text hold a part.
testing::AssertionResult finds(const std::string& text, const std::string& part)
{
    const std::string findings = findingsOf(text);
    if (findings.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "expected: " << part << "\nfindings: " << findings;
}

}  // namespace

TEST(NetworkFile, every_example_is_read_without_findings)
{
    for (const std::string& file : exampleFiles()) {
        kit::Findings findings;
        const auto network = kit::readNetworkFile(file, findings);
        EXPECT_TRUE(findings.isEmpty()) << findings.text();
        ASSERT_TRUE(network);
        EXPECT_GT(network->nodes.size(), 1U);
    }
}

TEST(NetworkFile, numbers_are_SI_or_in_declared_units_or_have_a_unit)
{
    const kit::Network network = good(pipeText(
        R"("$schema": "urn:tavell:schema:network:1", "units": {"diameter": "mm", "mass_flow": "kg/h"},)",
        R"("diameter": 25, "roughness": "0.05 mm", "length": "40 ft")", R"("mass_flow": 36)"));
    ASSERT_EQ(network.elements.size(), 1U);
    EXPECT_EQ(network.elements[0].section->diameter, 0.025);
    EXPECT_EQ(network.elements[0].property(TAVELL_ELEMENT_ROUGHNESS), 0.05 / 1000);
    EXPECT_DOUBLE_EQ(*network.elements[0].length, 12.192);
    EXPECT_DOUBLE_EQ(network.nodes[1].boundary->flow, 0.01);
    EXPECT_EQ(network.nodes[0].boundary->pressure, 1e5);
}

TEST(NetworkFile, every_part_is_read)
{
    const kit::Network network = good(pipeText(
        R"j("title": "T", "source": "S", "gravity": [0, -1, 0], "fluid": {"name": "water", "temperature": "60 degC",
        "specific_heat": "4.2 kJ/(kg K)"}, "settings": {"friction": "colebrook", "minor_loss": "computed",
        "temperatures": true, "viscosity_follows_temperature": true, "pressure_datum": "1 bar",
        "velocity_limit": "2 m/s"}, "materials": {"lead": {"roughness": "2 um"}}, "fittings": {"nozzle": {"k": 3}},)j",
        R"("diameter": 0.1, "material": "lead", "fittings": ["exit", {"fitting": "nozzle", "count": 2}],
        "heat": {"flux": "1 kW/m2"}, "closed": true, "check_valve": true, "vertices": [[1, 2], [3, 4, 5]],
        "description": "D")",
        R"("volume_flow": "6 l/min", "temperature": "300 K")"));
    ASSERT_EQ(network.elements.size(), 1U);
    EXPECT_EQ(network.fluid.name, "water");
    EXPECT_DOUBLE_EQ(*network.fluid.temperature, 333.15);
    ASSERT_EQ(network.fluid.properties.size(), 1U);
    EXPECT_EQ(network.fluid.properties[0].first, TAVELL_FLUID_SPECIFIC_HEAT);
    EXPECT_DOUBLE_EQ(network.fluid.properties[0].second, 4200.0);
    EXPECT_EQ(network.gravity[1], -1.0);
    EXPECT_EQ(network.settings.frictionMethod, TAVELL_FRICTION_COLEBROOK);
    EXPECT_EQ(network.settings.minorLoss, 2);
    EXPECT_TRUE(network.settings.solvesTemperatures);
    EXPECT_TRUE(network.settings.viscosityFollowsTemperature);
    EXPECT_EQ(network.settings.pressureDatum, 1e5);
    EXPECT_EQ(network.settings.velocityLimit, 2.0);
    const kit::Element& pipe = network.elements[0];
    EXPECT_EQ(pipe.material, "lead");
    ASSERT_EQ(pipe.fittings.size(), 2U);
    EXPECT_EQ(pipe.fittings[1].name, "nozzle");
    EXPECT_EQ(pipe.fittings[1].count, 2);
    EXPECT_EQ(pipe.heat->type, TAVELL_ENERGY_FLUX);
    EXPECT_EQ(pipe.heat->value, 1000.0);
    EXPECT_TRUE(pipe.isClosed);
    EXPECT_TRUE(pipe.hasCheckValve);
    ASSERT_EQ(pipe.vertices.size(), 2U);
    EXPECT_EQ(pipe.vertices[0], (std::array<double, 3>{1.0, 2.0, 0.0}));
    EXPECT_EQ(pipe.description, "D");
    const kit::Boundary& outlet = *network.nodes[1].boundary;
    EXPECT_FALSE(outlet.isInlet);
    EXPECT_EQ(outlet.flowKind, kit::Boundary::Flow::volume);
    EXPECT_DOUBLE_EQ(outlet.flow, 1e-4);
    EXPECT_EQ(outlet.temperature, 300.0);
    EXPECT_EQ(network.nodes[0].line, 6U);
}

TEST(NetworkFile, all_findings_are_listed_with_line_and_pointer)
{
    kit::Findings findings;
    EXPECT_FALSE(
        read(pipeText(R"("titel": "T", "gravity": [0, "x", 0],)",
                      R"("diameter": "25 mn", "roughness": -1, "to": "b", "kv": 3)", R"("mass_flow": "1")"),
             findings));
    EXPECT_EQ(
        findings.text(),
        "n.json:2: /titel: the key \"titel\" is unknown here; did you mean \"title\"? [unknown-key]\n"
        "n.json:2: /gravity/1: \"x\" is text instead of a number; write a component of the direction of "
        "gravity "
        "as a number without quotes [wrong-type]\n"
        "n.json:4: /nodes/1/outlet/mass_flow (node b): \"1\" is text without a unit; write the mass flow in "
        "kg/s "
        "as a number without quotes, or add its unit [wrong-type]\n"
        "n.json:5: /elements/0/to (element p): the key \"to\" appears twice; keep one of them "
        "[duplicate-key]\n"
        "n.json:5: /elements/0/kv (element p): the key \"kv\" is unknown here; did you mean \"k\"? "
        "[unknown-key]\n"
        "n.json:5: /elements/0/diameter (element p): \"25 mn\" is not understood: the unit \"mn\" of a "
        "diameter is "
        "unknown; use m, um, mm, cm, in, ft; give the inner diameter in m as a number, or as a text with its "
        "unit [unknown-unit]\n"
        "n.json:5: /elements/0/roughness (element p): -1 is not 0 or above; give the absolute roughness in m "
        "[value-out-of-range]\n");
    EXPECT_EQ(findings.list().size(), 7U);
}

TEST(NetworkFile, names_are_unique_and_references_lead_somewhere)
{
    const std::string text = R"({"tavell": 1, "curves": {"A": {"points": [[0, 1], [1, 1], [2, 1], [3, 1]]}},
        "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 0}},
        {"name": "a", "at": [1, 0, 0], "outlet": {"pressure": 0}}],
        "elements": [{"name": "p", "type": "pipe", "from": "a", "to": "c", "diameter": 1, "material": "ironn"},
        {"name": "p", "type": "pump", "from": "a", "to": "a", "curve": "B"},
        {"name": "q", "type": "pipe", "from": "a", "to": "a", "diameter": 1, "fittings": ["exitt"]}]})";
    EXPECT_TRUE(finds(text, "n.json:3: /nodes/1/name (node a): \"a\" is already the name of node number 1"));
    EXPECT_TRUE(finds(text, "n.json:4: /elements/0/to (element p): there is no node \"c\""));
    EXPECT_TRUE(finds(text, "n.json:4: /elements/0/material (element p): there is no material \"ironn\""));
    EXPECT_TRUE(
        finds(text, "n.json:5: /elements/1/name (element p): \"p\" is already the name of element number 1"));
    EXPECT_TRUE(finds(text, "n.json:5: /elements/1/curve (element p): there is no curve \"B\""));
    EXPECT_TRUE(finds(text, "n.json:5: /elements/1/to (element p): the element ends where it starts"));
    EXPECT_TRUE(
        finds(text, "n.json:6: /elements/2/fittings/0 (element q): there is no fitting \"exitt\"; add it to "
                    "\"fittings\", or use a known one: did you mean \"exit\"?"));
}

TEST(NetworkFile, a_key_of_another_type_of_element_is_unknown)
{
    EXPECT_TRUE(
        finds(pipeText("", R"("diameter": 0.1, "bore_diameter": 0.05)"), "/elements/0/bore_diameter"));
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 0.1, "curve": "A")"), "the key \"curve\" is unknown here"));
}

TEST(NetworkFile, sizes_that_cannot_be_are_refused)
{
    EXPECT_TRUE(
        finds(pipeText("", R"("diameter": 0.1, "area": 0.008)"),
              "the area 0.008 m2 is above 0.007853982 m2, the largest that a diameter of 0.1 m allows"));
    EXPECT_TRUE(
        finds(pipeText("", R"("diameter": 0.1, "wetted_perimeter": 1, "area": 0.001)"), "[section-unclear]"));
    EXPECT_TRUE(finds(
        pipeText(R"("materials": {"rock": {"roughness": 0.2}},)", R"("diameter": 0.1, "material": "rock")"),
        "the roughness 0.2 m is not below the hydraulic diameter 0.1 m"));
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 1e400)"), "[number-too-large]"));
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 0)"), "0 is not above 0"));
}

TEST(NetworkFile, lengths_fit_the_coordinates)
{
    EXPECT_TRUE(
        finds(pipeText("", R"("diameter": 0.1, "length": 9.9)"),
              "/elements/0 (element p): its length 9.9 m is below the distance between its nodes \"a\" and "
              "\"b\", 10 m"));
    EXPECT_EQ(good(pipeText("", R"("diameter": 0.1, "length": 10)")).elements.size(), 1U);
    EXPECT_TRUE(finds(pipeText(R"("coordinates": "schematic",)"),
                      "n.json:5: /elements/0 (element p): its length is missing"));
    const kit::Network network =
        good(pipeText(R"("coordinates": "schematic",)", R"("diameter": 0.1, "length": 3)"));
    EXPECT_EQ(network.coordinates, kit::Coordinates::schematic);
}

TEST(NetworkFile, a_general_loss_of_a_schematic_network_needs_a_length_where_b_is_not_0)
{
    const auto text = [](const char* b) {
        return std::string(R"({"tavell": 1, "coordinates": "schematic",
            "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 0}},
                      {"name": "b", "at": [0, 0, 0], "outlet": {"pressure": 0}}],
            "elements": [{"name": "g", "type": "general_loss", "from": "a", "to": "b", "diameter": 0.1,
                          "ck": 1, "a": 1, "c": 5, "d": 2, "b": )") +
               b + "}]}";
    };
    EXPECT_EQ(good(text("0")).elements.size(), 1U);
    EXPECT_TRUE(finds(text("1"), "its length is missing"));
}

TEST(NetworkFile, inlets_and_outlets_impose_one_thing)
{
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 0.1)", ""), "the outlet imposes nothing"));
    EXPECT_TRUE(
        finds(pipeText("", R"("diameter": 0.1)", R"("temperature": 300)"), "the outlet imposes nothing"));
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 0.1)", R"("mass_flow": 1, "volume_flow": 1)"),
                      "it has values that exclude each other"));
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 0.1)", R"("pressure": 1, "velocity": 1)"),
                      "it has values that exclude each other"));
    EXPECT_EQ(good(pipeText("", R"("diameter": 0.1)", R"("pressure": 1, "mass_flow": 1)")).nodes.size(), 2U);
}

TEST(NetworkFile, flows_may_be_given_inside_the_network_but_velocities_may_not)
{
    const auto text = [](const char* flow) {
        return std::string(
                   R"({"tavell": 1, "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 0}},
            {"name": "b", "at": [1, 0, 0], "outlet": {")") +
               flow + R"(": 1}},
            {"name": "c", "at": [2, 0, 0], "outlet": {"pressure": 0}}],
            "elements": [{"name": "1", "type": "pipe", "from": "a", "to": "b", "diameter": 0.1},
                         {"name": "2", "type": "pipe", "from": "b", "to": "c", "diameter": 0.1}]})";
    };
    EXPECT_EQ(good(text("volume_flow")).nodes.size(), 3U);
    EXPECT_EQ(good(text("mass_flow")).nodes.size(), 3U);
    EXPECT_TRUE(finds(text("velocity"),
                      "n.json:2: /nodes/1 (node b): a given velocity needs a node with one element, "
                      "this one has 2"));
    EXPECT_TRUE(finds(text("reynolds"), "a given Reynolds number needs a node with one element"));
}

TEST(NetworkFile, a_network_needs_a_pressure_and_no_more)
{
    const auto text = [](const char* first, const char* second) {
        return std::string(R"({"tavell": 1, "nodes": [{"name": "a", "at": [0, 0, 0], )") + first +
               R"(}, {"name": "b", "at": [1, 0, 0], )" + second +
               R"(}, {"name": "c", "at": [2, 0, 0]}],
               "elements": [{"name": "1", "type": "pipe", "from": "a", "to": "b", "diameter": 0.1}]})";
    };
    const std::string inlets = text(R"("inlet": {"pressure": 1})", R"("inlet": {"pressure": 0})");
    EXPECT_TRUE(finds(inlets, "/nodes/2 (node c): no element starts or ends here"));
    EXPECT_FALSE(finds(inlets, "/nodes: "));
    const std::string flows = text(R"("outlet": {"mass_flow": 1})", R"("outlet": {"mass_flow": 1})");
    EXPECT_TRUE(finds(flows, "n.json:1: /nodes: no node has a given pressure"));
    EXPECT_FALSE(finds(flows, "/elements/0"));
    EXPECT_TRUE(finds(R"({"tavell": 1, "nodes": [], "elements": []})", "there is no node"));
}

TEST(NetworkFile, fluids_are_known_or_given)
{
    EXPECT_TRUE(finds(pipeText(R"("fluid": "watr",)"),
                      "n.json:2: /fluid: the fluid \"watr\" is unknown, and its density "
                      "and viscosity are not given"));
    EXPECT_TRUE(finds(pipeText(R"("fluid": {"name": "milk", "density": 1030},)"), "[unknown-fluid]"));
    EXPECT_TRUE(
        finds(pipeText(R"("fluid": {"name": "water", "temperature": "900 degC"},)"), "[fluid-out-of-range]"));
    EXPECT_TRUE(finds(pipeText(R"("fluid": {"name": "water", "concentration": 1.5},)"), "1.5 is above 1"));
    EXPECT_EQ(
        good(pipeText(R"("fluid": {"name": "milk", "density": 1030, "viscosity": "2 mPa s"},)")).fluid.name,
        "milk");
    EXPECT_EQ(good(pipeText(R"("fluid": {"density": 1030},)")).fluid.name, "");
}

TEST(NetworkFile, curves_have_increasing_flows_and_a_name_or_points)
{
    const auto text = [](const char* curve) {
        return std::string(
                   R"({"tavell": 1, "curves": {"A": {"points": [[0, "3 bar"], ["1 l/s", 2e5], ["2 l/s", 1e5],
            ["3 l/s", 0]], "reference_density": 998}}, "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 0}},
            {"name": "b", "at": [1, 0, 0], "outlet": {"pressure": 0}}],
            "elements": [{"name": "1", "type": "pump", "from": "a", "to": "b", "curve": )") +
               curve + "}]}";
    };
    const kit::Network named = good(text("\"A\""));
    ASSERT_EQ(named.elements.size(), 1U);
    EXPECT_EQ(named.elements[0].curveName, "A");
    ASSERT_EQ(named.curves.at("A").points.size(), 4U);
    EXPECT_EQ(named.curves.at("A").points[0].pressure, 3e5);
    EXPECT_EQ(named.curves.at("A").points[3].volumeFlow, 0.003);
    EXPECT_EQ(good(text("[[0, 3], [1, 2], [2, 1], [3, 0]]")).elements[0].curve.size(), 4U);
    EXPECT_TRUE(
        finds(text("[[0, 3], [1, 2], [1.0000001, 1], [3, 0]]"), "/elements/0/curve/2 (element 1): the flow"));
    EXPECT_TRUE(finds(text("[[0, 3], [1, 2]]"), "the curve has 2 points"));
    EXPECT_TRUE(finds(text("[[0, 3], [1, 2], [2], [3, 0]]"), "an array is no pair"));
}

TEST(NetworkFile, pumps_take_heat_but_have_no_wall)
{
    const auto text = [](const char* heat) {
        return std::string(
                   R"({"tavell": 1, "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 0}},
            {"name": "b", "at": [1, 0, 0], "outlet": {"pressure": 0}}], "elements": [{"name": "1", "type": "pump",
            "from": "a", "to": "b", "curve": [[0, 3], [1, 2], [2, 1], [3, 0]], "heat": {)") +
               heat + "}}]}";
    };
    EXPECT_EQ(good(text(R"("temperature_rise": "2 K")")).elements[0].heat->type, TAVELL_ENERGY_RISE);
    EXPECT_EQ(good(text(R"("heat": "1 kW")")).elements[0].heat->value, 1000.0);
    EXPECT_TRUE(finds(text(R"("flux": 1)"), "/elements/0/heat/flux (element 1): a pump has no wall"));
    EXPECT_TRUE(finds(text(""), "it gives no heat"));
    EXPECT_TRUE(finds(text(R"("heat": 1, "temperature_rise": 1)"), "it has values that exclude each other"));
}

TEST(NetworkFile, other_versions_and_other_documents_are_refused)
{
    EXPECT_TRUE(
        finds(R"({"tavell": 2, "nodes": [], "elements": []})", "2 is not a version that this program reads"));
    EXPECT_TRUE(finds("[]", "n.json:1: an array is no object; write { } with its keys"));
    EXPECT_TRUE(finds("{}", "\"tavell\" is missing"));
    EXPECT_TRUE(finds("", "n.json:1:1: "));
}

TEST(JsonDocument, nesting_has_a_limit)
{
    kit::Findings findings;
    EXPECT_FALSE(kit::parseJson(std::string(1000000, '['), "deep.json", findings));
    EXPECT_EQ(findings.text(),
              "deep.json:1: objects and arrays are nested more than 100 deep; write the network without "
              "these brackets [nested-too-deep]\n");
    kit::Findings none;
    EXPECT_TRUE(kit::parseJson(std::string(100, '[') + std::string(100, ']'), "deep.json", none));
}

TEST(JsonDocument, syntax_errors_have_line_and_column)
{
    kit::Findings findings;
    EXPECT_FALSE(kit::parseJson("{\"a\": 1,\n \"b\": 2,}\n", "s.json", findings));
    ASSERT_EQ(findings.list().size(), 1U);
    EXPECT_EQ(findings.list()[0].place.line, 2U);
    EXPECT_EQ(findings.list()[0].place.column, 9U);
}

TEST(JsonDocument, lines_are_those_of_values_also_behind_numbers_at_line_ends)
{
    const std::string text = "{\"list\": [1\n,2\n,\n3],\n\"x\":\n{\"y\": 4\n}, \"z\": 5}";
    kit::Findings ignored;
    const auto document = kit::parseJson(text, "l.json", ignored);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->itemLines.at("list"), (std::vector<std::uint32_t>{1, 2, 4}));
    kit::Findings found;
    for (const char* pointer : {"/list/2", "/x/y", "/x", "/z", "/x/no/such", ""})
        found.add(kit::Code::missing_key, kit::Place{"l.json", 0, 0, pointer, ""}, pointer);
    kit::Findings placed;
    kit::appendWithLines(text, found, placed);
    std::map<std::string, std::size_t> lines;
    for (const kit::Finding& finding : placed.list())
        lines[finding.message] = finding.place.line;
    const std::map<std::string, std::size_t> expected{{"", 1},     {"/list/2", 4},    {"/x", 6},
                                                      {"/x/y", 6}, {"/x/no/such", 6}, {"/z", 7}};
    EXPECT_EQ(lines, expected);
}

TEST(JsonDocument, findings_beyond_the_limit_are_counted)
{
    const std::size_t count = kit::Findings::kMostOfOneCode + 5;
    kit::Findings found;
    for (std::size_t i = 0; i < count; ++i)
        found.add(kit::Code::missing_key, kit::Place{"l.json", 0, 0, "/a", ""}, "gone");
    kit::Findings placed;
    kit::appendWithLines("{}", found, placed);
    EXPECT_EQ(placed.list().size(), kit::Findings::kMostOfOneCode);
    EXPECT_EQ(placed.notKept(kit::Code::missing_key), 5U);
}

TEST(NetworkFile, numbers_that_are_too_large_are_findings_at_their_places_and_the_rest_is_read)
{
    const std::string text =
        pipeText(R"("gravity": [0, -1e400, "1e400"],)", R"("diameter": 2e308, "roughness": -1, "k": 1e-400)",
                 R"("mass_flow": 1E+999)");
    EXPECT_EQ(
        findingsOf(text),
        "n.json:2: /gravity/1: the number is too large to be stored; give a number below 1.8e308 "
        "[number-too-large]\n"
        "n.json:2: /gravity/2: \"1e400\" is text instead of a number; write a component of the direction of "
        "gravity as a number without quotes [wrong-type]\n"
        "n.json:4: /nodes/1/outlet/mass_flow (node b): the number is too large to be stored; give a number "
        "below 1.8e308 [number-too-large]\n"
        "n.json:5: /elements/0/diameter (element p): the number is too large to be stored; give a number "
        "below "
        "1.8e308 [number-too-large]\n"
        "n.json:5: /elements/0/roughness (element p): -1 is not 0 or above; give the absolute roughness in m "
        "[value-out-of-range]\n");
}

TEST(NetworkFile, numbers_that_are_too_large_are_counted_beyond_those_that_are_listed)
{
    std::string numbers = "1e400";
    for (int i = 1; i < 1500; ++i)
        numbers += ",1e400";
    kit::Findings findings;
    EXPECT_FALSE(read(pipeText("\"gravity\": [" + numbers + "],"), findings));
    EXPECT_EQ(findings.notKept(kit::Code::number_too_large), 500U);
}

TEST(NetworkFile, digits_and_exponents_are_weighed_together)
{
    const std::string digits(400, '7');
    for (const std::string& number :
         {digits, "0." + digits + "e400", digits + "e-50", std::string("1e99999999999999999999")})
        EXPECT_TRUE(finds(pipeText("", "\"diameter\": " + number), "[number-too-large]")) << number;
    for (const std::string& number :
         {digits + "e-400", "0." + digits, std::string("123.45e1"), "0.0" + digits + "e2"})
        good(pipeText("", "\"diameter\": " + number));
    EXPECT_TRUE(finds(pipeText("", R"("diameter": 1e-99999999999999999999)"), "0.0 is not above 0"));
}

TEST(NetworkFile, a_syntax_error_behind_a_number_that_is_too_large_is_found_too)
{
    const std::string findings = findingsOf("{\"tavell\": 1e400,\n\"nodes\": [,]}");
    EXPECT_NE(findings.find("n.json:1: /tavell: the number is too large"), std::string::npos) << findings;
    EXPECT_NE(findings.find("n.json:2:11: syntax error"), std::string::npos) << findings;
    EXPECT_NE(findings.find("expected"), std::string::npos) << findings;
}

TEST(NetworkFile, lists_that_are_missing_are_said_once)
{
    const std::string elements =
        R"("elements": [{"name": "p", "type": "pipe", "from": "a", "to": "b", "diameter": 1}])";
    const std::string answer = R"(, "answer": {"text": "T", "nodes": {"a": {"pressure": 1}}})";
    EXPECT_EQ(findingsOf(R"({"tavell": 1, "nodes": {}, )" + elements + answer + '}'),
              "n.json:1: /nodes: an object is no array; write [ ] with the list of nodes [wrong-type]\n");
    EXPECT_EQ(findingsOf(R"({"tavell": 1, "nodes": [], )" + elements + '}'),
              "n.json:1: /nodes: there is no node; add nodes and elements [empty-network]\n");
}

/// A network of so many nodes in a row, of which the first ones have no place.
std::string withoutPlaces(int without, int count, const std::string& more = "")
{
    std::string nodes;
    std::string elements;
    for (int i = 0; i < count; ++i) {
        const std::string name = std::to_string(i);
        nodes += (i == 0 ? "" : ",") + std::string("\n{\"name\": \"") + name + '"';
        if (i >= without) nodes += ", \"at\": [" + name + ", 0, 0]";
        if (i == 0 || i + 1 == count)
            nodes += std::string(", \"") + (i == 0 ? "inlet" : "outlet") + "\": {\"pressure\": " + name + '}';
        nodes += '}';
        if (i == 0) continue;
        elements += (i == 1 ? "" : ",") + std::string(R"({"type": "pipe", "diameter": 1, "name": ")") + name +
                    R"(", "from": ")" + std::to_string(i - 1) + R"(", "to": ")" + name + "\"}";
    }
    return "{\"tavell\": 1, \"nodes\": [" + nodes + "],\n\"elements\": [" + elements + ']' + more + '}';
}

TEST(NetworkFile, nodes_without_a_place_are_said_one_by_one_when_they_are_few)
{
    EXPECT_EQ(
        findingsOf(withoutPlaces(2, 4)),
        "n.json:2: /nodes/0 (node 0): \"at\" is missing; give the coordinates [x, y, z] [missing-key]\n"
        "n.json:3: /nodes/1 (node 1): \"at\" is missing; give the coordinates [x, y, z] [missing-key]\n");
}

TEST(NetworkFile, many_nodes_without_a_place_are_one_finding)
{
    const std::string remedy =
        "; give each its coordinates [x, y, z]; with \"coordinates\": \"schematic\" x and "
        "y are those of a drawing and z is the height [missing-key]\n";
    EXPECT_EQ(findingsOf(withoutPlaces(4, 4)),
              "n.json:1: /nodes: none of the 4 nodes has an \"at\"" + remedy);
    EXPECT_EQ(
        findingsOf(withoutPlaces(12, 20)),
        "n.json:1: /nodes: \"at\" is missing at 12 of 20 nodes: node 0, node 1, node 2, node 3, node 4, "
        "node 5, node 6, node 7, node 8, node 9 and 2 more" +
            remedy);
}

TEST(NetworkFile, a_scenario_that_takes_a_place_away_is_refused)
{
    EXPECT_EQ(findingsOf(withoutPlaces(0, 3, R"(, "scenarios": {"s": {"nodes": {"1": {"at": null}}}})")),
              "n.json:5: /scenarios/s/nodes/1 (node 1): \"at\" is missing; give the coordinates [x, y, z] "
              "[missing-key]\n");
}

TEST(NetworkFile, a_network_whose_errors_leave_its_parts_their_meaning_can_be_looked_at)
{
    kit::Findings findings;
    std::optional<kit::Network> flawed;
    EXPECT_FALSE(
        kit::readNetworkText(pipeText("", R"("diameter": 0.1, "length": 3)"), "n.json", findings, &flawed));
    ASSERT_TRUE(flawed) << findings.text();
    EXPECT_EQ(flawed->elements.front().length, 3.0);  // below the distance of 10 m
    flawed.reset();
    EXPECT_FALSE(kit::readNetworkText(pipeText("", R"("diameter": -1)"), "n.json", findings, &flawed));
    EXPECT_FALSE(flawed);
    EXPECT_FALSE(
        kit::readNetworkText(pipeText("", R"("diameter": 0.1, "from": "c")"), "n.json", findings, &flawed));
    EXPECT_FALSE(flawed);
}

TEST(NetworkFile, a_result_file_is_told_in_one_line)
{
    EXPECT_EQ(findingsOf(R"({"tavell_result": 1, "version": "1", "nodes": {}, "elements": {}})"),
              "n.json: the file is a result file, no network file; name the network file that was solved; a "
              "copy of "
              "the network is in the result file as \"network\" [other-kind-of-file]\n");
}
