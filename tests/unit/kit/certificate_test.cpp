#include <cmath>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tavell/Constants.h>

#include "certificate.h"
#include "element_laws.h"
#include "network_file.h"
#include "network_for_tests.h"

namespace kit
{

namespace
{

/// A pump that feeds two branches, one through a control valve at its limit, one through valves of every
/// other kind.
TestNetwork plant()
{
    TestNetwork made;
    made.node("well", {0.0, 0.0, 0.0}, pressureAt(1e5));
    made.node("pump out", {5.0, 0.0, 0.0});
    made.node("tee", {40.0, 0.0, 3.0});
    made.node("a", {60.0, 10.0, 3.0});
    made.node("b", {60.0, -10.0, 3.0});
    made.node("c", {80.0, -10.0, 3.0}, outflow(0.5));
    made.node("tank", {90.0, 0.0, 10.0}, pressureAt(1.1e5));
    made.curve("pump", TAVELL_PUMP, "well", "pump out",
               {{0.0, 4e5}, {0.002, 3.8e5}, {0.005, 3e5}, {0.008, 1e5}, {0.009, 0.0}});
    made.pipe("main", "pump out", "tee", 0.06, 5e-5).setProperty(TAVELL_ELEMENT_K_SPECIFIED, 1.5);
    made.controlValve("limit", "tee", "a", 0.05, 1.0).setProperty(TAVELL_ELEMENT_K_SPECIFIED, 2.0);
    made.hazenWilliams("hw", "a", "tank", 0.05, 130.0);
    Element& orifice = made.round("orifice", TAVELL_ORIFICE, "tee", "b", 0.05);
    orifice.setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.03);
    made.round("kv", TAVELL_KV_VALVE, "b", "c", 0.05).setProperty(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 40.0);
    made.round("check", TAVELL_NON_RETURN, "tank", "c", 0.05);
    made.generalLoss("general", "c", "tank", 0.05, 1e6, 0.0);
    made.curve("coil", TAVELL_LOSS, "b", "tank", {{0.001, 5e3}, {0.002, 2e4}, {0.003, 4.5e4}, {0.004, 8e4}});
    return made;
}

}  // namespace

TEST(Certificate, solved_plant_is_good_in_every_element)
{
    const TestNetwork made = plant();
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    const Certificate certificate = certify(made.network(), solution);
    EXPECT_TRUE(certificate.isGood) << certificateText(certificate);
    EXPECT_EQ(certificate.elementsChecked, made.network().elements.size());
    EXPECT_EQ(certificate.elementsNotChecked, 0U);
    EXPECT_EQ(certificate.modelHash.size(), 64U);
    // The control valve is at its limit.
    EXPECT_NEAR(solution.massFlow[made.positionOf("limit")], 1.0, 1e-6);
}

TEST(Certificate, flow_changed_by_a_hundredth_is_caught_in_every_element)
{
    const TestNetwork made = plant();
    const Solution solution = solveNetwork(made.network());
    for (std::size_t i = 0; i < made.network().elements.size(); ++i) {
        if (std::fabs(solution.massFlow[i]) < 1e-3) continue;
        Solution changed = solution;
        changed.massFlow[i] *= 1.01;
        EXPECT_FALSE(certify(made.network(), changed).isGood) << made.network().elements[i].name;
    }
}

TEST(Certificate, pressure_changed_by_a_hundredth_is_caught_at_every_node)
{
    const TestNetwork made = plant();
    const Solution solution = solveNetwork(made.network());
    for (std::size_t i = 0; i < made.network().nodes.size(); ++i) {
        Solution changed = solution;
        changed.pressure[i] *= 1.01;
        const Certificate certificate = certify(made.network(), changed);
        EXPECT_FALSE(certificate.isGood) << made.network().nodes[i].name;
        // Columns that follow from the pressures are changed too: the laws catch it alone.
        EXPECT_GT(certificate.relativeLawMismatch, kGoodLawMismatch) << made.network().nodes[i].name;
    }
}

TEST(Certificate, value_changed_by_a_hundredth_is_caught_in_every_column)
{
    const TestNetwork made = plant();
    std::vector<double> Solution::*const columns[] = {
        &Solution::pressure,          &Solution::head,     &Solution::nodeTemperature,
        &Solution::externalMassFlow,  &Solution::massFlow, &Solution::volumeFlow,
        &Solution::velocity,          &Solution::reynolds, &Solution::pressureDifference,
        &Solution::elementTemperature};
    const Solution solution = solveNetwork(made.network());
    for (const auto column : columns) {
        for (std::size_t i = 0; i < (solution.*column).size(); ++i) {
            const double value = (solution.*column)[i];
            if (std::isnan(value) || std::fabs(value) < 1e-3) continue;
            Solution changed = solution;
            (changed.*column)[i] = value * 1.01;
            EXPECT_FALSE(certify(made.network(), changed).isGood) << "value " << i << ", " << value;
        }
    }
}

TEST(Certificate, liquid_that_is_not_the_networks_is_caught)
{
    TestNetwork made = plant();
    made.network().fluid.name = "seawater";
    made.network().fluid.concentration = 0.035;
    const Solution solution = solveNetwork(made.network());
    ASSERT_TRUE(certify(made.network(), solution).isGood) << solution.findings.text();
    double FluidValues::*const values[] = {&FluidValues::temperature, &FluidValues::density,
                                           &FluidValues::viscosity, &FluidValues::specificHeat,
                                           &FluidValues::conductivity};
    for (const auto value : values) {
        Solution changed = solution;
        changed.fluid.*value *= 1.0001;
        EXPECT_FALSE(certify(made.network(), changed).isGood);
    }
}

TEST(Certificate, demand_that_is_not_met_is_caught)
{
    TestNetwork made = plant();
    const Solution solution = solveNetwork(made.network());
    made.nodeNamed("c").boundary->flow = 0.505;
    const Certificate certificate = certify(made.network(), solution);
    EXPECT_FALSE(certificate.isGood);
    EXPECT_EQ(certificate.worstNode, "c");
    EXPECT_NEAR(certificate.massImbalance, 0.005, 1e-5);
    EXPECT_NEAR(massResiduals(made.network(), solution)[5], -0.005, 1e-5);
}

TEST(Certificate, shut_check_valve_with_pressure_from_behind_is_a_mismatch)
{
    TestNetwork made = plant();
    const Solution solution = solveNetwork(made.network());
    const std::size_t check = made.positionOf("check");
    ASSERT_NEAR(solution.massFlow[check], 0.0, 1e-9);
    EXPECT_NEAR(lawMismatches(made.network(), solution)[check], 0.0, 1e-9);
    std::swap(made.elementNamed("check").from, made.elementNamed("check").to);
    EXPECT_GT(lawMismatches(made.network(), solution)[check], 1e3);
}

TEST(Certificate, control_valve_a_hair_below_its_limit_is_at_it)
{
    Findings findings;
    auto network = readNetworkFile(TAVELL_EXAMPLES "/networks/hanoi.tavell.json", findings);
    ASSERT_TRUE(network) << findings.text();
    // Hundreds of kg/s on average: the balance of the valve's two halves leaves more than 1e-6 of its limit.
    Element* valve = nullptr;
    for (Element& element : network->elements) {
        if (element.name == "pipe 27") valve = &element;
    }
    ASSERT_NE(valve, nullptr);
    valve->kind = elementKindOf(TAVELL_CONTROL_VALVE);
    valve->properties = {{TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 0.1}};
    const Solution solution = solveNetwork(*network);
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    const Certificate certificate = certify(*network, solution);
    EXPECT_TRUE(certificate.isGood) << certificateText(certificate);
}

TEST(Certificate, control_valve_that_is_shut_holds_back_pressure_from_both_sides)
{
    for (const bool isReversed : {false, true}) {
        TestNetwork made = plant();
        Element& valve = made.elementNamed("limit");
        valve.setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 0.0);
        if (isReversed) std::swap(valve.from, valve.to);
        const Solution solution = solveNetwork(made.network());
        ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
        const Certificate certificate = certify(made.network(), solution);
        EXPECT_TRUE(certificate.isGood) << certificateText(certificate);
    }
}

TEST(Certificate, control_valve_above_its_limit_is_a_mismatch)
{
    TestNetwork made = plant();
    const Solution solution = solveNetwork(made.network());
    made.elementNamed("limit").setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 0.99);
    EXPECT_FALSE(certify(made.network(), solution).isGood);
}

TEST(Certificate, leak_of_the_criterions_size_through_a_shut_check_valve_is_none)
{
    const TestNetwork made = plant();
    const Network& network = made.network();
    Solution solution = solveNetwork(network);
    const std::size_t check = made.positionOf("check");
    // Its pressure comes from behind, so that its own law would be far off.
    ASSERT_GT(solution.pressureDifference[check], 0.0);
    solution.pressure[network.elements[check].to] += 3e5;
    double sum = 0.0;
    for (const double flow : solution.massFlow)
        sum += std::fabs(flow);
    const double mean = sum / static_cast<double>(solution.massFlow.size());
    for (const double share : {-5e-6, -1e-6, 5e-6}) {
        solution.massFlow[check] = share * mean;
        EXPECT_EQ(lawMismatches(network, solution)[check], 0.0) << share;
    }
    solution.massFlow[check] = -1e-4 * mean;
    EXPECT_GT(std::fabs(lawMismatches(network, solution)[check]), 1e5);
}

TEST(Certificate, computed_junction_losses_are_counted_as_not_checked)
{
    TestNetwork made = plant();
    made.network().settings.minorLoss = 1;
    made.network().elements.pop_back();
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    const Certificate certificate = certify(made.network(), solution);
    EXPECT_TRUE(certificate.isGood) << certificateText(certificate);
    // hw, check and general have no K of their own.
    EXPECT_EQ(certificate.elementsNotChecked, 3U);
    EXPECT_EQ(certificate.notCheckedWhy, "3 have a junction loss that the library computes");
    EXPECT_TRUE(std::isnan(lawMismatches(made.network(), solution)[made.positionOf("hw")]));
}

TEST(Certificate, rounding_of_a_pressure_that_is_almost_nothing_is_no_mismatch)
{
    TestNetwork made;  // the dead end of an outlet at the lowest point, where the piezometric pressure is 0
    made.node("tank", {0.0, 0.0, 1.5}, pressureAt(0.0));
    made.node("outlet", {200.0, 2.0, -1.0}, pressureAt(0.0));
    made.node("branch", {300.0, 0.0, 0.0});
    made.node("end", {400.0, 0.0, 0.0});
    made.pipe("main", "tank", "outlet", 0.5, 6e-5);
    made.hazenWilliams("first", "outlet", "branch", 0.5, 61.0);
    made.hazenWilliams("second", "branch", "end", 0.25, 150.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_TRUE(solution.hasResults());
    const Certificate certificate = certify(made.network(), solution);
    EXPECT_LT(certificate.lawMismatch, 1e-6);
    EXPECT_TRUE(certificate.isGood) << certificate.relativeLawMismatch;
}

TEST(Certificate, temperatures_balance_and_a_changed_one_is_caught)
{
    TestNetwork made;
    made.network().settings.solvesTemperatures = true;
    Boundary hot = pressureAt(3e5);
    hot.temperature = 350.0;
    Boundary cold = inflow(0.5);
    cold.temperature = 290.0;
    made.node("hot", {0.0, 0.0, 0.0}, hot);
    made.node("mix", {10.0, 0.0, 0.0}, cold);
    made.node("out", {30.0, 0.0, 0.0}, outflow(2.0));
    made.pipe("p1", "hot", "mix", 0.05, 0.0);
    made.pipe("p2", "mix", "out", 0.05, 0.0).heat = Heat{TAVELL_ENERGY_HEAT, 2e4};
    made.elementNamed("p2").length = 40.0;
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    // 1.5 kg/s of 350 K and 0.5 kg/s of 290 K mix to 335 K; 20 kW in 2 kg/s of Cp 4179 add 2.393 K.
    EXPECT_NEAR(solution.nodeTemperature[1], 335.0, 1e-3);
    EXPECT_NEAR(solution.nodeTemperature[2], 335.0 + 2e4 / (2.0 * solution.fluid.specificHeat), 1e-3);
    EXPECT_NEAR(solution.elementTemperature[1], 335.0 + 1e4 / (2.0 * solution.fluid.specificHeat), 1e-3);
    const Certificate certificate = certify(made.network(), solution);
    EXPECT_TRUE(certificate.isGood) << certificateText(certificate);
    ASSERT_TRUE(certificate.energyImbalance);
    Solution changed = solution;
    changed.nodeTemperature[2] += 1.0;
    EXPECT_FALSE(certify(made.network(), changed).isGood);
}

TEST(Certificate, solution_without_results_is_not_good)
{
    const TestNetwork made = plant();
    const Certificate certificate = certify(made.network(), Solution());
    EXPECT_FALSE(certificate.isGood);
    EXPECT_EQ(certificate.elementsChecked, 0U);
}

TEST(Certificate, every_example_is_good)
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TAVELL_EXAMPLES "/networks")) {
        if (entry.path().extension() != ".json") continue;
        Findings findings;
        const auto network = readNetworkFile(entry.path().string(), findings);
        ASSERT_TRUE(network) << findings.text();
        const Solution solution = solveNetwork(*network);
        ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
        const Certificate certificate = certify(*network, solution);
        EXPECT_TRUE(certificate.isGood) << entry.path() << certificateText(certificate);
        ++count;
    }
    EXPECT_GE(count, 8U);
}

TEST(LossParts, parts_add_up_to_the_pressure_between_the_ends)
{
    const TestNetwork made = plant();
    const Network& network = made.network();
    const Solution solution = solveNetwork(network);
    const std::vector<LossParts> parts = lossParts(network, solution);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const LossParts& part = parts[i];
        EXPECT_NEAR(part.friction + part.minor + part.other + part.height - part.pump,
                    -solution.pressureDifference[i], 1e-6)
            << network.elements[i].name;
    }
    // 3 m up, and K 1.5 on the velocity of the main
    const std::size_t main = made.positionOf("main");
    const double density = solution.fluid.density;
    EXPECT_NEAR(parts[main].height, density * 9.80665 * 3.0, 1e-6);
    EXPECT_NEAR(parts[main].minor, 1.5 * density * std::pow(solution.velocity[main], 2.0) / 2.0, 1e-6);
    EXPECT_NEAR(parts[main].other, 0.0, 0.1);
    EXPECT_GT(parts[made.positionOf("pump")].pump, 2e5);
}

// docs/theory.md section 5: the table of values at Re 1e5 and 5e3 with t = 1e-4.
TEST(ElementLaws, friction_factors_are_those_of_the_table)
{
    struct Row {
        int method;
        double at1e5;
        double at5e3;
    };
    const Row rows[] = {{0, 0.018452, 0.037974}, {2, 0.018514, 0.037505}, {3, 0.018265, 0.037800},
                        {4, 0.018514, 0.037504}, {5, 0.018383, 0.037633}, {6, 0.018525, 0.037550}};
    for (const Row& row : rows) {
        EXPECT_NEAR(darcyFriction(row.method, 1e5, 1e-4), row.at1e5, 6e-7) << row.method;
        EXPECT_NEAR(darcyFriction(row.method, 5e3, 1e-4), row.at5e3, 6e-7) << row.method;
    }
    EXPECT_DOUBLE_EQ(darcyFriction(0, 1000.0, 1e-4), 0.064);
    EXPECT_DOUBLE_EQ(darcyFriction(0, 0.5, 1e-4), 64.0);
    const double middle = (64.0 / 2300.0 + darcyFriction(0, 5000.0, 1e-4)) / 2.0;
    EXPECT_NEAR(darcyFriction(0, 3650.0, 1e-4), middle, 1e-15);
}

// docs/theory.md section 8: C 0.61457 at beta 0.5, Re 1e5, corner tappings, D 50 mm;
// examples/networks/orifice_meter.json has 0.6068 for D 100 mm at Re 101660.
TEST(ElementLaws, discharge_coefficients_are_those_of_the_document)
{
    EXPECT_NEAR(orificeDischarge(0.025, 0.05, 0.2, 1e5), 0.61457, 5e-6);
    EXPECT_NEAR(orificeDischarge(0.05, 0.1, 0.1, 101660.0), 0.6068, 5e-5);
}

// The parabola 300 - 2e6 Q^2 is a cubic itself: its fit is exact and ends at sqrt(1.5e-4) m3/s.
TEST(ElementLaws, pump_fit_of_a_parabola_is_the_parabola)
{
    std::vector<CurvePoint> points;
    for (const double flow : {0.0, 0.002, 0.005, 0.008, 0.01})
        points.push_back({flow, 1000.0 * (300.0 - 2e6 * flow * flow)});
    const PumpFit fit(points, 1000.0);
    EXPECT_NEAR(fit.endFlow(), std::sqrt(1.5e-4), 1e-12);
    EXPECT_NEAR(fit.rise(0.004, 900.0), 900.0 * (300.0 - 32.0), 1e-6);
    // Outside, the line through shut-off and end.
    EXPECT_NEAR(fit.rise(2.0 * fit.endFlow(), 1000.0), -300000.0, 1e-5);
    EXPECT_NEAR(fit.rise(-fit.endFlow(), 1000.0), 600000.0, 1e-5);
}

// docs/theory.md section 15: 1.000e-3 Pa s at 20 degC and 3.51e-4 at 80 degC with the constants of a new
// circuit.
TEST(ElementLaws, viscosity_of_water_is_that_of_the_document)
{
    FluidValues water;
    water.viscosityCoefficients[0] = 2.86e-5;
    water.viscosityCoefficients[1] = 783.8;
    water.viscosityCoefficients[2] = 396.8;
    EXPECT_NEAR(vogelViscosity(water, 293.15), 1.000e-3, 2e-6);
    EXPECT_NEAR(vogelViscosity(water, 353.15), 3.51e-4, 1e-6);
    EXPECT_EQ(vogelViscosity(water, 500.0), vogelViscosity(water, 373.15));
}

}  // namespace kit
