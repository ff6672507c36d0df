// solve_conditions_test.cpp: small circuits at the edge of what a solve has to do with them, found by fuzzing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/networks.h"

using namespace support;

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kInfinite = std::numeric_limits<double>::infinity();

NodeData pressureAt(double x, int type, double pressure)
{
    NodeData node;
    node.at = {x, 0.0, 0.0};
    node.type = type;
    node.value = pressure;
    return node;
}

NodeData inner(double x)
{
    NodeData node;
    node.at = {x, 0.0, 0.0};
    return node;
}

ElementData pipe(int start, int end, double diameter = 0.1)
{
    ElementData element;
    element.start = start;
    element.end = end;
    element.diameter = diameter;
    return element;
}

/// A pressure at 0 and at 30 m, two inner nodes between.
Description line()
{
    Description d;
    d.nodes = {pressureAt(0.0, TAVELL_NODE_INLET, 2e5), inner(10.0), inner(20.0),
               pressureAt(30.0, TAVELL_NODE_OUTLET, 1e5)};
    d.elements = {pipe(0, 1), pipe(1, 2), pipe(2, 3)};
    return d;
}

/// A - B - C - D: flows are wanted in A-B and C-D, pressures are given at A and D alone, so that B and C have none to go
/// by. Stubs at A and D make all of it the inside of a network.
Description partBetweenFlows(double into, double outOf)
{
    Description d = line();
    d.nodes.push_back(inner(-10.0));
    d.nodes.push_back(inner(40.0));
    for (const std::size_t node : {1U, 2U}) {
        d.nodes[node].type = TAVELL_NODE_INLET;
        d.nodes[node].constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    }
    d.nodes[1].value = into;
    d.nodes[2].value = outOf;
    // a flow is wanted in the first element of its node
    d.elements = {pipe(0, 1), pipe(2, 3), pipe(1, 2), pipe(4, 0), pipe(3, 5)};
    return d;
}

bool hasFeedback(const Built& built, int id)
{
    const std::vector<int> ids = built.feedbackIds();
    return std::count(ids.begin(), ids.end(), id) > 0;
}

}  // namespace

TEST(SolveConditions, a_lone_node_at_infinity_is_no_result)
{
    Description d = line();
    d.nodes.push_back(inner(-kInfinite));
    const Built built(d);
    EXPECT_FALSE(built.solve());
    EXPECT_TRUE(hasFeedback(built, TAVELL_FEEDBACK_PRESSURE_ERROR));
}

TEST(SolveConditions, pressures_whose_difference_is_beyond_all_numbers_are_no_result)
{
    Description d = line();
    d.nodes.push_back(pressureAt(50.0, TAVELL_NODE_INLET, 1.7e308));
    d.nodes.push_back(pressureAt(60.0, TAVELL_NODE_OUTLET, -1.7e308));
    ElementData withoutLaw = pipe(4, 5);
    withoutLaw.type = 12;
    d.elements.push_back(withoutLaw);
    EXPECT_FALSE(Built(d).solve());
}

// Hagen-Poiseuille: m = rho pi D^4 dp / (128 mu L), at the viscosity of the temperature that the result shows.
TEST(SolveConditions, flow_between_fixed_pressures_has_the_viscosity_of_its_temperature)
{
    constexpr double kDiameter = 0.002;
    Description d;
    d.nodes = {pressureAt(0.0, TAVELL_NODE_INLET, 1.04e5), pressureAt(10.0, TAVELL_NODE_OUTLET, 1e5),
               inner(-10.0), inner(-20.0)};
    d.elements = {pipe(0, 1, kDiameter), pipe(0, 2), pipe(2, 3)};  // the others are a dead end
    const Built built(d);
    built.circuit().GetEntity()->SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
    built.node(0)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, 360.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    const double T = built.results(TAVELL_RESULT_ELEMENT_TEMPERATURE)[0];
    EXPECT_NEAR(T, 360.0, 1e-6) << "no heat is lost";
    const double mu = 2.86e-5 * std::exp((783.8 - 273.15) / (T + 396.8 - 546.3));
    const double expected = d.density * kPi * std::pow(kDiameter, 4.0) * 4e3 / (128.0 * mu * 10.0);
    // 1e-5: the constants of the fluid are kept in single precision
    EXPECT_NEAR(built.results(TAVELL_RESULT_MASS_FLOW)[0], expected, 1e-5 * expected);
}

// Heat can drive temperatures to and fro, and flows behind them: what is said to have converged fits together.
TEST(SolveConditions, flows_of_heated_pipes_have_the_viscosity_of_the_temperatures_shown)
{
    std::mt19937 random(7);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    int compared = 0;
    for (int i = 0; i < 400; ++i) {
        const double diameter = between(0.001, 0.004);
        Description d;
        d.nodes = {pressureAt(0.0, TAVELL_NODE_INLET, 1e5 + between(1.0, 500.0)),
                   pressureAt(10.0, TAVELL_NODE_OUTLET, 1e5), inner(-10.0), inner(-20.0)};
        d.elements = {pipe(0, 1, diameter), pipe(0, 2), pipe(2, 3)};
        const Built built(d);
        built.circuit().GetEntity()->SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
        built.node(0)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, between(280.0, 360.0));
        const int kind = i % 2 == 0 ? TAVELL_ENERGY_WALL_TEMPERATURE : TAVELL_ENERGY_FLUX;
        const double value = i % 2 == 0 ? between(280.0, 360.0) : between(0.0, 300.0);
        built.element(0)->GetEntity()->SetProperty(TAVELL_ELEMENT_ENERGY_TYPE, static_cast<double>(kind));
        built.element(0)->GetEntity()->SetProperty(TAVELL_ELEMENT_ENERGY_VALUE, value);
        if (!built.solveWithTemperatures()) continue;
        const double Re = std::fabs(built.results(TAVELL_RESULT_REYNOLDS)[0]);
        if (Re < 1.0 || Re > 2300.0) continue;  // no Hagen-Poiseuille flow, or friction at its cap
        ++compared;
        // the law of viscosity ends at 100 degC
        const double T = std::min(built.results(TAVELL_RESULT_ELEMENT_TEMPERATURE)[0], 373.15);
        const double mu = 2.86e-5 * std::exp((783.8 - 273.15) / (T + 396.8 - 546.3));
        const double m = built.results(TAVELL_RESULT_MASS_FLOW)[0];
        const double loss = 128.0 * mu * 10.0 * m / (d.density * kPi * std::pow(diameter, 4.0));
        const double given = built.results(TAVELL_RESULT_PRESSURE)[0] - 1e5;
        // the criterion is 1e-6 of the pressure; 1e-5 of the loss for constants in single precision
        EXPECT_NEAR(loss, given, 0.11 + 1e-5 * given) << i << ", " << T << " K";
    }
    EXPECT_GT(compared, 300);
}

TEST(SolveConditions, temperatures_that_never_settle_are_no_result_even_if_the_last_solve_for_them_did)
{
    // oil that a steep pipe cools; flow and temperature swing between two states
    Description d;
    d.nodes = {pressureAt(41.5, TAVELL_NODE_INLET, 5e4), inner(20.0), inner(127.5),
               pressureAt(0.0, TAVELL_NODE_OUTLET, 5e4)};
    d.nodes[0].at = {41.5, 63.0, 7.375};
    d.elements = {pipe(0, 1, 0.01), pipe(1, 2, 0.01), pipe(3, 0, 0.01)};
    d.density = 645.56194932212236;
    d.viscosity = 0.48559533933996502;
    d.friction = 3.0;
    d.minorLoss = 2.0;
    const Built built(d);
    built.circuit().GetEntity()->SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
    auto* const fluid = built.circuit().GetFluid()->GetEntity();
    fluid->SetProperty(TAVELL_FLUID_VISCOSITY_COEFFICIENT_1, 0.00069684671150832382);
    fluid->SetProperty(TAVELL_FLUID_SPECIFIC_HEAT, 1287.19);
    fluid->SetProperty(TAVELL_FLUID_CONDUCTIVITY, 0.106048);
    fluid->SetProperty(TAVELL_FLUID_DEFAULT_TEMPERATURE, 260.43960085409151);
    built.node(0)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, 280.0);
    for (int e = 0; e < 3; ++e) {
        auto* const entity = built.element(e)->GetEntity();
        entity->SetProperty(TAVELL_ELEMENT_ENERGY_TYPE, static_cast<double>(TAVELL_ENERGY_WALL));
        entity->SetProperty(TAVELL_ELEMENT_ENERGY_VALUE, 1.0);
    }
    EXPECT_FALSE(built.solveWithTemperatures());
    EXPECT_TRUE(hasFeedback(built, TAVELL_FEEDBACK_TEMPERATURE_ERROR)) << built.feedback();
}

TEST(SolveConditions, a_pump_without_a_cross_section_is_on_its_curve)
{
    // a short cut of much more flow makes the mass error of the pump's own loop look small
    Description d;
    d.nodes = {pressureAt(0.0, TAVELL_NODE_INLET, 5e4), inner(10.0),
               pressureAt(20.0, TAVELL_NODE_OUTLET, 5e4)};
    d.nodes[0].at[2] = 1.0;
    ElementData valve = pipe(0, 1);
    valve.type = TAVELL_KV_VALVE;
    valve.properties = {{TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 0.04}};
    ElementData pump = pipe(1, 2);
    pump.type = TAVELL_PUMP;
    pump.curveFlows = {0.0, 6e-5, 1.2e-4, 1.8e-4, 2.4e-4, 3e-4};
    pump.curvePressures = {1e6, 9.6e5, 8.4e5, 6.4e5, 3.6e5, 0.0};
    d.elements = {valve, pump, pipe(0, 2, 0.3)};
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    EXPECT_GT(std::fabs(flow[2]), 1000.0 * std::fabs(flow[1]));
    const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
    EXPECT_NEAR(pressure[1] - pressure[2], support::lossOf(d, pump, flow[1]), 2.0) << "of 1e6 Pa";
}

TEST(SolveConditions, flow_condition_at_a_junction_beside_a_fixed_pressure_is_held)
{
    Description d;
    NodeData demand = pressureAt(10.0, TAVELL_NODE_OUTLET, 6.0);
    demand.constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    d.nodes = {pressureAt(0.0, TAVELL_NODE_INLET, 2e5), demand};
    d.elements = {pipe(0, 1, 0.3), pipe(0, 1)};
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> flows = built.results(TAVELL_RESULT_MASS_FLOW);
    EXPECT_EQ(flows[0], 6.0) << "the first element joined to the node carries the value";
    EXPECT_NEAR(flows[1], -6.0, 6e-6) << "and the other takes it back";
}

TEST(SolveConditions, pipe_between_two_fixed_pressures_follows_its_law_whatever_flow_is_wanted)
{
    Description d;
    NodeData both = pressureAt(20.0, TAVELL_NODE_OUTLET, 0.0);
    both.constraint = TAVELL_CONSTRAINT_PRESSURE_AND_FLOW;
    d.nodes = {pressureAt(0.0, TAVELL_NODE_OUTLET, 1e5), inner(10.0), both};
    d.elements = {pipe(0, 1), pipe(2, 0, 0.01), pipe(1, 2)};
    const Built built(d);
    built.node(2)->GetEntity()->SetProperty(TAVELL_NODE_PRESSURE, 2e5);
    built.node(2)->GetEntity()->SetProperty(TAVELL_NODE_MASS_FLOW_RATE, 7.0);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_NEAR(support::lossOf(d, d.elements[1], built.results(TAVELL_RESULT_MASS_FLOW)[1]), 1e5, 0.1);
}

TEST(SolveConditions, element_without_a_law_carries_no_flow_into_a_part_without_pressure)
{
    Description d = line();
    d.nodes.push_back(inner(40.0));
    d.nodes.push_back(inner(50.0));
    d.nodes.push_back(inner(60.0));
    ElementData withoutLaw = pipe(3, 4);
    withoutLaw.type = 12;
    d.elements.push_back(withoutLaw);
    d.elements.push_back(pipe(4, 5));
    d.elements.push_back(pipe(5, 6));
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_TRUE(hasFeedback(built, TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE));
    EXPECT_EQ(built.results(TAVELL_RESULT_MASS_FLOW)[3], 0.0);
}

TEST(SolveConditions, flows_wanted_at_both_ends_of_a_part_without_a_pressure_are_kept)
{
    const Built built(partBetweenFlows(2.0, 2.0));
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_TRUE(hasFeedback(built, TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE));
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    for (const std::size_t e : {0U, 1U, 2U})
        EXPECT_NEAR(flow[e], 2.0, 2e-6) << e;
}

TEST(SolveConditions, wanted_flows_that_leave_a_part_without_a_pressure_unbalanced_are_told)
{
    const Built built(partBetweenFlows(2.0, 1.0));
    EXPECT_FALSE(built.solve());
    EXPECT_TRUE(hasFeedback(built, TAVELL_FEEDBACK_UNBALANCED_PART)) << built.feedback();
}
