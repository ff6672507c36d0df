#include "inp_import.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <unordered_set>
#include <vector>

#include <gtest/gtest.h>

#include <tavell/Constants.h>

#include "element_kinds.h"
#include "inp_curves.h"
#include "inp_options.h"
#include "inp_units.h"
#include "network_file.h"
#include "network_writer.h"
#include "units.h"

namespace
{

using kit::Code;
using kit::Findings;
using kit::InpOptions;
using kit::Network;

/// A reservoir, two junctions and two pipes; the test adds sections.
const std::string kBase = "[JUNCTIONS]\n A 10 0\n B 5 20\n[RESERVOIRS]\n R 50\n"
                          "[PIPES]\n P1 R A 1000 300 100 0\n P2 A B 500 200 100 1.5\n";

std::optional<Network> import(const std::string& text, Findings& losses, bool freezes = false,
                              double time = 0.0)
{
    InpOptions options;
    options.freezesPressureValves = freezes;
    options.time = time;
    options.solvesForDuties = false;
    return kit::importInpText(text, "test.inp", options, losses);
}

Network importGood(const std::string& text, double time = 0.0)
{
    Findings losses;
    auto network = import(text, losses, false, time);
    EXPECT_TRUE(network.has_value()) << losses.text();
    return network.value_or(Network{});
}

Findings errorsOf(const std::string& text)
{
    Findings losses;
    EXPECT_FALSE(import(text, losses).has_value());
    return losses;
}

std::size_t count(const Findings& findings, Code code)
{
    std::size_t result = 0;
    for (const kit::Finding& finding : findings.list())
        result += finding.code == code ? 1 : 0;
    return result;
}

const kit::Finding& find(const Findings& findings, Code code)
{
    static const kit::Finding kNone;
    for (const kit::Finding& finding : findings.list()) {
        if (finding.code == code) return finding;
    }
    ADD_FAILURE() << "no such finding in:\n" << findings.text();
    return kNone;
}

const kit::Node& node(const Network& network, const std::string& name)
{
    for (const kit::Node& candidate : network.nodes) {
        if (candidate.name == name) return candidate;
    }
    throw std::runtime_error("no node " + name);
}

const kit::Element& element(const Network& network, const std::string& name)
{
    for (const kit::Element& candidate : network.elements) {
        if (candidate.name == name) return candidate;
    }
    throw std::runtime_error("no element " + name);
}

double property(const kit::Element& of, int id)
{
    return of.property(id).value_or(-1.0);
}

double outflow(const Network& network, const std::string& name)
{
    const auto& boundary = node(network, name).boundary;
    if (!boundary) return 0.0;
    return boundary->isInlet ? -boundary->flow : boundary->flow;
}

}  // namespace

TEST(InpUnits, every_flow_keyword_is_its_unit)
{
    // Exact factors of the units; the acre-foot per day is EPANET's 1.9837 per ft3/s.
    const std::vector<std::pair<std::string, double>> expected{{"CFS", 0.028316846592},
                                                               {"GPM", 6.30901964e-5},
                                                               {"MGD", 0.0438126363888889},
                                                               {"IMGD", 0.0526167824074},
                                                               {"AFD", 0.014274762611282},
                                                               {"LPS", 1e-3},
                                                               {"LPM", 1.66666666667e-5},
                                                               {"MLD", 0.0115740740741},
                                                               {"CMH", 2.77777777778e-4},
                                                               {"CMD", 1.15740740741e-5},
                                                               {"CMS", 1.0},
                                                               {"cms", 1.0}};
    for (const auto& [keyword, flow] : expected) {
        const auto units = kit::findInpUnits(keyword);
        ASSERT_TRUE(units.has_value()) << keyword;
        EXPECT_NEAR(units->flow, flow, 1e-10 * flow) << keyword;
    }
    EXPECT_FALSE(kit::findInpUnits("GPH").has_value());
    EXPECT_FALSE(kit::findInpUnits("").has_value());
}

TEST(InpUnits, lengths_and_diameters_follow_the_flow_keyword)
{
    const auto us = kit::findInpUnits("GPM");
    const auto metric = kit::findInpUnits("LPS");
    EXPECT_DOUBLE_EQ(us->length, 0.3048);
    EXPECT_DOUBLE_EQ(us->diameter, 0.0254);
    EXPECT_DOUBLE_EQ(us->roughness, 0.3048e-3);
    EXPECT_DOUBLE_EQ(metric->length, 1.0);
    EXPECT_DOUBLE_EQ(metric->diameter, 1e-3);
    EXPECT_DOUBLE_EQ(metric->roughness, 1e-3);
}

TEST(InpUnits, names_of_result_units_exist)
{
    for (const char* keyword :
         {"CFS", "GPM", "MGD", "IMGD", "AFD", "LPS", "LPM", "MLD", "CMH", "CMD", "CMS"}) {
        const Network network = importGood("[OPTIONS]\nUNITS " + std::string(keyword) + "\n" + kBase);
        for (const auto& [quantity, unit] : network.resultUnits) {
            const auto known = kit::findQuantity(quantity);
            ASSERT_TRUE(known.has_value()) << quantity;
            EXPECT_TRUE(kit::isUnitOf(unit, *known)) << keyword << ' ' << unit;
        }
    }
}

TEST(InpUnits, hazen_williams_constant_is_that_of_feet_in_metres)
{
    // 4.727 L C^-1.852 D^-4.871 Q^1.852 in feet: 1000 ft, 1 ft, C 100, 1 ft3/s lose 4.727e3 x 100^-1.852 ft.
    const double feet = 4727.0 * std::pow(100.0, -1.852);
    const double flow = 0.3048 * 0.3048 * 0.3048;
    const double r = kit::pipeResistance(kit::HeadLossLaw::hazenWilliams, 100.0, 304.8, 0.3048);
    EXPECT_NEAR(r * std::pow(flow, 1.852), feet * 0.3048, 1e-12 * feet);
    // The constant in metres is 10.667, by 0.3048^(4.871 - 3 x 1.852).
    EXPECT_NEAR(kit::pipeResistance(kit::HeadLossLaw::hazenWilliams, 1.0, 1.0, 1.0), 10.667, 5e-4);
}

TEST(InpUnits, chezy_manning_is_mannings_formula)
{
    // 300 mm, n 0.013, 100 m, 0.1 m3/s: h = 10.294 n^2 L Q^2 / D^(16/3) in metres. EPANET
    // has 1.49 for 1.486 and 1.333 for 4/3, 0.5 % below.
    const double exact = 10.294 * 0.013 * 0.013 * 100.0 * 0.01 / std::pow(0.3, 16.0 / 3.0);
    const double h = kit::pipeResistance(kit::HeadLossLaw::chezyManning, 0.013, 100.0, 0.3) * 0.01;
    EXPECT_NEAR(h / exact, 0.995, 0.002);
}

TEST(InpTime, times_of_the_file_are_read)
{
    EXPECT_DOUBLE_EQ(kit::inpTime("1:30").value(), 5400.0);
    EXPECT_DOUBLE_EQ(kit::inpTime("0:05:30").value(), 330.0);
    EXPECT_DOUBLE_EQ(kit::inpTime("1.5").value(), 5400.0);
    EXPECT_DOUBLE_EQ(kit::inpTime("90", "MIN").value(), 5400.0);
    EXPECT_DOUBLE_EQ(kit::inpTime("2", "days").value(), 172800.0);
    EXPECT_DOUBLE_EQ(kit::inpTime("45", "SEC").value(), 45.0);
    for (const char* bad : {"", ":", "1:", "1:2:3:4", "-1", "noon", "1:-5", "nan", "inf"})
        EXPECT_FALSE(kit::inpTime(bad).has_value()) << bad;
}

TEST(PumpLaw, one_point_is_a_parabola_from_four_thirds)
{
    const auto law = kit::PumpLaw::ofPoints({{0.03, 60.0}});
    ASSERT_TRUE(law.has_value());
    EXPECT_DOUBLE_EQ(law->shutoffHead(), 80.0);
    EXPECT_DOUBLE_EQ(law->head(0.03), 60.0);
    EXPECT_NEAR(law->zeroFlow(), 0.06, 1e-15);
    EXPECT_TRUE(law->isCubic());
}

TEST(PumpLaw, three_points_are_a_power_function_through_all)
{
    const auto law = kit::PumpLaw::ofPoints({{0.0, 62.0}, {0.03, 50.0}, {0.055, 24.0}});
    ASSERT_TRUE(law.has_value());
    EXPECT_NEAR(law->head(0.0), 62.0, 1e-12);
    EXPECT_NEAR(law->head(0.03), 50.0, 1e-12);
    EXPECT_NEAR(law->head(0.055), 24.0, 1e-12);
}

TEST(PumpLaw, more_points_are_straight_lines)
{
    const auto law = kit::PumpLaw::ofPoints({{0.01, 50.0}, {0.02, 40.0}, {0.03, 20.0}, {0.04, -10.0}});
    ASSERT_TRUE(law.has_value());
    EXPECT_DOUBLE_EQ(law->head(0.0), 60.0);  // the first line extended
    EXPECT_DOUBLE_EQ(law->head(0.015), 45.0);
    EXPECT_DOUBLE_EQ(law->head(0.025), 30.0);
    EXPECT_NEAR(law->zeroFlow(), 0.03 + 0.01 * 20.0 / 30.0, 1e-15);
}

TEST(PumpLaw, speed_follows_the_laws_of_affinity)
{
    auto law = kit::PumpLaw::ofPoints({{0.03, 60.0}});
    law->setSpeed(0.5);
    EXPECT_DOUBLE_EQ(law->head(0.015), 15.0);
    EXPECT_DOUBLE_EQ(law->slope(0.015), -2.0 * 20.0 / (0.03 * 0.03) * 0.03 * 0.5);
    EXPECT_NEAR(law->zeroFlow(), 0.03, 1e-15);
}

TEST(PumpLaw, constant_power_grows_with_the_cube_of_the_speed)
{
    auto law = kit::PumpLaw::ofPower(2.0);
    law.setSpeed(0.5);
    EXPECT_DOUBLE_EQ(law.head(0.1), 0.125 * 2.0 / 0.1);
    EXPECT_DOUBLE_EQ(law.slope(0.1), -0.125 * 2.0 / 0.01);
}

TEST(PumpLaw, curves_that_do_not_fall_are_none)
{
    EXPECT_FALSE(kit::PumpLaw::ofPoints({}).has_value());
    EXPECT_FALSE(kit::PumpLaw::ofPoints({{0.0, 60.0}}).has_value());
    EXPECT_FALSE(kit::PumpLaw::ofPoints({{0.03, 0.0}}).has_value());
    EXPECT_FALSE(kit::PumpLaw::ofPoints({{0.0, 50.0}, {0.01, 50.0}, {0.02, 40.0}}).has_value());
    EXPECT_FALSE(kit::PumpLaw::ofPoints({{0.0, 50.0}, {0.01, 55.0}}).has_value());
    EXPECT_FALSE(kit::PumpLaw::ofPoints({{0.0, 50.0}, {0.02, 40.0}, {0.01, 30.0}, {0.03, 20.0}}).has_value());
}

TEST(PumpCurveFit, points_increase_and_fall_to_no_less_than_zero)
{
    const std::vector<std::vector<kit::HeadPoint>> curves{
        {{0.03, 60.0}},
        {{0.0, 62.0}, {0.03, 50.0}, {0.055, 24.0}},
        {{0.0, 60.0}, {0.03, 30.0}, {0.06, 25.0}},
        {{0.0, 60.0}, {0.05, 55.0}},
        {{0.0, 60.0}, {0.02, 57.0}, {0.03, 48.0}, {0.04, 12.0}}};
    for (const auto& points : curves) {
        const auto law = kit::PumpLaw::ofPoints(points);
        ASSERT_TRUE(law.has_value());
        for (const double part : {0.1, 0.4, 0.7, 0.95}) {
            const kit::PumpCurveFit fit = kit::fitPump(*law, part * law->zeroFlow());
            ASSERT_GE(fit.points.size(), 4U);
            for (std::size_t i = 1; i < fit.points.size(); ++i) {
                EXPECT_GT(fit.points[i].flow, fit.points[i - 1].flow);
                EXPECT_LT(fit.points[i].head, fit.points[i - 1].head);
            }
            EXPECT_GE(fit.points.back().head, 0.0);
            EXPECT_EQ(fit.points.front().flow, 0.0);
        }
    }
}

TEST(PumpCurveFit, a_parabola_is_fitted_exactly)
{
    const auto law = kit::PumpLaw::ofPoints({{0.03, 60.0}});
    const kit::PumpCurveFit fit = kit::fitPump(*law, 0.02);
    EXPECT_LT(fit.largestError, 1e-9);
    for (const kit::HeadPoint& point : fit.points)
        EXPECT_NEAR(point.head, law->head(point.flow), 1e-3);  // 6 significant digits of a point
}

TEST(PumpCurveFit, constant_power_is_taylors_cubic_about_the_duty)
{
    // h (1 - x)(1 + x^2) with x = Q / duty - 1: four times the head at rest, none at twice the duty.
    const auto law = kit::PumpLaw::ofPower(2.0);
    const kit::PumpCurveFit fit = kit::fitPump(law, 0.1);
    EXPECT_DOUBLE_EQ(fit.points.front().head, 80.0);
    EXPECT_DOUBLE_EQ(fit.points.back().flow, 0.2);
    EXPECT_DOUBLE_EQ(fit.points.back().head, 0.0);
    const auto middle = fit.points[fit.points.size() / 2];
    EXPECT_DOUBLE_EQ(middle.flow, 0.1);
    EXPECT_DOUBLE_EQ(middle.head, 20.0);
    // At half the duty the law has 40 m, the cubic 1.5 x 1.25 x 20 m.
    EXPECT_NEAR(fit.largestError, 2.5, 1e-9);
}

TEST(ValveFit, head_and_slope_are_those_of_the_curve_at_the_duty)
{
    const auto law = kit::ValveLaw::ofPoints({{0.0, 0.0}, {0.01, 1.0}, {0.02, 4.5}, {0.04, 19.0}});
    ASSERT_TRUE(law.has_value());
    const kit::PowerFit fit = kit::fitValve(*law, 0.015);
    EXPECT_NEAR(fit.factor * std::pow(0.015, fit.exponent), 2.75, 1e-12);
    EXPECT_NEAR(fit.factor * fit.exponent * std::pow(0.015, fit.exponent - 1.0), 350.0, 1e-9);
}

TEST(ValveFit, a_curve_without_loss_is_none)
{
    EXPECT_FALSE(kit::ValveLaw::ofPoints({}).has_value());
    EXPECT_FALSE(kit::ValveLaw::ofPoints({{0.0, 0.0}}).has_value());
    EXPECT_FALSE(kit::ValveLaw::ofPoints({{0.0, 0.0}, {0.01, 0.0}}).has_value());
    EXPECT_FALSE(kit::ValveLaw::ofPoints({{0.02, 1.0}, {0.01, 2.0}}).has_value());
}

TEST(InpImport, a_hazen_williams_pipe_is_a_general_loss)
{
    const Network network = importGood("[OPTIONS]\nUNITS LPS\nHEADLOSS H-W\n" + kBase);
    const kit::Element& pipe = element(network, "P2");
    EXPECT_EQ(pipe.kind, kit::findElementKind("general_loss"));
    EXPECT_DOUBLE_EQ(pipe.length.value(), 500.0);
    EXPECT_DOUBLE_EQ(pipe.section->diameter, 0.2);
    EXPECT_DOUBLE_EQ(property(pipe, TAVELL_ELEMENT_GENERAL_LOSS_A), 1.0);
    EXPECT_DOUBLE_EQ(property(pipe, TAVELL_ELEMENT_GENERAL_LOSS_B), 0.0);
    EXPECT_DOUBLE_EQ(property(pipe, TAVELL_ELEMENT_GENERAL_LOSS_C), 0.0);
    EXPECT_DOUBLE_EQ(property(pipe, TAVELL_ELEMENT_GENERAL_LOSS_D), 1.852);
    EXPECT_DOUBLE_EQ(property(pipe, TAVELL_ELEMENT_K_SPECIFIED), 1.5);
    const double ck = 9.80665 * 10.667 * std::pow(100.0, -1.852) * std::pow(0.2, -4.871) * 500.0;
    EXPECT_NEAR(property(pipe, TAVELL_ELEMENT_GENERAL_LOSS_CK), ck, 1e-4 * ck);
    EXPECT_EQ(pipe.line, 11U);
}

TEST(InpImport, a_darcy_weisbach_pipe_is_a_pipe)
{
    const Network network =
        importGood("[OPTIONS]\nUNITS GPM\nHEADLOSS D-W\nVISCOSITY 1.3\n[JUNCTIONS]\n A 10 5\n"
                   "[RESERVOIRS]\n R 50\n[PIPES]\n P R A 1000 12 0.85 0\n Q R A 900 12 0.85 CV\n");
    const kit::Element& pipe = element(network, "P");
    EXPECT_EQ(pipe.kind, kit::findElementKind("pipe"));
    EXPECT_DOUBLE_EQ(pipe.length.value(), 304.8);
    EXPECT_DOUBLE_EQ(pipe.section->diameter, 0.3048);
    EXPECT_NEAR(pipe.section->area, 0.0729658769, 1e-9);
    EXPECT_DOUBLE_EQ(property(pipe, TAVELL_ELEMENT_ROUGHNESS), 0.85e-3 * 0.3048);
    EXPECT_EQ(element(network, "Q").kind, kit::findElementKind("non_return"));
    // 1.3 x 1.1e-5 ft2/s x 1000 kg/m3
    ASSERT_EQ(network.fluid.properties.size(), 2U);
    EXPECT_NEAR(network.fluid.properties[1].second, 1.3 * 1.02193344e-3, 1e-9);
}

TEST(InpImport, a_small_viscosity_is_a_kinematic_one)
{
    const Network network =
        importGood(kBase + "[OPTIONS]\nVISCOSITY 1e-6\nUNITS LPS\nSPECIFIC GRAVITY 0.9\n");
    EXPECT_DOUBLE_EQ(network.fluid.properties[0].second, 900.0);
    EXPECT_DOUBLE_EQ(network.fluid.properties[1].second, 900.0e-6);
}

TEST(InpImport, settings_are_those_of_a_schematic_network)
{
    const Network network = importGood("[TITLE]\nTwo pipes\n; no title\nand more ; here\n" + kBase);
    EXPECT_EQ(network.title, "Two pipes and more ; here");
    EXPECT_EQ(network.coordinates, kit::Coordinates::schematic);
    EXPECT_EQ(network.settings.minorLoss, 0);
    EXPECT_GE(network.settings.pressureDatum, 1e5);
    EXPECT_DOUBLE_EQ(network.gravity[2], -1.0);
    EXPECT_DOUBLE_EQ(node(network, "R").at[2], 50.0 * 0.3048);
    EXPECT_DOUBLE_EQ(node(network, "R").boundary->pressure.value(), 0.0);
}

TEST(InpImport, a_tank_has_the_pressure_of_its_initial_level)
{
    Findings losses;
    const auto network = import("[OPTIONS]\nUNITS LPS\n" + kBase +
                                    "[TANKS]\n T 40 3.5 0 6 10 0\n[PIPES]\n P3 B T 10 200 100\n",
                                losses);
    ASSERT_TRUE(network.has_value()) << losses.text();
    EXPECT_DOUBLE_EQ(node(*network, "T").at[2], 40.0);
    EXPECT_DOUBLE_EQ(node(*network, "T").boundary->pressure.value(), 1000.0 * 9.80665 * 3.5);
    EXPECT_EQ(find(losses, Code::tank_frozen).place.line, 12U);
}

TEST(InpImport, demands_replace_those_of_junctions_and_add_up)
{
    const Network network = importGood(
        "[OPTIONS]\nUNITS LPS\nDEMAND MULTIPLIER 2\nPATTERN D\n" + kBase +
            "[DEMANDS]\n B 10 P ;homes\n B 5\n A -4 ONE\n[PATTERNS]\n P 1 2\n P 3\n D 0.5\n ONE 1\n"
            "[TIMES]\nPATTERN TIMESTEP 2:00\nPATTERN START 1:00\n",
        5.0 * 3600.0);
    // 5 h after a start of 1 h the fourth step of 2 h begins, which is the first of three again.
    EXPECT_NEAR(outflow(network, "B"), 2.0 * (10.0 * 1.0 + 5.0 * 0.5) * 1e-3, 1e-15);
    EXPECT_NEAR(outflow(network, "A"), -8e-3, 1e-15);
    EXPECT_TRUE(node(network, "A").boundary->isInlet);
}

TEST(InpImport, the_default_pattern_is_1_when_there_is_one)
{
    EXPECT_NEAR(outflow(importGood("[OPTIONS]\nUNITS LPS\n" + kBase), "B"), 20e-3, 1e-15);
    EXPECT_NEAR(outflow(importGood("[OPTIONS]\nUNITS LPS\n" + kBase + "[PATTERNS]\n1 1.5 2\n"), "B"), 30e-3,
                1e-15);
    EXPECT_NEAR(outflow(importGood("[OPTIONS]\nUNITS LPS\n" + kBase + "[PATTERNS]\n1 1.5 2\n", 3600.0), "B"),
                40e-3, 1e-15);
}

TEST(InpImport, a_reservoirs_head_follows_its_pattern)
{
    const Network network = importGood("[OPTIONS]\nUNITS LPS\n[JUNCTIONS]\n A 0 1\n[RESERVOIRS]\n R 50 H\n"
                                       "[PIPES]\n P R A 10 100 100\n[PATTERNS]\n H 1.1 0.9\n",
                                       3600.0);
    EXPECT_DOUBLE_EQ(node(network, "R").at[2], 45.0);
}

TEST(InpImport, closed_links_and_check_valves_are_kept)
{
    const Network network =
        importGood(kBase + "[PIPES]\nP3 A B 10 100 100 0 CLOSED\nP4 A B 10 100 100 CV\nP5 A B 10 100 100\n"
                           "[STATUS]\nP5 closed\n");
    EXPECT_FALSE(element(network, "P1").isClosed);
    EXPECT_TRUE(element(network, "P3").isClosed);
    EXPECT_TRUE(element(network, "P4").hasCheckValve);
    EXPECT_TRUE(element(network, "P5").isClosed);
}

TEST(InpImport, pumps_have_their_curve_as_points_of_pressure)
{
    const Network network =
        importGood("[OPTIONS]\nUNITS LPS\n" + kBase + "[PUMPS]\nU R A HEAD C SPEED 0.5\n[CURVES]\nC 30 60\n");
    const kit::Element& pump = element(network, "U");
    EXPECT_EQ(pump.kind, kit::findElementKind("pump"));
    ASSERT_GE(pump.curve.size(), 4U);
    EXPECT_NEAR(pump.curve.front().pressure, 1000.0 * 9.80665 * 20.0, 1e-6);
    EXPECT_NEAR(pump.curve.back().volumeFlow, 0.03, 1e-9);
    EXPECT_DOUBLE_EQ(pump.referenceDensity.value(), 1000.0);
}

TEST(InpImport, speed_zero_closes_a_pump_and_a_pattern_wins_over_its_status)
{
    const std::string pumps = kBase + "[CURVES]\nC 30 60\n[PATTERNS]\nON 1.2 0\n";
    EXPECT_TRUE(element(importGood(pumps + "[PUMPS]\nU R A HEAD C SPEED 0\n"), "U").isClosed);
    EXPECT_TRUE(element(importGood(pumps + "[PUMPS]\nU R A HEAD C\n[STATUS]\nU 0\n"), "U").isClosed);
    const std::string patterned = pumps + "[PUMPS]\nU R A HEAD C PATTERN ON\n[STATUS]\nU CLOSED\n";
    EXPECT_FALSE(element(importGood(patterned), "U").isClosed);
    EXPECT_TRUE(element(importGood(patterned, 3600.0), "U").isClosed);
}

TEST(InpImport, valves_have_their_law)
{
    const Network network =
        importGood("[OPTIONS]\nUNITS LPS\n" + kBase +
                   "[VALVES]\nT A B 200 TCV 12 0\nF A B 200 FCV 7.5 0.3\nG A B 200 GPV C 0\n"
                   "O A B 200 TCV 12 3\n[CURVES]\nC 0 0\nC 10 1\nC 20 4\n[STATUS]\nO OPEN\n");
    const double area = 0.0314159265;
    const kit::Element& throttle = element(network, "T");
    EXPECT_EQ(throttle.kind, kit::findElementKind("general_loss"));
    EXPECT_NEAR(property(throttle, TAVELL_ELEMENT_GENERAL_LOSS_CK), 12.0 / (2.0 * area * area), 1e-3);
    EXPECT_DOUBLE_EQ(property(throttle, TAVELL_ELEMENT_GENERAL_LOSS_D), 2.0);
    EXPECT_NEAR(property(element(network, "O"), TAVELL_ELEMENT_GENERAL_LOSS_CK), 3.0 / (2.0 * area * area),
                1e-3);
    EXPECT_EQ(element(network, "F").kind, kit::findElementKind("control_valve"));
    EXPECT_DOUBLE_EQ(property(element(network, "F"), TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW), 7.5);
    EXPECT_EQ(element(network, "G").kind, kit::findElementKind("general_loss"));
}

TEST(InpImport, a_flow_limit_at_a_dead_end_stands_open)
{
    const Network network = importGood("[JUNCTIONS]\nEND 0\n" + kBase + "[VALVES]\nF B END 8 FCV 5 0\n");
    EXPECT_EQ(element(network, "F").kind, kit::findElementKind("general_loss"));
    EXPECT_FALSE(element(network, "F").property(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW).has_value());
}

TEST(InpImport, a_roughness_above_the_diameter_is_refused)
{
    const Findings losses = errorsOf("[JUNCTIONS]\nA 1 1\n[RESERVOIRS]\nR 9\n[PIPES]\nP R A 100 100 130\n"
                                     "[OPTIONS]\nUNITS LPS\nHEADLOSS D-W\n");
    EXPECT_EQ(count(losses, Code::inp_out_of_range), 1U);
}

TEST(InpImport, pressure_valves_are_refused_all_of_them)
{
    const std::string valves = kBase + "[VALVES]\nV1 A B 8 PRV 50 0\nV2 A B 8 PSV 50 0\nV3 A B 8 PBV 5 0\nV4 "
                                       "A B 8 PCV 50 2\nV5 A B 8 TCV 1 0\n";
    const Findings losses = errorsOf(valves);
    EXPECT_EQ(count(losses, Code::valve_not_supported), 4U);
    EXPECT_EQ(find(losses, Code::valve_not_supported).place.line, 10U);
    EXPECT_EQ(find(losses, Code::valve_not_supported).place.object, "element V1");
    EXPECT_EQ(find(losses, Code::valve_not_supported).place.pointer, "[VALVES]");
}

TEST(InpImport, frozen_pressure_valves_stand_open_and_are_listed)
{
    Findings losses;
    const auto network = import(
        kBase + "[VALVES]\nV1 A B 8 PRV 50 4\nV2 A B 8 PSV 50 0\nV3 A B 8 PRV 50 0\n[STATUS]\nV2 CLOSED\n",
        losses, true);
    ASSERT_TRUE(network.has_value()) << losses.text();
    EXPECT_EQ(count(losses, Code::valve_frozen), 2U);
    EXPECT_TRUE(element(*network, "V2").isClosed);
    const double area = element(*network, "V1").section->area;
    EXPECT_DOUBLE_EQ(property(element(*network, "V1"), TAVELL_ELEMENT_GENERAL_LOSS_CK),
                     4.0 / (2.0 * area * area));
}

TEST(InpImport, coordinates_place_the_drawing)
{
    Findings losses;
    const auto network =
        import(kBase + "[COORDINATES]\nR -5.5 1e2\nA 3 4\nB 7 8\nX 1 1\n[VERTICES]\nP1 1 2\nP1 2 3\nNO 1 1\n",
               losses);
    ASSERT_TRUE(network.has_value());
    EXPECT_DOUBLE_EQ(node(*network, "R").at[0], -5.5);
    EXPECT_DOUBLE_EQ(node(*network, "R").at[1], 100.0);
    ASSERT_EQ(element(*network, "P1").vertices.size(), 2U);
    EXPECT_DOUBLE_EQ(element(*network, "P1").vertices[1][0], 2.0);
    EXPECT_EQ(count(losses, Code::inp_drawing_ignored), 2U);
    EXPECT_EQ(count(losses, Code::inp_no_coordinates), 0U);
}

TEST(InpImport, nodes_without_coordinates_stand_apart)
{
    Findings losses;
    const auto network = import(kBase + "[COORDINATES]\nA 0 0\n", losses);
    ASSERT_TRUE(network.has_value());
    EXPECT_EQ(find(losses, Code::inp_no_coordinates).objects.size(), 2U);
    std::unordered_set<std::string> places;
    for (const kit::Node& each : network->nodes)
        places.insert(std::to_string(each.at[0]) + ' ' + std::to_string(each.at[1]));
    EXPECT_EQ(places.size(), network->nodes.size());
}

TEST(InpImport, words_are_taken_in_any_case_with_tabs_and_any_line_end)
{
    const Network network =
        importGood("[junctions] \r\n;ID\tElev\r\n A\t10 ;comment\r\n B 5 20\r\n\r\n[Reservoirs]\r\n"
                   "\"R 1\" 50\r\n[pipe]\r\nP1\t\"R 1\" A 1000 300 100 0 open;\r\nP2 A B 500 200 100\r\n"
                   "[Options]\r\nunits lps\r\nheadloss h-w\r\n[END]\r\n[PIPES]\r\nnonsense\r\n");
    EXPECT_EQ(network.nodes.size(), 3U);
    EXPECT_EQ(network.elements.size(), 2U);
    EXPECT_DOUBLE_EQ(element(network, "P1").length.value(), 1000.0);
    EXPECT_EQ(node(network, "R 1").name, "R 1");
}

TEST(InpImport, ids_keep_their_case_and_their_characters)
{
    const Network network =
        importGood("[JUNCTIONS]\na 1 1\nA 2 1\nM\xC3\xBCnchen/#\xC3\xA9 3\n[RESERVOIRS]\nR 9\n"
                   "[PIPES]\n1 R a 1 1 1\n01 R A 1 1 1\n2 R M\xC3\xBCnchen/#\xC3\xA9 1 1 1\n");
    EXPECT_EQ(network.nodes.size(), 4U);
    EXPECT_DOUBLE_EQ(node(network, "M\xC3\xBCnchen/#\xC3\xA9").at[2], 3.0 * 0.3048);
}

TEST(InpImport, every_error_is_listed_with_its_line)
{
    const Findings losses =
        errorsOf("[JUNCTIONS]\nA ten\nB 5\nB 6\n[RESERVOIRS]\nR 50\n[PIPES]\nP1 R A 1000 300\n"
                 "P2 A X 500 200 100\nP3 A B 500 -2 100\nP3 A B 500 2 100 0 AJAR\nP4 A A 1 1 1\n"
                 "[PUMPS]\nU1 R A HEAD NONE\nU2 R A SPEED 1\nU3 R A PATTERN P HEAD C\nU4 R A FOO 1\n"
                 "[VALVES]\nV A B 8 XYZ 1\n[OPTIONS]\nUNITS FURLONGS\nHEADLOSS X-Y\n"
                 "[STATUS]\nNO OPEN\nP1 AJAR\n[CURVES]\nC 1 5\nC 2 9\n[DEMANDS]\nZ 1\nA 1 NOPE\n"
                 "[TIMES]\nPATTERN TIMESTEP 0\n[PATTERNS]\nQ 1,5\n[EMITTERS]\nZ 1\n");
    EXPECT_EQ(count(losses, Code::inp_bad_number), 2U) << losses.text();     // ten; 1,5
    EXPECT_EQ(count(losses, Code::inp_duplicate_id), 1U) << losses.text();   // B
    EXPECT_EQ(count(losses, Code::inp_missing_field), 2U) << losses.text();  // P1, U2
    EXPECT_EQ(count(losses, Code::inp_unknown_node), 3U) << losses.text();   // X, Z, Z
    EXPECT_EQ(count(losses, Code::inp_out_of_range), 2U) << losses.text();   // -2; time step
    EXPECT_EQ(count(losses, Code::inp_same_nodes), 1U) << losses.text();     // P4
    EXPECT_EQ(count(losses, Code::inp_unknown_word), 5U) << losses.text();   // AJAR, FOO, XYZ, FURLONGS, X-Y
    EXPECT_EQ(count(losses, Code::inp_unknown_pattern), 2U) << losses.text();  // P, NOPE
    EXPECT_EQ(count(losses, Code::inp_unknown_link), 1U) << losses.text();     // NO; P1 was refused
    EXPECT_EQ(count(losses, Code::inp_unknown_curve), 1U) << losses.text();    // NONE
    EXPECT_EQ(count(losses, Code::inp_bad_curve), 1U) << losses.text();        // C rises
    EXPECT_EQ(find(losses, Code::inp_out_of_range).place.file, "test.inp");
    EXPECT_EQ(find(losses, Code::inp_same_nodes).place.line, 12U);
    EXPECT_EQ(find(losses, Code::inp_same_nodes).place.pointer, "[PIPES]");
    EXPECT_EQ(find(losses, Code::inp_same_nodes).place.object, "element P4");
}

TEST(InpImport, what_holds_no_network_is_refused)
{
    EXPECT_EQ(count(errorsOf(""), Code::inp_no_network), 1U);
    EXPECT_EQ(count(errorsOf("[JUNCTIONS]\nA 1\nB 1\n[PIPES]\nP A B 1 1 1\n"), Code::inp_no_network), 1U);
    EXPECT_EQ(count(errorsOf(kBase + "[JUNCTIONS]\nLONELY 3\n"), Code::inp_unconnected_node), 1U);
    EXPECT_EQ(find(errorsOf(kBase + "[JUNCTIONS]\nLONELY 3\n"), Code::inp_unconnected_node).place.line, 10U);
}

TEST(InpImport, numbers_too_large_to_count_with_are_refused)
{
    EXPECT_EQ(count(errorsOf("[JUNCTIONS]\nA 1 1e300\n[RESERVOIRS]\nR 9\n[PIPES]\nP R A 1 1 1\n[DEMANDS]\n"
                             "MULTIPLY 1e300\n"),
                    Code::inp_out_of_range),
              1U);
    EXPECT_GE(count(errorsOf("[JUNCTIONS]\nA 1 1\n[RESERVOIRS]\nR 1e308\n[PIPES]\nP R A 1 1 1\n"),
                    Code::inp_out_of_range),
              1U);
    EXPECT_EQ(count(errorsOf("[JUNCTIONS]\nA 1 1\n[RESERVOIRS]\nR 1\n[PIPES]\nP R A 1 1e-200 1\n"),
                    Code::inp_out_of_range),
              1U);
}

TEST(InpImport, losses_are_listed_by_line_and_section)
{
    Findings losses;
    const auto network = import(kBase + "[CONTROLS]\nLINK P1 OPEN AT TIME 3\nLINK P1 CLOSED AT TIME "
                                        "5\n[RULES]\nRULE 1\nIF TANK T LEVEL > 1\n"
                                        "THEN PUMP U STATUS = OPEN\nRULE 2\n[EMITTERS]\nA 0\nB "
                                        "2.5\n[ENERGY]\nGLOBAL PRICE 1\nDEMAND CHARGE 0\n"
                                        "[OPTIONS]\nDEMAND MODEL PDA\nTRIALS 40\nACCURACY 0.1\nFANCY "
                                        "3\n[LEAKAGE]\nP1 1 2\n[PEOPLE]\nsome\n"
                                        "[QUALITY]\nA 1\n[TIMES]\nDURATION 24\nNEW 1\n[DEMANDS]\nR 5\n",
                                losses);
    ASSERT_TRUE(network.has_value()) << losses.text();
    EXPECT_EQ(count(losses, Code::control_not_carried_over), 2U);
    EXPECT_EQ(count(losses, Code::rule_not_carried_over), 2U);
    EXPECT_EQ(count(losses, Code::emitter_not_carried_over), 1U);
    EXPECT_EQ(count(losses, Code::leakage_not_carried_over), 1U);
    EXPECT_EQ(count(losses, Code::pressure_driven_demand), 1U);
    EXPECT_EQ(count(losses, Code::section_not_carried_over), 2U);
    EXPECT_EQ(count(losses, Code::inp_unknown_option), 2U);
    EXPECT_EQ(count(losses, Code::inp_unknown_section), 1U);
    EXPECT_EQ(count(losses, Code::inp_demand_ignored), 1U);
    EXPECT_EQ(count(losses, Code::pipe_law_translated), 1U);
    EXPECT_EQ(find(losses, Code::option_not_carried_over).objects.size(), 2U);
    EXPECT_EQ(find(losses, Code::emitter_not_carried_over).place.line, 19U);
    EXPECT_EQ(find(losses, Code::emitter_not_carried_over).place.object, "node B");
}

TEST(InpImport, a_network_without_demand_gets_an_outlet)
{
    Findings losses;
    const auto one = import("[JUNCTIONS]\nA 1\n[RESERVOIRS]\nR 9\n[PIPES]\nP R A 1 1 1\n", losses);
    ASSERT_TRUE(one.has_value());
    EXPECT_EQ(count(losses, Code::boundary_added), 1U);
    EXPECT_FALSE(node(*one, "A").boundary->isInlet);
    const Network two =
        importGood("[JUNCTIONS]\nA 1\n[RESERVOIRS]\nR 9\nS 8\n[PIPES]\nP R A 1 1 1\nQ A S 1 1 1\n");
    EXPECT_TRUE(node(two, "R").boundary->isInlet);
    EXPECT_FALSE(node(two, "S").boundary->isInlet);
    EXPECT_DOUBLE_EQ(node(two, "S").boundary->pressure.value(), 0.0);
}

TEST(InpImport, pumps_and_valve_curves_are_fitted_about_the_solved_flow)
{
    // The pump carries the only demand, so its fit is about 20 l/s and its head exact there: head times flow
    // is 8.814 ft4/s per hp of 0.7457 kW.
    const std::string text = "[JUNCTIONS]\nA 0 0\nB 0 20\n[RESERVOIRS]\nR 0\n[PIPES]\nP A B 10 500 100\n"
                             "[PUMPS]\nU R A POWER 5\n[OPTIONS]\nUNITS LPS\n[DEMANDS]\nB 20\n";
    Findings losses;
    const auto network = kit::importInpText(text, "test.inp", InpOptions{}, losses);
    ASSERT_TRUE(network.has_value()) << losses.text();
    const kit::Finding& fit = find(losses, Code::pump_curve_fits_badly);
    ASSERT_FALSE(fit.numbers.empty());
    EXPECT_NEAR(fit.numbers[0].value, 0.02, 1e-6);
    const auto& curve = element(*network, "U").curve;
    const double product = 5.0 * 8.814 / 0.7457 * std::pow(0.3048, 4);
    EXPECT_NEAR(curve[curve.size() / 2].pressure, 1000.0 * 9.80665 * product / 0.02, 20.0);
}

TEST(InpImport, files_of_the_tests_and_real_ones_read_and_write_alike)
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(TAVELL_SOURCE "/tests/kit/networks"))
        paths.push_back(entry.path().string());
    if (std::filesystem::is_directory(TAVELL_NETWORKS)) {
        for (const auto& entry : std::filesystem::directory_iterator(TAVELL_NETWORKS))
            paths.push_back(entry.path().string());
    }
    InpOptions options;
    options.freezesPressureValves = true;
    options.solvesForDuties = false;
    std::size_t imported = 0;
    for (const std::string& path : paths) {
        if (std::filesystem::path(path).extension() != ".inp") continue;
        Findings losses;
        const auto network = kit::importInp(path, options, losses);
        ASSERT_TRUE(network.has_value()) << losses.text();
        const std::string text = kit::networkText(*network);
        Findings findings;
        const auto again = kit::readNetworkText(text, path, findings);
        ASSERT_TRUE(again.has_value()) << path << '\n' << findings.text();
        EXPECT_EQ(kit::networkText(*again), text) << path;
        ++imported;
    }
    EXPECT_GE(imported, 16U);
}

TEST(InpImport, a_file_that_is_missing_is_said)
{
    Findings losses;
    EXPECT_FALSE(kit::importInp("no such folder/network.inp", InpOptions{}, losses).has_value());
    EXPECT_EQ(count(losses, Code::cannot_open_file), 1U);
}

TEST(InpImport, pumps_of_one_curve_and_speed_share_it_by_name)
{
    const Network network = importGood("[OPTIONS]\nUNITS LPS\n" + kBase +
                                       "[PUMPS]\nU R A HEAD C\nV R A HEAD C\nW R A HEAD C SPEED 0.9\n"
                                       "[CURVES]\nC 30 60\n");
    ASSERT_EQ(network.curves.size(), 1U);
    EXPECT_EQ(network.curves.begin()->first, "C");
    EXPECT_EQ(element(network, "U").curveName, "C");
    EXPECT_EQ(element(network, "V").curveName, "C");
    EXPECT_TRUE(element(network, "U").curve.empty());
    EXPECT_TRUE(element(network, "W").curveName.empty());
    EXPECT_FALSE(element(network, "W").curve.empty());
    Findings findings;
    const auto again = kit::readNetworkText(kit::networkText(network), "n.json", findings);
    ASSERT_TRUE(again) << findings.text();
    EXPECT_EQ(again->curves.at("C").points.size(), network.curves.at("C").points.size());
}
