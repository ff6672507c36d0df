#include "doctor.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavell/Constants.h>

#include "element_kinds.h"
#include "network_file.h"

namespace
{

using kit::Code;
using kit::Finding;
using kit::Findings;
using kit::Network;

constexpr double kPi = 3.14159265358979323846;

kit::Section roundSection(double diameter)
{
    return {diameter, 0.0, kPi / 4.0 * diameter * diameter};
}

kit::Boundary pressureAt(bool isInlet, double pressure)
{
    kit::Boundary boundary;
    boundary.isInlet = isInlet;
    boundary.pressure = pressure;
    return boundary;
}

kit::Boundary flowAt(bool isInlet, double massFlow)
{
    kit::Boundary boundary;
    boundary.isInlet = isInlet;
    boundary.flowKind = kit::Boundary::Flow::mass;
    boundary.flow = massFlow;
    return boundary;
}

std::size_t addNode(Network& network, const std::string& name, double x, double y = 0.0, double z = 0.0)
{
    kit::Node node;
    node.name = name;
    node.at = {x, y, z};
    network.nodes.push_back(node);
    return network.nodes.size() - 1;
}

/// A smooth pipe of 50 mm, or an element of another type with that section.
kit::Element& addElement(Network& network, const std::string& name, const char* kind, std::size_t from,
                         std::size_t to)
{
    kit::Element element;
    element.name = name;
    element.kind = kit::findElementKind(kind);
    element.from = from;
    element.to = to;
    if (!element.kind->hasCurve) element.section = roundSection(0.05);
    network.elements.push_back(element);
    return network.elements.back();
}

kit::Element& addPipe(Network& network, const std::string& name, std::size_t from, std::size_t to)
{
    return addElement(network, name, "pipe", from, to);
}

/// Main at 2 bar, 20 m to a tee, 10 m each to two taps of 0.5 kg/s: nothing is wrong with it.
Network healthy()
{
    Network network;
    addNode(network, "main", 0);
    addNode(network, "tee", 20);
    addNode(network, "tap 1", 20, 10);
    addNode(network, "tap 2", 20, -10);
    network.nodes[0].boundary = pressureAt(true, 2e5);
    network.nodes[2].boundary = flowAt(false, 0.5);
    network.nodes[3].boundary = flowAt(false, 0.5);
    addPipe(network, "feed", 0, 1);
    addPipe(network, "branch 1", 1, 2);
    addPipe(network, "branch 2", 1, 3);
    return network;
}

/// healthy() with a pump of the given curve in its feed.
Network withPump(std::vector<kit::CurvePoint> points)
{
    Network network = healthy();
    addNode(network, "pump outlet", 1);
    network.elements[0].from = 4;
    addElement(network, "pump", "pump", 0, 4).curve = std::move(points);
    return network;
}

/// 1 bar at no flow, nothing at 3 l/s.
std::vector<kit::CurvePoint> soundPumpCurve()
{
    return {{0.0, 1e5}, {0.001, 9e4}, {0.002, 6e4}, {0.003, 0.0}};
}

std::vector<std::string> codesOf(const Findings& findings)
{
    std::vector<std::string> codes;
    for (const Finding& finding : findings.list())
        codes.emplace_back(kit::rowOf(finding.code).code);
    return codes;
}

/// The only finding; a failure of the test when there is another number of them.
Finding onlyOf(const Findings& findings)
{
    EXPECT_EQ(findings.list().size(), 1U) << findings.text();
    return findings.list().empty() ? Finding{} : findings.list().front();
}

void expectOnly(const Findings& findings, Code code, const std::vector<std::string>& objects)
{
    const Finding finding = onlyOf(findings);
    EXPECT_EQ(kit::rowOf(finding.code).code, kit::rowOf(code).code);
    EXPECT_EQ(finding.objects, objects);
    EXPECT_FALSE(finding.remedy.empty());
}

bool hasCode(const Findings& findings, Code code)
{
    return std::any_of(findings.list().begin(), findings.list().end(),
                       [code](const Finding& finding) { return finding.code == code; });
}

Findings diagnosisOf(const Network& network)
{
    const kit::Solution solution = kit::solveNetwork(network);
    EXPECT_EQ(solution.outcome, kit::Outcome::converged) << solution.findings.text();
    return kit::diagnose(network, solution);
}

}  // namespace

TEST(Doctor, a_healthy_network_has_no_findings)
{
    EXPECT_EQ(kit::examine(healthy()).text(), "");
    EXPECT_EQ(kit::examine(withPump(soundPumpCurve())).text(), "");
}

// Connectivity.

TEST(Doctor, a_part_that_nothing_joins_is_named_with_its_members_and_boundaries)
{
    Network network = healthy();
    addNode(network, "far 1", 100);
    addNode(network, "far 2", 110);
    addPipe(network, "far pipe", 4, 5);
    network.nodes[4].boundary = pressureAt(true, 3e5);
    network.nodes[5].boundary = flowAt(false, 0.1);
    const Findings findings = kit::examine(network);
    expectOnly(findings, Code::disconnected_part, {"node far 1", "node far 2", "element far pipe"});
    EXPECT_EQ(
        onlyOf(findings).message,
        "a part of 2 nodes and 1 element (node far 1, node far 2, element far pipe) is not connected to the "
        "other 4 nodes; node far 1 has an inlet at 3 bar, node far 2 has an outlet of 0.1 kg/s");
}

TEST(Doctor, a_part_behind_a_closed_element_names_that_element)
{
    Network network = healthy();
    addNode(network, "beyond", 40);
    addNode(network, "end", 50);
    addPipe(network, "valve", 1, 4).isClosed = true;
    addPipe(network, "last", 4, 5);
    network.nodes[5].boundary = pressureAt(false, 1e5);
    const Finding finding = onlyOf(kit::examine(network));
    EXPECT_EQ(finding.code, Code::disconnected_part);
    EXPECT_NE(finding.message.find("closed between them is element valve"), std::string::npos)
        << finding.message;
}

TEST(Doctor, a_node_without_elements_is_found)
{
    Network network = healthy();
    addNode(network, "lost", 5, 5);
    expectOnly(kit::examine(network), Code::node_joins_nothing, {"node lost"});
    EXPECT_EQ(onlyOf(kit::examine(network)).severity, kit::Severity::warning);
    network.nodes[4].boundary = flowAt(false, 0.1);
    expectOnly(kit::examine(network), Code::node_joins_nothing, {"node lost"});
    EXPECT_EQ(onlyOf(kit::examine(network)).severity, kit::Severity::error);
}

TEST(Doctor, a_node_with_closed_elements_only_is_remarked)
{
    Network network = healthy();
    addNode(network, "spare", 40);
    addPipe(network, "shut", 1, 4).isClosed = true;
    expectOnly(kit::examine(network), Code::node_behind_closed_elements, {"node spare"});
}

TEST(Doctor, a_boundary_behind_closed_elements_has_no_effect)
{
    Network network = healthy();
    addNode(network, "spare", 40);
    network.nodes[4].boundary = pressureAt(true, 3e5);
    addPipe(network, "shut", 1, 4).isClosed = true;
    expectOnly(kit::examine(network), Code::boundary_cut_off, {"node spare"});
    EXPECT_EQ(onlyOf(kit::examine(network)).severity, kit::Severity::warning);
    network.nodes[4].boundary = flowAt(false, 0.1);
    expectOnly(kit::examine(network), Code::boundary_cut_off, {"node spare"});
    EXPECT_EQ(onlyOf(kit::examine(network)).severity, kit::Severity::error);
}

TEST(Doctor, a_network_without_any_pressure_is_an_error)
{
    Network network = healthy();
    network.nodes[0].boundary = flowAt(true, 1.0);
    expectOnly(kit::examine(network), Code::network_without_pressure,
               {"node main", "node tap 1", "node tap 2"});

    network.nodes[0].boundary = pressureAt(true, 2e5);
    network.elements[0].isClosed = true;
    EXPECT_TRUE(hasCode(kit::examine(network), Code::network_without_pressure)) << "its pressure is cut off";
}

TEST(Doctor, flows_around_a_part_that_do_not_balance_contradict)
{
    Network network = healthy();
    network.nodes[0].boundary = flowAt(true, 1.2);
    const Findings findings = kit::examine(network);
    ASSERT_TRUE(hasCode(findings, Code::part_flows_do_not_balance)) << findings.text();
    const Finding& finding = findings.list()[1];
    EXPECT_EQ(finding.objects.size(), 4U);
    // 1.2 kg/s in, twice 0.5 kg/s out.
    EXPECT_EQ(finding.numbers.back().name, "net_inflow");
    EXPECT_NEAR(finding.numbers.back().value, 0.2, 1e-12);
}

TEST(Doctor, a_pump_of_fixed_flow_hands_no_pressure_on)
{
    Network network = withPump(soundPumpCurve());
    network.elements.back().setProperty(TAVELL_ELEMENT_FIXED_MASS_FLOW, 1.0);
    expectOnly(kit::examine(network), Code::part_has_no_pressure,
               {"node tee", "node tap 1", "node tap 2", "node pump outlet"});

    network.elements.back().setProperty(TAVELL_ELEMENT_FIXED_MASS_FLOW, 1.1);
    expectOnly(kit::examine(network), Code::part_flows_do_not_balance,
               {"node tee", "node tap 1", "node tap 2", "node pump outlet"});
}

TEST(Doctor, many_parts_without_a_pressure_are_one_finding)
{
    constexpr std::size_t kParts = 12;
    Network network = healthy();
    for (std::size_t i = 0; i < kParts; ++i) {
        const std::size_t first = network.nodes.size();
        const double place = static_cast<double>(i);
        addNode(network, "a" + std::to_string(i), place, 10.0);
        addNode(network, "b" + std::to_string(i), place, 20.0);
        addPipe(network, "apart " + std::to_string(i), first, first + 1);
    }
    const Findings findings = kit::examine(network);
    std::size_t count = 0;
    for (const Finding& finding : findings.list()) {
        if (finding.code != Code::part_has_no_pressure) continue;
        ++count;
        EXPECT_EQ(finding.objects.size(), 2 * kParts);
        EXPECT_EQ(finding.message,
                  "12 parts of the network have no given pressure, those around node a0, node a1, "
                  "node a2, node a3, node a4, node a5, node a6, node a7, node a8, node a9 and 2 "
                  "more");
    }
    EXPECT_EQ(count, 1U) << findings.text();
}

TEST(Doctor, pressure_and_flow_at_the_only_supply_leave_the_rest_without_a_pressure)
{
    Network network = healthy();
    network.nodes[0].boundary->flowKind = kit::Boundary::Flow::mass;
    network.nodes[0].boundary->flow = 1.0;
    expectOnly(kit::examine(network), Code::pressure_and_flow_too_many,
               {"node tee", "node tap 1", "node tap 2"});

    network.nodes[2].boundary = pressureAt(false, 1e5);
    EXPECT_EQ(kit::examine(network).text(), "") << "a pressure elsewhere makes it sound";
}

TEST(Doctor, a_non_return_valve_against_the_only_flow_is_found)
{
    Network network = healthy();
    network.elements[1].kind = kit::findElementKind("non_return");
    EXPECT_EQ(kit::examine(network).text(), "");
    std::swap(network.elements[1].from, network.elements[1].to);
    const Findings findings = kit::examine(network);
    expectOnly(findings, Code::valve_against_only_flow, {"element branch 1"});
    EXPECT_EQ(onlyOf(findings).message,
              "the only way for 0.5 kg/s leads through it from node tee to node tap 1, which it blocks");

    network.elements[1].kind = kit::findElementKind("pipe");
    network.elements[1].hasCheckValve = true;
    expectOnly(kit::examine(network), Code::valve_against_only_flow, {"element branch 1"});
}

TEST(Doctor, a_valve_against_the_supply_is_found_from_the_side_of_the_supply)
{
    Network network = healthy();
    network.elements[0].kind = kit::findElementKind("non_return");
    std::swap(network.elements[0].from, network.elements[0].to);
    expectOnly(kit::examine(network), Code::valve_against_only_flow, {"element feed"});
}

TEST(Doctor, a_valve_with_a_way_around_it_is_no_matter)
{
    Network network = healthy();
    addElement(network, "valve", "non_return", 2, 3);
    EXPECT_EQ(kit::examine(network).text(), "");
}

TEST(Doctor, a_limit_below_the_flow_behind_it_is_found)
{
    Network network = healthy();
    network.elements[0].kind = kit::findElementKind("control_valve");
    network.elements[0].setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 1.5);
    EXPECT_EQ(kit::examine(network).text(), "");
    network.elements[0].setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 0.8);
    expectOnly(kit::examine(network), Code::limit_below_needed_flow, {"element feed"});
}

TEST(Doctor, a_pump_against_the_only_flow_is_found)
{
    Network network = withPump(soundPumpCurve());
    std::swap(network.elements.back().from, network.elements.back().to);
    expectOnly(kit::examine(network), Code::pump_against_only_flow, {"element pump"});
}

TEST(Doctor, equal_pressures_and_no_flow_drive_nothing)
{
    Network network = healthy();
    network.nodes[2].boundary = pressureAt(false, 2e5);
    network.nodes[3].boundary.reset();
    expectOnly(kit::examine(network), Code::nothing_drives_flow, {"node main", "node tap 1"});
    network.nodes[2].at[2] = -1.0;
    EXPECT_EQ(kit::examine(network).text(), "") << "a metre of height drives it";
}

// Boundary conditions.

TEST(Doctor, two_pressures_joined_without_resistance_contradict)
{
    Network network = healthy();
    addNode(network, "twin", 0, 0.0005);
    network.nodes[4].boundary = pressureAt(true, 2.5e5);
    addPipe(network, "short", 0, 4);
    const Findings findings = kit::examine(network);
    expectOnly(findings, Code::pressures_across_no_resistance, {"node main", "node twin"});
    EXPECT_NEAR(onlyOf(findings).numbers.front().value, 5e4, 1e-6);
    network.elements.back().setProperty(TAVELL_ELEMENT_K_SPECIFIED, 1.0);
    EXPECT_EQ(kit::examine(network).text(), "");
}

TEST(Doctor, two_pressures_that_differ_by_the_height_between_them_agree)
{
    // 0.8 mm of water of 997.4 kg/m3 weigh 7.82 Pa
    Network network = healthy();
    addNode(network, "twin", 0, 0, 0.0008);
    network.nodes[4].boundary = pressureAt(true, 2e5 - 7.82);
    addPipe(network, "short", 0, 4);
    EXPECT_EQ(kit::examine(network).text(), "");
    network.nodes[4].boundary->pressure = 2e5;
    const Findings findings = kit::examine(network);
    expectOnly(findings, Code::pressures_across_no_resistance, {"node main", "node twin"});
    const Finding finding = onlyOf(findings);
    ASSERT_EQ(finding.numbers.size(), 1U);
    EXPECT_NEAR(finding.numbers.front().value, 7.82, 0.01);
}

TEST(Doctor, temperatures_without_their_solve_are_not_used)
{
    Network network = healthy();
    network.nodes[0].boundary->temperature = 300.0;
    expectOnly(kit::examine(network), Code::boundary_value_ignored, {"node main"});
    network.settings.solvesTemperatures = true;
    EXPECT_EQ(kit::examine(network).text(), "");
    network.nodes[2].boundary->temperature = 300.0;
    expectOnly(kit::examine(network), Code::boundary_value_ignored, {"node tap 1"});
}

TEST(Doctor, heat_without_a_solve_of_temperatures_is_not_used)
{
    Network network = healthy();
    network.elements[1].heat = kit::Heat{TAVELL_ENERGY_HEAT, 100.0};
    expectOnly(kit::examine(network), Code::heat_not_used, {"element branch 1"});
}

TEST(Doctor, a_negative_flow_turns_an_outlet_round)
{
    Network network = healthy();
    network.nodes[2].boundary->flow = -0.2;
    expectOnly(kit::examine(network), Code::flow_against_its_name, {"node tap 1"});
}

TEST(Doctor, gravity_has_length_one_or_none)
{
    Network network = healthy();
    network.gravity = {0.0, 0.0, -9.81};
    const Finding finding = onlyOf(kit::examine(network));
    EXPECT_EQ(finding.code, Code::gravity_length);
    EXPECT_EQ(finding.place.pointer, "/gravity");
    network.gravity = {0.0, 0.0, 0.0};
    EXPECT_EQ(kit::examine(network).text(), "");
    network.gravity = {0.0, 0.70711, -0.70711};
    EXPECT_EQ(kit::examine(network).text(), "");
}

TEST(Doctor, three_pascals_among_bars_smell_of_bar)
{
    Network network = healthy();
    network.nodes[2].boundary = pressureAt(false, 3.0);
    expectOnly(kit::examine(network), Code::pressure_unlikely, {"node tap 1"});
    network.nodes[2].boundary->pressure = 0.0;
    EXPECT_EQ(kit::examine(network).text(), "") << "0 is the atmosphere";
    network.nodes[2].boundary->pressure = 2e8;
    expectOnly(kit::examine(network), Code::pressure_unlikely, {"node tap 1"});
}

TEST(Doctor, few_pascals_among_few_pascals_are_meant)
{
    Network network = healthy();
    network.nodes[0].boundary = pressureAt(true, 150.0);
    EXPECT_EQ(kit::examine(network).text(), "");
}

TEST(Doctor, a_flow_of_more_than_50_metres_a_second_is_unlikely)
{
    Network network = healthy();
    // 997.4 kg/m3 x pi/4 (0.05 m)^2 = 1.958 kg/m: 120 kg/s run at 61.3 m/s.
    network.nodes[2].boundary->flow = 120.0;
    const Findings findings = kit::examine(network);
    expectOnly(findings, Code::flow_unlikely, {"node tap 1"});
    EXPECT_NEAR(onlyOf(findings).numbers.front().value, 61.3, 0.1);
}

TEST(Doctor, twenty_kelvin_smell_of_degrees_celsius)
{
    Network network = healthy();
    network.fluid.temperature = 20.0;
    EXPECT_EQ(onlyOf(kit::examine(network)).code, Code::temperature_unlikely);
    network.fluid.temperature = 293.15;
    network.settings.solvesTemperatures = true;
    network.nodes[0].boundary->temperature = 60.0;
    expectOnly(kit::examine(network), Code::temperature_unlikely, {"node main"});
}

// Sizes.

TEST(Doctor, an_element_from_a_node_to_itself_is_an_error)
{
    Network network = healthy();
    addPipe(network, "loop", 1, 1);
    expectOnly(kit::examine(network), Code::element_joins_one_node, {"element loop"});
}

TEST(Doctor, an_element_needs_a_length)
{
    Network network = healthy();
    addNode(network, "tap 3", 20);
    network.nodes[4].boundary = flowAt(false, 0.1);
    addPipe(network, "nothing", 1, 4);
    expectOnly(kit::examine(network), Code::element_without_length, {"element nothing"});
    network.elements.back().length = 2.0;
    EXPECT_EQ(kit::examine(network).text(), "");

    Network drawing = healthy();
    drawing.coordinates = kit::Coordinates::schematic;
    drawing.elements[0].length = 20.0;
    drawing.elements[1].length = 10.0;
    expectOnly(kit::examine(drawing), Code::element_without_length, {"element branch 2"});
}

TEST(Doctor, nodes_at_one_place_that_nothing_joins_were_perhaps_one)
{
    Network network = healthy();
    addNode(network, "tee again", 20);
    addNode(network, "tap 3", 30);
    network.nodes[4].boundary = pressureAt(true, 1e5);
    network.nodes[5].boundary = flowAt(false, 0.1);
    addPipe(network, "branch 3", 4, 5);
    const Findings findings = kit::examine(network);
    EXPECT_EQ(codesOf(findings), (std::vector<std::string>{"disconnected-part", "nodes-coincide"}));
    EXPECT_EQ(findings.list().back().objects, (std::vector<std::string>{"node tee again", "node tee"}));
}

TEST(Doctor, two_equal_elements_between_the_same_nodes_are_remarked)
{
    Network network = healthy();
    addPipe(network, "branch 1 again", 2, 1);
    expectOnly(kit::examine(network), Code::elements_coincide,
               {"element branch 1 again", "element branch 1"});
    network.elements.back().section = roundSection(0.04);
    EXPECT_EQ(kit::examine(network).text(), "");
}

TEST(Doctor, diameters_out_of_the_ordinary_smell_of_a_unit)
{
    for (const double diameter : {25.0, 1e-5}) {
        Network network = healthy();
        network.elements[0].section = roundSection(diameter);
        const Findings findings = kit::examine(network);
        ASSERT_TRUE(hasCode(findings, Code::diameter_unlikely)) << findings.text();
        EXPECT_EQ(findings.list().front().objects, std::vector<std::string>{"element feed"});
    }
}

TEST(Doctor, a_length_of_a_thousand_kilometres_smells_of_a_unit)
{
    Network network = healthy();
    network.elements[0].length = 1e6;
    expectOnly(kit::examine(network), Code::length_unlikely, {"element feed"});
}

TEST(Doctor, heights_of_more_than_nine_kilometres_smell_of_a_unit)
{
    Network network = healthy();
    network.nodes[2].at[2] = 12000.0;
    expectOnly(kit::examine(network), Code::height_unlikely, {"node tap 1", "node main"});
}

TEST(Doctor, a_roughness_of_five_percent_of_the_diameter_is_unlikely)
{
    Network network = healthy();
    network.elements[1].setProperty(TAVELL_ELEMENT_ROUGHNESS, 0.0024);
    EXPECT_EQ(kit::examine(network).text(), "");
    network.elements[1].setProperty(TAVELL_ELEMENT_ROUGHNESS, 0.0026);
    expectOnly(kit::examine(network), Code::roughness_unlikely, {"element branch 1"});
}

TEST(Doctor, the_roughness_of_a_material_counts_too)
{
    Network network = healthy();
    network.materials["gravel"].roughness = 0.05;
    network.elements[1].material = "gravel";
    expectOnly(kit::examine(network), Code::roughness_unlikely, {"element branch 1"});
}

TEST(Doctor, a_roughness_in_place_of_a_Hazen_Williams_coefficient_is_found)
{
    Network network = healthy();
    network.elements[1].kind = kit::findElementKind("hazen_williams_pipe");
    network.elements[1].setProperty(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 130.0);
    EXPECT_EQ(kit::examine(network).text(), "");
    network.elements[1].setProperty(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 0.05);
    expectOnly(kit::examine(network), Code::hazen_williams_unlikely, {"element branch 1"});
}

TEST(Doctor, an_area_that_does_not_fit_is_found)
{
    Network network = healthy();
    network.elements[1].section->area *= 1e-6;
    EXPECT_TRUE(hasCode(kit::examine(network), Code::area_unlikely));
    network.elements[1].section->area = 0.01;
    expectOnly(kit::examine(network), Code::area_unlikely, {"element branch 1"});
}

TEST(Doctor, the_bore_of_an_orifice_is_smaller_than_its_pipe)
{
    Network network = healthy();
    network.elements[1].kind = kit::findElementKind("orifice");
    network.elements[1].setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.03);
    EXPECT_EQ(kit::examine(network).text(), "");
    network.elements[1].setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.045);
    expectOnly(kit::examine(network), Code::bore_out_of_range, {"element branch 1"});
    network.elements[1].setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.05);
    expectOnly(kit::examine(network), Code::bore_not_below_pipe, {"element branch 1"});
}

TEST(Doctor, a_viscosity_of_one_and_a_density_of_one_smell_of_a_unit)
{
    Network network = healthy();
    network.fluid.properties = {{TAVELL_FLUID_DENSITY, 998.0}, {TAVELL_FLUID_VISCOSITY, 1.0}};
    Finding finding = onlyOf(kit::examine(network));
    EXPECT_EQ(finding.code, Code::fluid_value_unlikely);
    EXPECT_EQ(finding.place.pointer, "/fluid/viscosity");
    network.fluid.properties = {{TAVELL_FLUID_DENSITY, 1260.0}, {TAVELL_FLUID_VISCOSITY, 1.4}};
    EXPECT_EQ(kit::examine(network).text(), "") << "glycerine";
    network.fluid.properties = {{TAVELL_FLUID_DENSITY, 998.0}, {TAVELL_FLUID_VISCOSITY, 1e-6}};
    EXPECT_EQ(onlyOf(kit::examine(network)).code, Code::fluid_value_unlikely);
    network.nodes[2].boundary->flow = network.nodes[3].boundary->flow = 0.001;
    network.fluid.properties = {{TAVELL_FLUID_DENSITY, 1.0}, {TAVELL_FLUID_VISCOSITY, 0.001}};
    finding = onlyOf(kit::examine(network));
    EXPECT_EQ(finding.code, Code::fluid_value_unlikely);
    EXPECT_EQ(finding.place.pointer, "/fluid/density");
}

TEST(Doctor, values_far_from_the_median_of_the_network_are_found)
{
    Network network = healthy();
    for (int i = 0; i < 4; ++i) {
        const std::size_t end = addNode(network, "tap " + std::to_string(i + 3), 30.0 + i, 10.0);
        network.nodes[end].boundary = flowAt(false, 0.001);
        addPipe(network, "branch " + std::to_string(i + 3), 1, end);
    }
    EXPECT_EQ(kit::examine(network).text(), "");
    // Below 0.05 m / 300, above the least likely diameter of 0.1 mm.
    Network thin = network;
    thin.elements.back().section = roundSection(1.5e-4);
    thin.nodes.back().boundary = pressureAt(false, 1e5);
    expectOnly(kit::examine(thin), Code::diameter_outlier, {"element branch 6"});
    Network distant = network;
    distant.elements.back().length = 5e4;
    expectOnly(kit::examine(distant), Code::length_outlier, {"element branch 6"});
}

TEST(Doctor, conductances_that_lie_far_apart_are_remarked_with_their_ratio)
{
    // Round smooth pipes: the flow at one drop grows as D^2.5 / L^0.5. 4 m of 1 m to 2e5 m of 0.2 mm:
    // 5000^2.5 x 50000^0.5 = 4e11.
    Network network = healthy();
    network.elements[0].section = roundSection(1.0);
    network.elements[0].length = 20.0;
    network.elements[1].section = roundSection(2e-4);
    network.elements[1].length = 1e5;
    network.nodes[2].boundary = pressureAt(false, 1e5);
    const Findings findings = kit::examine(network);
    expectOnly(findings, Code::conductance_spread, {"element feed", "element branch 1"});
    const double expected = std::pow(5000.0, 2.5) * std::sqrt(5000.0);
    EXPECT_NEAR(onlyOf(findings).numbers.front().value, expected, 1e-6 * expected);
}

// Curves.

TEST(Doctor, a_curve_needs_four_points_of_growing_flow)
{
    expectOnly(kit::examine(withPump({{0.0, 1e5}, {0.001, 9e4}, {0.002, 0.0}})), Code::curve_unusable,
               {"element pump"});
    expectOnly(kit::examine(withPump({{0.0, 1e5}, {0.001, 9e4}, {0.001, 6e4}, {0.003, 0.0}})),
               Code::curve_unusable, {"element pump"});
}

TEST(Doctor, the_rise_of_a_pump_must_fall)
{
    expectOnly(kit::examine(withPump({{0.0, 8e4}, {0.001, 9e4}, {0.002, 6e4}, {0.003, 0.0}})),
               Code::pump_curve_rises, {"element pump"});
    expectOnly(kit::examine(withPump({{0.0, 1e4}, {0.001, 2e4}, {0.002, 5e4}, {0.003, 9e4}})),
               Code::pump_curve_never_falls, {"element pump"});
}

TEST(Doctor, a_shared_curve_is_checked_at_each_of_its_pumps)
{
    Network network = withPump({});
    network.curves["weak"].points = {{0.0, 8e4}, {0.001, 9e4}, {0.002, 6e4}, {0.003, 0.0}};
    network.elements.back().curveName = "weak";
    expectOnly(kit::examine(network), Code::pump_curve_rises, {"element pump"});
}

TEST(Doctor, metres_in_place_of_pascals_and_litres_in_place_of_cubic_metres_are_found)
{
    expectOnly(kit::examine(withPump({{0.0, 38.0}, {0.001, 36.0}, {0.002, 30.0}, {0.003, 10.0}})),
               Code::curve_values_unlikely, {"element pump"});
    expectOnly(kit::examine(withPump({{0.0, 1e5}, {10.0, 9e4}, {20.0, 6e4}, {30.0, 0.0}})),
               Code::curve_values_unlikely, {"element pump"});
}

TEST(Doctor, the_drop_of_a_loss_must_grow)
{
    Network network = withPump({{0.0, 0.0}, {0.001, 1e3}, {0.002, 2e3}, {0.003, 3e3}});
    network.elements.back().kind = kit::findElementKind("loss");
    EXPECT_EQ(kit::examine(network).text(), "");
    network.elements.back().curve = {{0.0, 0.0}, {0.001, 1.05e3}, {0.002, 2e3}, {0.0021, 1.9e3}};
    expectOnly(kit::examine(network), Code::loss_curve_falls, {"element pump"});
    network.elements.back().curve = {{0.0, 0.0}, {0.001, 333.0}, {0.002, 1.333e3}, {0.003, 3e3}};
    expectOnly(kit::examine(network), Code::loss_curve_not_straight, {"element pump"});
    network.elements.back().curve = {{0.0, 0.0}, {0.001, 0.0}, {0.002, 0.0}, {0.003, 0.0}};
    expectOnly(kit::examine(network), Code::loss_curve_ends_low, {"element pump"});
}

// Results.

TEST(Doctor, a_healthy_result_has_no_findings)
{
    EXPECT_EQ(diagnosisOf(healthy()).text(), "");
    EXPECT_EQ(diagnosisOf(withPump(soundPumpCurve())).text(), "");
}

TEST(Doctor, a_pump_beyond_its_last_point_is_found)
{
    // The taps take 1 kg/s, 0.0010026 m3/s of the library's water.
    const Findings findings =
        diagnosisOf(withPump({{0.0, 1e5}, {0.0003, 9e4}, {0.0006, 6e4}, {0.0009, 2e4}}));
    expectOnly(findings, Code::pump_beyond_curve, {"element pump"});
    EXPECT_NEAR(onlyOf(findings).numbers.front().value, 1.0 / 997.4, 1e-9);
}

TEST(Doctor, a_pump_before_its_first_point_is_remarked)
{
    expectOnly(diagnosisOf(withPump({{0.0015, 1e5}, {0.002, 9e4}, {0.0025, 6e4}, {0.003, 0.0}})),
               Code::pump_before_curve, {"element pump"});
}

TEST(Doctor, a_pump_that_is_driven_backwards_is_found)
{
    Network network = withPump(soundPumpCurve());
    std::swap(network.elements.back().from, network.elements.back().to);
    network.nodes[0].boundary->pressure = 1e6;
    EXPECT_TRUE(hasCode(diagnosisOf(network), Code::pump_flow_negative));
}

TEST(Doctor, a_loss_outside_its_curve_is_remarked)
{
    Network network = withPump({{0.0, 0.0}, {0.0002, 1e3}, {0.0004, 2e3}, {0.0006, 3e3}});
    network.elements.back().kind = kit::findElementKind("loss");
    expectOnly(diagnosisOf(network), Code::loss_beyond_curve, {"element pump"});
}

TEST(Doctor, a_shut_valve_with_no_way_around_is_against_the_flow)
{
    // The valve lets flow from tap 1 to the tee only, and tap 1 is at the lower pressure.
    Network network = healthy();
    network.nodes[2].boundary = pressureAt(false, 1e5);
    network.elements[1] = network.elements[2];
    network.elements[1].name = "valve";
    network.elements[1].kind = kit::findElementKind("non_return");
    network.elements[1].from = 2;
    network.elements[1].to = 1;
    expectOnly(diagnosisOf(network), Code::valve_against_flow, {"element valve"});
}

TEST(Doctor, a_shut_valve_with_another_way_is_fine_and_cuts_off_what_is_before_it)
{
    Network network = healthy();
    const std::size_t behind = addNode(network, "behind", 10, 10);
    addPipe(network, "bypass", 0, behind);
    addElement(network, "valve", "non_return", 1, behind);
    const Findings findings = diagnosisOf(network);
    EXPECT_EQ(codesOf(findings), (std::vector<std::string>{"valve-shut", "behind-shut-valve"}));
    EXPECT_EQ(findings.list().front().objects, std::vector<std::string>{"element valve"});
    EXPECT_EQ(findings.list().back().objects, std::vector<std::string>{"element bypass"});
}

TEST(Doctor, a_control_valve_that_is_passed_backwards_is_found)
{
    Network network = healthy();
    network.elements[1].kind = kit::findElementKind("control_valve");
    network.elements[1].setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 2.0);
    std::swap(network.elements[1].from, network.elements[1].to);
    network.nodes[2].boundary = pressureAt(false, 1.99e5);
    expectOnly(diagnosisOf(network), Code::control_valve_reversed, {"element branch 1"});
}

TEST(Doctor, dead_ends_are_remarked_together_with_rings_in_them)
{
    Network network = healthy();
    const std::size_t first = addNode(network, "stub", 30);
    const std::size_t second = addNode(network, "ring 1", 40, 5);
    const std::size_t third = addNode(network, "ring 2", 40, -5);
    addPipe(network, "way in", 1, first);
    addPipe(network, "ring a", first, second);
    addPipe(network, "ring b", second, third);
    addPipe(network, "ring c", third, first);
    expectOnly(diagnosisOf(network), Code::dead_end,
               {"element way in", "element ring a", "element ring b", "element ring c"});
}

TEST(Doctor, a_bridge_between_equal_pressures_is_balanced)
{
    Network network = healthy();
    network.elements.erase(network.elements.begin() + 1, network.elements.end());
    const std::size_t left = addNode(network, "left", 30, 5);
    const std::size_t right = addNode(network, "right", 30, -5);
    addPipe(network, "way left", 1, left);
    addPipe(network, "way right", 1, right);
    addPipe(network, "cross", left, right);
    addPipe(network, "branch 1", left, 2);
    addPipe(network, "branch 2", right, 3);
    expectOnly(diagnosisOf(network), Code::balanced_element, {"element cross"});
}

TEST(Doctor, an_element_at_rest_under_pressure_is_stuck)
{
    Network network = healthy();
    network.nodes[2].boundary = pressureAt(false, 1.9e5);
    kit::Solution solution = kit::solveNetwork(network);
    ASSERT_EQ(solution.outcome, kit::Outcome::converged) << solution.findings.text();
    solution.massFlow[1] = solution.volumeFlow[1] = solution.velocity[1] = 0.0;
    const Findings findings = kit::diagnose(network, solution);
    ASSERT_TRUE(hasCode(findings, Code::stuck_at_zero_flow)) << findings.text();
    EXPECT_TRUE(hasCode(findings, Code::worst_mass_residual)) << findings.text();
}

TEST(Doctor, pressures_below_a_vacuum_are_impossible)
{
    // 50 m up from 2 bar leave 2e5 - 997.4 x 9.80665 x 50 = -2.89e5 Pa and less.
    Network network = healthy();
    network.nodes[2].at[2] = 50.0;
    const Findings findings = diagnosisOf(network);
    expectOnly(findings, Code::pressure_impossible, {"node tap 1"});
    EXPECT_EQ(onlyOf(findings).severity, kit::Severity::error);
}

TEST(Doctor, a_negative_pressure_is_explained_both_ways_when_given_ones_look_absolute)
{
    // 25 m up from 2 bar leave -0.45 bar.
    Network network = healthy();
    network.nodes[2].at[2] = 25.0;
    expectOnly(diagnosisOf(network), Code::pressure_below_zero, {"node tap 1"});
    // The same suction against the atmosphere is no matter where 0 is a given pressure.
    network.nodes[0].boundary->pressure = 0.0;
    network.nodes[2].at[2] = 5.0;
    EXPECT_EQ(diagnosisOf(network).text(), "");
}

TEST(Doctor, water_that_would_boil_is_remarked)
{
    // Vapour pressure of water at 294.26 K: 2.50 kPa (Wagner and Pruss 1993); 10.2 m of suction leave 1.5
    // kPa.
    Network network = healthy();
    network.nodes[0].boundary->pressure = 0.0;
    network.nodes[2].at[2] = 10.2;
    network.elements[0].section = network.elements[1].section = roundSection(0.5);
    const Findings findings = diagnosisOf(network);
    expectOnly(findings, Code::near_vapour_pressure, {"node tap 1"});
    EXPECT_NE(onlyOf(findings).message.find("water boils below 25"), std::string::npos)
        << onlyOf(findings).message;
    network.fluid.name = "Oil";
    network.fluid.properties = {{TAVELL_FLUID_DENSITY, 998.0}, {TAVELL_FLUID_VISCOSITY, 0.001}};
    EXPECT_EQ(diagnosisOf(network).text(), "") << "not known for other liquids";
}

TEST(Doctor, velocities_above_the_limit_are_remarked_and_warned_of_when_the_limit_is_given)
{
    // 0.5 kg/s in 10 mm of water of 997.4 kg/m3: 6.38 m/s.
    Network network = healthy();
    network.elements[1].section = roundSection(0.01);
    network.nodes[0].boundary->pressure = 2e6;
    Findings findings = diagnosisOf(network);
    expectOnly(findings, Code::velocity_above_limit, {"element branch 1"});
    EXPECT_EQ(onlyOf(findings).severity, kit::Severity::remark);
    EXPECT_NEAR(onlyOf(findings).numbers.front().value, 6.38, 0.01);
    network.settings.velocityLimit = 5.0;
    EXPECT_EQ(onlyOf(diagnosisOf(network)).severity, kit::Severity::warning);
    network.settings.velocityLimit = 7.0;
    EXPECT_EQ(diagnosisOf(network).text(), "");
}

TEST(Doctor, the_worst_residuals_are_named)
{
    const Network network = healthy();
    kit::Solution solution = kit::solveNetwork(network);
    ASSERT_EQ(solution.outcome, kit::Outcome::converged) << solution.findings.text();
    solution.pressure[1] -= 1000.0;
    const Findings findings = kit::diagnose(network, solution);
    ASSERT_TRUE(hasCode(findings, Code::worst_law_mismatch)) << findings.text();
    const auto& objects = findings.list().back().objects;
    EXPECT_NE(std::find(objects.begin(), objects.end(), "element feed"), objects.end());
    EXPECT_NEAR(std::fabs(findings.list().back().numbers.front().value), 1000.0, 1.0);
}

TEST(Doctor, a_failed_solve_says_what_to_mend_first)
{
    Network network = healthy();
    network.elements[1].kind = kit::findElementKind("non_return");
    std::swap(network.elements[1].from, network.elements[1].to);
    const kit::Solution solution = kit::solveNetwork(network);
    ASSERT_EQ(solution.outcome, kit::Outcome::notConverged);
    const Findings findings = kit::diagnose(network, solution);
    ASSERT_TRUE(hasCode(findings, Code::solve_failed)) << findings.text();
    EXPECT_FALSE(hasCode(findings, Code::conductance_spread)) << findings.text();
    EXPECT_NE(findings.list().front().message.find("there is 1 error about it"), std::string::npos);
    // The measures of the solve are in this one, so that its own finding would say less.
    ASSERT_TRUE(hasCode(solution.findings, Code::not_converged));
    EXPECT_NE(findings.list().front().message.find("the solve ended after"), std::string::npos);
    EXPECT_FALSE(hasCode(kit::withoutRepeats(solution.findings, findings), Code::not_converged));
    EXPECT_TRUE(hasCode(kit::withoutRepeats(solution.findings, {}), Code::not_converged));
    EXPECT_EQ(findings.list().front().remedy, "mend first: element branch 1: the only way for 0.5 kg/s leads "
                                              "through it from node tee to node tap 1, "
                                              "which it blocks");
}

TEST(Doctor, a_failed_solve_of_a_sound_network_passes_on_what_the_solve_named)
{
    // An unknown liquid without properties.
    Network network = healthy();
    network.fluid.name = "Soup";
    const kit::Solution solution = kit::solveNetwork(network);
    ASSERT_EQ(solution.outcome, kit::Outcome::notConverged);
    ASSERT_TRUE(solution.findings.hasErrors());
    const Findings findings = kit::diagnose(network, solution);
    ASSERT_TRUE(hasCode(findings, Code::solve_failed)) << findings.text();
    EXPECT_EQ(findings.list().front().message, "the network did not solve");
    EXPECT_EQ(findings.list().front().remedy.rfind("mend first: ", 0), 0U) << findings.text();
}

TEST(Doctor, flows_that_the_rounding_of_high_pressures_keeps_from_balancing_call_for_a_datum)
{
    // As a grid of wide pipes at 50 bar ends, whose losses are some thousandths of a pascal.
    Network network = healthy();
    kit::Solution solution;
    solution.findings.add(Code::not_converged, {}, "it ended").numbers = {{"relative mass error", 5e-6, ""}};
    const auto remedy = [&] { return kit::diagnose(network, solution).list().front().remedy; };
    network.nodes[0].boundary->pressure = 5e6;
    EXPECT_EQ(remedy().rfind("set \"pressure_datum\" of the settings to \"-49 bar\": ", 0), 0U) << remedy();
    network.settings.pressureDatum = -4.9e6;
    EXPECT_EQ(remedy(), "look for the smallest part that fails on its own") << "it stands low already";
    network.settings.pressureDatum = 0.0;
    network.elements[1].kind = kit::findElementKind("non_return");
    std::swap(network.elements[1].from, network.elements[1].to);
    EXPECT_EQ(remedy().rfind("mend first: ", 0), 0U) << "an error comes first";
}

TEST(Doctor, a_cancelled_solve_has_nothing_to_say)
{
    kit::Solution solution;
    solution.outcome = kit::Outcome::cancelled;
    EXPECT_TRUE(kit::diagnose(healthy(), solution).isEmpty());
}

// The smallest failing part.

namespace
{

/// A line of taps, each fed through the pipe before it, with a blocked branch at one of them.
Network lineWithBlockedBranch(std::size_t length, std::size_t blocked)
{
    Network network;
    addNode(network, "n0", 0);
    network.nodes[0].boundary = pressureAt(true, 1e6);
    for (std::size_t i = 1; i <= length; ++i) {
        const std::string number = std::to_string(i);
        const std::size_t node = addNode(network, "n" + number, 10.0 * static_cast<double>(i));
        const std::size_t tap = addNode(network, "t" + number, 10.0 * static_cast<double>(i), 10.0);
        network.nodes[tap].boundary = flowAt(false, 0.01);
        addPipe(network, "line " + number, i == 1 ? 0 : node - 2, node);
        kit::Element& branch = addPipe(network, "branch " + number, node, tap);
        if (i != blocked) continue;
        branch.kind = kit::findElementKind("non_return");
        std::swap(branch.from, branch.to);
    }
    return network;
}

bool stopAlways(void* /*user*/, int /*iteration*/)
{
    return true;
}

}  // namespace

TEST(DoctorBisection, the_blocked_branch_is_left)
{
    const Network network = lineWithBlockedBranch(16, 11);
    const auto part = kit::smallestFailingPart(network, 60);
    ASSERT_TRUE(part.has_value());
    ASSERT_EQ(part->elements.size(), 1U);
    EXPECT_EQ(network.elements[part->elements.front()].name, "branch 11");
    EXPECT_LE(part->solves, 60);
    EXPECT_FALSE(part->why.empty());
    const Finding finding = kit::findingOf(network, *part);
    EXPECT_EQ(finding.objects, std::vector<std::string>{"element branch 11"});
    EXPECT_EQ(finding.code, Code::smallest_failing_part);
}

TEST(DoctorBisection, a_part_of_its_own_is_found_first)
{
    Network network = lineWithBlockedBranch(8, 0);
    const std::size_t first = network.nodes.size();
    addNode(network, "far 1", 0, 500);
    addNode(network, "far 2", 10, 500);
    addNode(network, "far 3", 20, 500);
    network.nodes[first].boundary = flowAt(true, 0.3);
    network.nodes[first + 2].boundary = flowAt(false, 0.2);
    addPipe(network, "far a", first, first + 1);
    addPipe(network, "far b", first + 1, first + 2);
    const auto part = kit::smallestFailingPart(network, 40);
    ASSERT_TRUE(part.has_value());
    for (const std::size_t element : part->elements)
        EXPECT_GE(element, network.elements.size() - 2) << network.elements[element].name;
}

TEST(DoctorBisection, a_network_that_solves_has_no_failing_part)
{
    EXPECT_FALSE(kit::smallestFailingPart(healthy(), 60).has_value());
}

TEST(DoctorBisection, solves_are_bounded_and_can_be_stopped)
{
    const Network network = lineWithBlockedBranch(16, 11);
    const auto part = kit::smallestFailingPart(network, 5);
    ASSERT_TRUE(part.has_value());
    EXPECT_EQ(part->solves, 5);
    EXPECT_LT(part->elements.size(), network.elements.size());
    EXPECT_FALSE(kit::smallestFailingPart(network, 0).has_value());
    EXPECT_FALSE(kit::smallestFailingPart(network, 60, {stopAlways, nullptr}).has_value());
}

// Findings as a whole.

TEST(Doctor, text_and_json_hold_the_same_findings)
{
    Network network = healthy();
    network.file = "case.tavell.json";
    network.elements[1].line = 12;
    network.elements[1].setProperty(TAVELL_ELEMENT_ROUGHNESS, 0.05);
    const Findings findings = kit::examine(network);
    EXPECT_EQ(findings.text(),
              "case.tavell.json:12: element branch 1: its roughness of 50 mm is 100 % of its diameter "
              "of 50 mm; give it with its unit, \"0.05 mm\" [roughness-unlikely]\n");
    const auto json = nlohmann::json::parse(findings.json());
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(json[0].at("code"), "roughness-unlikely");
    EXPECT_EQ(json[0].at("objects"), nlohmann::json({"element branch 1"}));
    EXPECT_EQ(json[0].at("numbers")[0].at("unit"), "m");
}

TEST(Doctor, a_line_of_a_hundred_thousand_elements_is_one_part)
{
    constexpr std::size_t kCount = 100000;
    Network network;
    addNode(network, "start", 0);
    network.nodes[0].boundary = pressureAt(true, 1e6);
    for (std::size_t i = 1; i <= kCount; ++i) {
        addNode(network, "n" + std::to_string(i), static_cast<double>(i));
        addPipe(network, "p" + std::to_string(i), i - 1, i);
    }
    network.nodes.back().boundary = flowAt(false, 0.1);
    EXPECT_EQ(kit::examine(network).text(), "");
    network.elements[kCount / 2].hasCheckValve = true;
    std::swap(network.elements[kCount / 2].from, network.elements[kCount / 2].to);
    expectOnly(kit::examine(network), Code::valve_against_only_flow,
               {"element " + network.elements[kCount / 2].name});
    network.elements[kCount / 2].isClosed = true;
    const Findings findings = kit::examine(network);
    ASSERT_FALSE(findings.isEmpty());
    EXPECT_EQ(findings.list().front().code, Code::disconnected_part);
    EXPECT_EQ(findings.list().front().objects.size(), kCount - 1) << "50000 nodes and 49999 elements";
}

TEST(Doctor, the_examples_have_no_errors_and_no_warnings)
{
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(TAVELL_EXAMPLES) + "/networks")) {
        if (entry.path().extension() != ".json") continue;
        Findings reading;
        const auto network = kit::readNetworkFile(entry.path().string(), reading);
        ASSERT_TRUE(network.has_value()) << reading.text();
        Findings findings = kit::examine(*network);
        const kit::Solution solution = kit::solveNetwork(*network);
        EXPECT_EQ(solution.outcome, kit::Outcome::converged) << solution.findings.text();
        findings.append(kit::diagnose(*network, solution));
        for (const Finding& finding : findings.list())
            EXPECT_EQ(finding.severity, kit::Severity::remark) << kit::lineOf(finding);
        ++count;
    }
    EXPECT_GE(count, 8U);
}
