// Scenarios: merge patches of nodes, elements and the case, checked when the file is read and kept in SI
// units.
#include "scenario.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavell/Constants.h>

#include "network_file.h"
#include "network_writer.h"

namespace
{

/// A network of two pipes in bar and mm, with one scenario on line 12.
std::string textWith(const std::string& scenario)
{
    return R"({
  "tavell": 1, "title": "House",
  "units": {"pressure": "bar", "diameter": "mm"},
  "fluid": {"name": "water", "temperature": "20 degC"},
  "settings": {"friction": "haaland"},
  "nodes": [{"name": "main", "at": [0, 0, 0], "inlet": {"pressure": 3}},
            {"name": "tap/1", "at": [5, 0, 0], "outlet": {"mass_flow": 0.2}},
            {"name": "tap 2", "at": [9, 0, 0], "outlet": {"mass_flow": 0.1, "temperature": 290}}],
  "elements": [{"name": "pipe 1", "type": "pipe", "from": "main", "to": "tap/1", "diameter": 20, "k": 2},
               {"name": "pipe 2", "type": "pipe", "from": "tap/1", "to": "tap 2", "diameter": 15}],
  "scenarios": {
    "night": )" +
           scenario + "}\n}\n";
}

std::optional<kit::Network> read(const std::string& text, kit::Findings& findings)
{
    return kit::readNetworkText(text, "house.json", findings);
}

kit::Network night(const std::string& scenario)
{
    kit::Findings findings;
    const auto network = read(textWith(scenario), findings);
    EXPECT_TRUE(network) << findings.text();
    if (!network) return {};
    const auto patched = kit::withScenario(*network, "night", findings);
    EXPECT_TRUE(patched) << findings.text();
    return patched.value_or(kit::Network());
}

std::string findingsOf(const std::string& scenario)
{
    kit::Findings findings;
    EXPECT_FALSE(read(textWith(scenario), findings));
    return findings.text();
}

}  // namespace

TEST(Scenario, patches_take_the_units_of_the_file)
{
    const kit::Network network = night(
        R"({"nodes": {"main": {"inlet": {"pressure": 2.5}}}, "elements": {"pipe 1": {"diameter": "1 in"}}})");
    ASSERT_EQ(network.nodes.size(), 3U);
    EXPECT_EQ(network.nodes[0].boundary->pressure, 2.5e5);
    EXPECT_EQ(network.elements[0].section->diameter, 0.0254);
    EXPECT_EQ(network.elements[0].property(TAVELL_ELEMENT_K_SPECIFIED), 2.0);
    EXPECT_EQ(network.title, "House: night");
    EXPECT_TRUE(network.scenarios.empty());
}

TEST(Scenario, null_removes_a_key)
{
    const kit::Network network = night(R"({"nodes": {"tap/1": {"outlet": null}, "tap 2": {"outlet":
        {"temperature": null}}}, "elements": {"pipe 1": {"k": null}}, "settings": {"friction": null}})");
    ASSERT_EQ(network.nodes.size(), 3U);
    EXPECT_FALSE(network.nodes[1].boundary);
    EXPECT_FALSE(network.nodes[2].boundary->temperature);
    EXPECT_EQ(network.nodes[2].boundary->flow, 0.1);
    EXPECT_FALSE(network.elements[0].property(TAVELL_ELEMENT_K_SPECIFIED));
    EXPECT_EQ(network.settings.frictionMethod, 0);
}

TEST(Scenario, the_case_changes_too)
{
    const kit::Network network =
        night(R"({"fluid": {"temperature": "40 degC"}, "settings": {"temperatures": true},
        "gravity": [0, 0, 0]})");
    EXPECT_EQ(network.fluid.name, "water");
    EXPECT_DOUBLE_EQ(network.fluid.temperature.value_or(0.0), 313.15);
    EXPECT_TRUE(network.settings.solvesTemperatures);
    EXPECT_EQ(network.settings.frictionMethod, TAVELL_FRICTION_HAALAND);
    EXPECT_EQ(network.gravity, (std::array<double, 3>{0.0, 0.0, 0.0}));
    EXPECT_EQ(night(R"({"fluid": "glycerine"})").fluid.name, "glycerine");
}

TEST(Scenario, it_is_stored_in_SI_units_without_what_changes_nothing)
{
    kit::Findings findings;
    const auto network = read(textWith(R"({"nodes": {"main": {"inlet": {"pressure": 2}}, "tap 2": {"outlet":
        {"mass_flow": 0.1}}}, "elements": {"pipe 2": {"closed": true, "diameter": 15}}})"),
                              findings);
    ASSERT_TRUE(network) << findings.text();
    const auto expected = nlohmann::json::parse(
        R"({"nodes": {"main": {"inlet": {"pressure": 200000.0}}}, "elements": {"pipe 2": {"closed": true}}})");
    EXPECT_EQ(nlohmann::json::parse(network->scenarios.at("night")), expected);
}

TEST(Scenario, findings_carry_its_pointer_and_line)
{
    const std::string text = findingsOf(R"({"nodes": {"tap/1": {
      "outlet": {"mass_flow": "1 mn"}}, "tap 9": {}},
      "elements": {"pipe 1": {"diamter": 3},
      "pipe 2": null}, "colour": 1})");
    EXPECT_NE(
        text.find("house.json:13: /scenarios/night/nodes/tap~11/outlet/mass_flow (node tap/1): \"1 mn\""),
        std::string::npos)
        << text;
    EXPECT_NE(
        text.find("house.json:13: /scenarios/night/nodes/tap 9 (scenario night): there is no \"tap 9\""),
        std::string::npos)
        << text;
    EXPECT_NE(text.find("house.json:14: /scenarios/night/elements/pipe 1/diamter (element pipe 1): the key "
                        "\"diamter\" is unknown here; did you mean \"diameter\"?"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("house.json:15: /scenarios/night/elements/pipe 2 (scenario night)"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("house.json:15: /scenarios/night/colour"), std::string::npos) << text;
}

TEST(Scenario, the_patched_network_is_checked_as_a_whole)
{
    const std::string text =
        findingsOf(R"({"nodes": {"main": {"inlet": {"pressure": null, "mass_flow": 0.3}}}})");
    EXPECT_NE(text.find("house.json:12: /scenarios/night: no node has a given pressure"), std::string::npos)
        << text;
}

TEST(Scenario, names_cannot_change)
{
    const std::string text = findingsOf(R"({"nodes": {"main": {"name": "street"}}})");
    EXPECT_NE(
        text.find("/scenarios/night/nodes/main/name (scenario night): the name of \"main\" cannot change"),
        std::string::npos)
        << text;
}

TEST(Scenario, an_unknown_name_is_a_finding)
{
    kit::Findings findings;
    const auto network = read(textWith("{}"), findings);
    ASSERT_TRUE(network) << findings.text();
    EXPECT_FALSE(kit::withScenario(*network, "nigth", findings));
    EXPECT_EQ(findings.text(),
              "house.json: /scenarios: there is no scenario \"nigth\"; did you mean \"night\"? "
              "[unknown-scenario]\n");
}

TEST(Scenario, its_findings_stand_beside_those_of_the_network_without_repeating_them)
{
    const std::string text =
        R"({"tavell": 1, "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 1}},
        {"name": "b", "at": [9, 0, 0], "outlet": {"pressure": 0}}],
        "elements": [{"name": "p", "type": "pipe", "from": "a", "to": "b", "diameter": -1, "colour": 3}],
        "scenarios": {"s": {"elements": {"p": {"roughness": "x"}}, "nodes": {"c": {}}}, "t": {"elements": {"p":
        {"diameter": -2}}}}})";
    kit::Findings findings;
    EXPECT_FALSE(kit::readNetworkText(text, "n.json", findings));
    std::vector<std::string> pointers;
    for (const kit::Finding& finding : findings.list())
        pointers.push_back(finding.place.pointer);
    const std::vector<std::string> expected{"/elements/0/colour", "/elements/0/diameter",
                                            "/scenarios/s/nodes/c", "/scenarios/s/elements/p/roughness",
                                            "/scenarios/t/elements/p/diameter"};
    EXPECT_EQ(pointers, expected) << findings.text();
}
