// solve_conditions_test.cpp: small circuits at the edge of what a solve has to do with them, found by fuzzing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
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
