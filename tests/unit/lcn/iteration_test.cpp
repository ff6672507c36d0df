// iteration_test.cpp: the outer loop on small networks.
#include "lcn/iteration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "lcn/errors.h"
#include "lcn/node_equations.h"
#include "lcn/preparation.h"
#include "unit/support/graphs.h"
#include "unit/support/solver_network.h"

using SolverTest::makeCurve;
using SolverTest::SolverNetwork;

namespace
{

using Ids = std::vector<std::uint32_t>;

struct Solved : SolverNetwork {
    using SolverNetwork::SolverNetwork;

    /// Everything between the translation and the iteration.
    void prepare()
    {
        unsetenv("TAVELL_DEBUG_FILE");
        lcn::prepareElementCoefficients(elements, var);
        lcn::setInitialValues(nodes, elements, var);
        lcn::applyDebugAndOpenEnds(nodes, elements, var);
        lcn::keepAsPrevious(nodes, elements, var);
        lcn::setFlowsBetweenFixedPressures(nodes, elements, var);
    }

    bool iterate(lcn::CancelCallback cancel = nullptr)
    {
        return lcn::iterate(nodes, elements, var, lcn::kSteadyState, cancel);
    }

    bool solve()
    {
        prepare();
        return iterate();
    }
};

/// Fixed nodes 1 (2e5 Pa) and 4 (1e5 Pa), pipes 1-2, 2-3, 3-4.
struct Row : Solved {
    explicit Row(int type = lcn::kPipe) : Solved(4)
    {
        for (int i = 1; i <= 3; ++i)
            add(type, i, i + 1);
        for (int e = 1; e <= 3; ++e)
            elem(e).rough = 1e-4;
        connect();
        fixPressure(1, 2e5);
        fixPressure(4, 1e5);
    }
};

bool contains(const Ids& ids, std::uint32_t id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

bool always()
{
    return true;
}

int calls = 0;
bool atTheFifth()
{
    return ++calls == 5;
}

double darcyLoss(const lcnNET_elems& elem)
{
    const double Q = elem.Massflow / 1000.0;
    const double Re = std::fabs(Q) / elem.Area * elem.diam / 1e-6;
    const double x = std::log10(elem.rough / elem.diam / 3.7 + 5.74 / std::pow(Re, 0.9));
    return (0.25 / (x * x) * elem.length / elem.diam + elem.k) * 500.0 * Q * std::fabs(Q) /
           (elem.Area * elem.Area);
}

/// No reverse flow, no flow above a limit, no shut element that pressure pushes forward, no limited one that could carry
/// less.
void expectValidLimits(const Solved& network, unsigned seed)
{
    double average = 0.0;
    for (int e = 1; e <= network.var.ElemTotal; ++e)
        average += std::fabs(network.elem(e).Massflow) / network.var.ElemTotal;
    for (int e = 1; e <= network.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = network.elem(e);
        const double drop =
            network.nodes[elem.LocalStartNode].Pressure - network.nodes[elem.LocalEndNode].Pressure;
        if (elem.type == lcn::kNonReturn) {
            EXPECT_GE(elem.Massflow, -1.1e-6 * average) << "seed " << seed << " element " << e;
            if (elem.fix != 0) {
                EXPECT_LE(drop, 1e-3) << "seed " << seed << " element " << e;
            }
        }
        if (elem.type == lcn::kControlValve) {
            EXPECT_LE(std::fabs(elem.Massflow), std::fabs(elem.FixedFlow) * (1.0 + 1e-6))
                << "seed " << seed << " element " << e;
            const double alongFlow = std::copysign(drop, drop * elem.FixedFlow);
            if (elem.fix != 0) {
                EXPECT_GE(alongFlow, std::fabs(darcyLoss(elem)) - 1e-3)
                    << "seed " << seed << " element " << e;
            }
        }
    }
}

}  // namespace

TEST(Iteration, three_equal_pipes_share_the_pressure_equally)
{
    Row row;
    ASSERT_TRUE(row.solve());
    EXPECT_TRUE(row.var.Messages.empty());
    EXPECT_NEAR(row.nodes[2].Pressure, 2e5 - 1e5 / 3.0, 1.0);
    EXPECT_NEAR(row.nodes[3].Pressure, 1e5 + 1e5 / 3.0, 1.0);
    for (int e = 1; e <= 3; ++e) {
        EXPECT_NEAR(darcyLoss(row.elem(e)), 1e5 / 3.0, 1.0);
        EXPECT_NEAR(row.elem(e).Massflow, row.elem(1).Massflow, 2e-6 * row.elem(1).Massflow);
    }
}

TEST(Iteration, it_counts_its_iterations_and_raises_the_warm_flag_once_the_balance_is_met)
{
    Row row;
    ASSERT_TRUE(row.solve());
    EXPECT_GT(row.var.nIter, 5);
    EXPECT_LT(row.var.nIter, 100);
    EXPECT_EQ(row.var.warmStart(), 1);
    EXPECT_EQ(row.var.relaxpp, 0.5);
}

TEST(Iteration, a_reversed_pipe_only_changes_its_sign)
{
    Row row;
    Row reversed;
    std::swap(reversed.elem(2).StartNode, reversed.elem(2).EndNode);
    reversed.connect();
    ASSERT_TRUE(row.solve());
    ASSERT_TRUE(reversed.solve());
    EXPECT_NEAR(reversed.elem(2).Massflow, -row.elem(2).Massflow, 1e-9);
}

TEST(Iteration, mass_sources_of_boundary_nodes_are_what_they_supply)
{
    Row row;
    ASSERT_TRUE(row.solve());
    EXPECT_NEAR(row.nodes[1].Masssource, row.elem(1).Massflow, 1e-12);
    EXPECT_NEAR(row.nodes[4].Masssource, -row.elem(3).Massflow, 1e-12);
    EXPECT_EQ(row.nodes[2].Masssource, 0.0);
}

TEST(Iteration, an_empty_list_is_refused)
{
    Solved network(0);
    try {
        network.iterate();
        FAIL();
    } catch (const lcn::FatalException& error) {
        EXPECT_STREQ(error.what(), "lcnL_n has been called with an empty list");
    }
    EXPECT_TRUE(network.var.Messages.empty());
    network.nodes.resize(0);
    EXPECT_THROW(network.iterate(), lcn::FatalException);
}

TEST(Iteration, a_network_without_free_nodes_raises_code_33)
{
    Solved network(2);
    network.add(lcn::kPipe, 1, 2);
    network.connect();
    network.fixPressure(1, 2e5);
    EXPECT_THROW(network.solve(), lcn::FatalException);
    EXPECT_EQ(network.messageIds(), Ids{701201});
}

TEST(Iteration, a_limit_of_one_runs_exactly_one_iteration_and_says_so)
{
    Row row;
    row.var.numitermm = 1;
    row.var.circuitNumber = 6;
    EXPECT_FALSE(row.solve());
    EXPECT_EQ(row.var.nIter, 1);
    EXPECT_EQ(row.messageIds(), (Ids{700530, 700540, 700550}));
    ASSERT_EQ(row.var.Messages.size(), 3U);
    EXPECT_EQ(row.var.Messages[0].parameters.size(), 2U);
    EXPECT_EQ(row.var.Messages[0].parameters[0], 6.0);
    EXPECT_GT(row.var.Messages[0].parameters[1], 1e-6);  // an absolute value
    EXPECT_EQ(row.var.Messages[1].parameters[0], 6.0);
    EXPECT_GT(row.var.Messages[1].parameters[1], 1e-6);
    EXPECT_EQ(row.var.Messages[2].parameters, std::vector<double>{6.0});
}

TEST(Iteration, the_limit_is_told_even_when_the_last_iteration_met_the_criterion)
{
    Row row;
    ASSERT_TRUE(row.solve());
    Row limited;
    limited.var.numitermm = row.var.nIter;
    EXPECT_FALSE(limited.solve());
    EXPECT_EQ(limited.var.nIter, row.var.nIter);
    EXPECT_EQ(limited.messageIds(), Ids{700550});
    Row enough;
    enough.var.numitermm = row.var.nIter + 1;
    EXPECT_TRUE(enough.solve());
}

TEST(Iteration, a_cancelled_solve_stops_after_the_iteration_and_says_so)
{
    Row row;
    row.prepare();
    EXPECT_FALSE(row.iterate(always));
    EXPECT_EQ(row.var.nIter, 1);
    ASSERT_FALSE(row.var.Messages.empty());
    EXPECT_EQ(row.var.Messages.back().id, 701208U);
    EXPECT_TRUE(row.var.Messages.back().parameters.empty());

    Row later;
    later.prepare();
    calls = 0;
    EXPECT_FALSE(later.iterate(atTheFifth));
    EXPECT_EQ(later.var.nIter, 5);
    EXPECT_EQ(calls, 5);
}

TEST(Iteration, the_flow_update_counter_never_exceeds_a_limit_of_zero)
{
    Row row;
    row.var.numiterpp = 0;
    EXPECT_TRUE(row.solve());
    EXPECT_TRUE(row.var.Messages.empty());
}

TEST(Iteration, a_negative_flow_update_limit_is_told_and_leaves_the_solve_converged)
{
    Row row;
    row.var.numiterpp = -1;
    EXPECT_TRUE(row.solve());
    ASSERT_EQ(row.messageIds(), Ids{700480});
    EXPECT_EQ(row.var.Messages[0].parameters, (std::vector<double>{0.0, 0.0}));
}

TEST(Iteration, mode_4_runs_no_minor_loss_update)
{
    Row row;
    row.var.Minor = 4;
    EXPECT_TRUE(row.solve());
    for (int e = 1; e <= 3; ++e)
        EXPECT_EQ(row.elem(e).k, 0.0);
}

TEST(Iteration, minor_losses_that_do_not_settle_are_told)
{
    // a coefficient that is no number never settles: the comparison is false whatever the sum is
    Row row;
    row.elem(2).kSpecified = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(row.solve());
    EXPECT_TRUE(contains(row.messageIds(), 700500));
}

TEST(Iteration, a_specified_minor_loss_takes_part_in_the_law)
{
    Row row;
    row.elem(2).kSpecified = 40.0;
    ASSERT_TRUE(row.solve());
    EXPECT_NEAR(darcyLoss(row.elem(2)), row.nodes[2].Pressure - row.nodes[3].Pressure, 1.0);
    EXPECT_EQ(row.elem(2).k, 40.0);
}

TEST(Iteration, a_balance_that_is_stuck_above_the_criterion_lowers_the_relaxation_for_good)
{
    // a part with a net inflow can never be balanced: the error stays at the same value
    Solved network(4);
    network.add(lcn::kKvValve, 1, 2);
    network.add(lcn::kKvValve, 2, 3);
    network.add(lcn::kKvValve, 3, 4);
    for (int e = 1; e <= 3; ++e)
        network.elem(e).HWcoeff = 0.01;
    network.connect();
    network.fixFlow(1, 2.0);
    network.fixFlow(3, 1.0);
    network.var.numitermm = 50;
    EXPECT_FALSE(network.solve());
    EXPECT_EQ(network.var.relaxpp, 0.1);
    EXPECT_EQ(network.var.Messages.at(0).id, 701203U);
}

TEST(Iteration, a_damped_solve_meets_the_laws_and_not_only_its_damped_friction_factors)
{
    for (const bool sweepsPipes : {true, false}) {
        Row row;
        row.var.relaxpp = 0.1;
        row.prepare();
        for (int e = 1; e <= 3; ++e)
            row.elem(e).friction = 0.05;
        lcn::IterationPaths paths;
        paths.sweepsPipes = sweepsPipes;
        ASSERT_TRUE(lcn::iterate(row.nodes, row.elements, row.var, lcn::kSteadyState, nullptr, paths));
        double misses = 0.0;
        for (int e = 1; e <= 3; ++e) {
            const double pStart = row.nodes[e].Pressure;
            const double pEnd = row.nodes[e + 1].Pressure;
            misses += std::fabs(pStart - pEnd - darcyLoss(row.elem(e))) / ((pStart + pEnd) / 2.0);
        }
        EXPECT_LT(misses, row.var.Concrit) << sweepsPipes;
    }
}

TEST(Iteration, equal_errors_below_the_criterion_do_not_slow_a_solve_down)
{
    // two equal pipes in series are balanced exactly at every iteration, long before their law is met
    Solved network(3);
    network.add(lcn::kPipe, 1, 2);
    network.add(lcn::kPipe, 2, 3);
    for (int e = 1; e <= 2; ++e)
        network.elem(e).rough = 1e-4;
    network.connect();
    network.fixPressure(1, 2e5);
    network.fixPressure(3, 1e5);
    ASSERT_TRUE(network.solve());
    EXPECT_EQ(network.var.relaxpp, 0.5);
    EXPECT_NEAR(darcyLoss(network.elem(1)), 5e4, 1.0);
}

TEST(Iteration, input_that_is_no_number_stops_at_once)
{
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        Row row;
        row.elem(2).diam = bad;
        row.fixPressure(1, bad);
        EXPECT_FALSE(row.solve());
        EXPECT_LE(row.var.nIter, 2);
        EXPECT_FALSE(row.var.Messages.empty());
    }
}

TEST(Iteration, an_infinite_error_is_reported_as_a_mass_error)
{
    Row row;
    row.fixPressure(1, std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(row.solve());
    EXPECT_TRUE(contains(row.messageIds(), 700530));
}

TEST(Iteration, valves_in_series_have_their_closed_solution)
{
    Row row(lcn::kKvValve);
    for (int e = 1; e <= 3; ++e)
        row.elem(e).HWcoeff = 0.01 / e;  // coefficients X: resistance 100.103 / X^2 times 1, 4, 9
    ASSERT_TRUE(row.solve());
    const double r = 100.10310619938537 / (0.01 * 0.01);
    const double expected = 1000.0 * std::sqrt(100.0 / (14.0 * r));
    for (int e = 1; e <= 3; ++e)
        EXPECT_NEAR(row.elem(e).Massflow, expected, 1e-5 * expected);
}

TEST(Iteration, a_pump_between_pipes_meets_its_curve)
{
    Row row;
    row.fixPressure(4, 2e5);
    row.elem(2).type = lcn::kPump;
    row.elem(2).Curve =
        makeCurve({0.0, 0.01, 0.02, 0.03}, {50000.0, 48000.0, 42000.0, 32000.0});  // 50 - 2e4 q^2
    ASSERT_TRUE(row.solve());
    const double q = row.elem(2).Massflow / 1000.0;
    EXPECT_NEAR(row.nodes[3].Pressure - row.nodes[2].Pressure, 1000.0 * (50.0 - 2e4 * q * q), 1.0);
    EXPECT_NEAR(darcyLoss(row.elem(1)) + darcyLoss(row.elem(3)), 1000.0 * (50.0 - 2e4 * q * q), 1.0);
}

TEST(Iteration, a_straight_loss_curve_is_met_exactly)
{
    Row row;
    row.elem(2).type = lcn::kLossCurve;
    row.elem(2).Curve = makeCurve({0.01, 0.02, 0.03, 0.1}, {1e4, 2e4, 3e4, 1e5});
    ASSERT_TRUE(row.solve());
    EXPECT_NEAR(row.nodes[2].Pressure - row.nodes[3].Pressure, 1e6 * row.elem(2).Massflow / 1000.0, 1.0);
}

TEST(Iteration, hazen_williams_and_general_losses_meet_their_laws)
{
    Row row(lcn::kHazenWilliams);
    for (int e = 1; e <= 3; ++e)
        row.elem(e).HWcoeff = 120.0;
    row.elem(2).type = lcn::kGeneralLoss;
    row.elem(2).HWcoeff = 0.02;
    row.elem(2).Param1 = 1.0;
    row.elem(2).Param2 = 1.0;
    row.elem(2).Param3 = 5.0;
    row.elem(2).Param4 = 1.8;
    ASSERT_TRUE(row.solve());
    const double q = row.elem(1).Massflow / 1000.0;
    const double hazen = 1000.0 * 9.806 * 10.67 * 10.0 * std::pow(q / 120.0, 1.85) / std::pow(0.1, 4.87);
    EXPECT_NEAR(row.nodes[1].Pressure - row.nodes[2].Pressure, hazen, 1.0);
    EXPECT_NEAR(row.nodes[2].Pressure - row.nodes[3].Pressure, 1000.0 * 0.02 * 10.0 / 1e-5 * std::pow(q, 1.8),
                1.0);
}

TEST(Iteration, small_flows_from_one_pressure_converge)
{
    // every conductance starts at 1e6 and every pressure at exactly the boundary's
    struct {
        double flow;
        double pressure;
    } const cases[] = {{1e-5, 1e5}, {3e-3, 1e5}, {1.0, 1e5}, {3e-3, 3e7}, {1.0, 3e7}};
    for (const auto& [flow, pressure] : cases) {
        Row row;
        row.nodes[4].flag = lcn::kFreeNode;
        row.fixPressure(1, pressure);
        row.fixFlow(3, flow);
        EXPECT_TRUE(row.solve()) << flow << " kg/s at " << pressure << " Pa";
        EXPECT_NEAR(row.elem(1).Massflow, flow, 3e-6 * flow);
    }
}

TEST(Iteration, a_control_valve_holds_its_limit)
{
    Row row;
    row.elem(2).type = lcn::kControlValve;
    row.fixFlow(2, 5.0);
    ASSERT_TRUE(row.solve());
    for (int e = 1; e <= 3; ++e)
        EXPECT_NEAR(row.elem(e).Massflow, 5.0, 2e-5);
    EXPECT_EQ(row.elem(2).FlowLimited, 1);
    EXPECT_GT(row.nodes[2].Pressure - row.nodes[3].Pressure, darcyLoss(row.elem(2)));
}

TEST(Iteration, a_control_valve_with_a_generous_limit_is_a_plain_resistance)
{
    Row plain;
    ASSERT_TRUE(plain.solve());
    Row row;
    row.elem(2).type = lcn::kControlValve;
    row.fixFlow(2, 2.0 * plain.elem(2).Massflow);
    ASSERT_TRUE(row.solve());
    EXPECT_NEAR(row.elem(2).Massflow, plain.elem(2).Massflow, 1e-4);
    EXPECT_EQ(row.elem(2).fix, 0);
    EXPECT_EQ(row.elem(2).FlowLimited, 1);
}

TEST(Iteration, a_non_return_passes_forward_flow_and_blocks_reverse_flow)
{
    Row forward;
    forward.elem(2).type = lcn::kNonReturn;
    forward.fixFlow(2, 0.0);
    ASSERT_TRUE(forward.solve());
    EXPECT_GT(forward.elem(2).Massflow, 1.0);

    Row backward;
    backward.elem(2).type = lcn::kNonReturn;
    backward.fixFlow(2, 0.0);
    backward.fixPressure(1, 0.5e5);
    ASSERT_TRUE(backward.solve());
    EXPECT_EQ(backward.elem(2).Massflow, 0.0);
    EXPECT_EQ(backward.elem(2).fix, 1);
}

TEST(Iteration, a_control_valve_between_fixed_pressures_holds_its_limit_however_soon_the_rest_is_balanced)
{
    // nodes 1, 2, 3 fixed at 2e5, 1.5e5 and 1e5 Pa: the mean is that of node 2, so the loop 2-4-5 starts at rest, in
    // balance, in its first iteration
    Solved network(5);
    network.add(lcn::kControlValve, 1, 2);
    network.add(lcn::kPipe, 2, 3);
    network.add(lcn::kPipe, 2, 4);
    network.add(lcn::kPipe, 4, 5);
    network.add(lcn::kPipe, 5, 2);
    network.connect();
    network.fixPressure(1, 2e5);
    network.fixPressure(2, 1.5e5);
    network.fixPressure(3, 1e5);
    network.fixFlow(1, 1.0);
    ASSERT_TRUE(network.solve());
    EXPECT_NEAR(network.elem(1).Massflow, 1.0, 1e-6) << "after " << network.var.nIter << " iterations";
}

TEST(Iteration, a_part_without_pressure_is_held_and_the_rest_is_solved)
{
    // a ring 5-6-7 shut off behind a fixed zero flow at 3
    Solved network(7);
    for (int i = 1; i <= 3; ++i)
        network.add(lcn::kPipe, i, i + 1);
    network.add(lcn::kPump, 3, 5);
    network.add(lcn::kPipe, 5, 6);
    network.add(lcn::kPipe, 6, 7);
    network.add(lcn::kPipe, 7, 5);
    network.elem(4).Curve = makeCurve({0.0, 0.01, 0.02, 0.03}, {50000.0, 48000.0, 42000.0, 32000.0});
    for (int e = 1; e <= 7; ++e)
        network.elem(e).rough = 1e-4;
    network.connect();
    network.fixPressure(1, 2e5);
    network.fixPressure(4, 1e5);
    network.fixFlow(4, 0.0);
    ASSERT_TRUE(network.solve());
    EXPECT_EQ(network.messageIds(), (Ids{701204, 701205}));
    EXPECT_EQ(network.var.Messages[0].parameters, std::vector<double>{50.0});
    EXPECT_EQ(network.var.Messages[1].parameters, std::vector<double>{104.0});
    EXPECT_NEAR(darcyLoss(network.elem(1)) * 3.0, 1e5, 3.0);
    EXPECT_NEAR(network.elem(6).Massflow, 0.0, 1e-4);
    EXPECT_EQ(network.nodes[5].Pressure, 1.5e5);
}

TEST(Iteration, a_part_that_a_limit_cuts_off_during_the_iteration_is_told)
{
    // 3 and 4 give 2 kg/s to the flow end 5 and get 1 kg/s through the valve 2 -> 3, once it holds its limit
    Solved network(6);
    network.add(lcn::kPipe, 1, 2);
    network.add(lcn::kPipe, 2, 6);
    network.add(lcn::kControlValve, 2, 3);
    network.add(lcn::kPipe, 3, 4);
    network.add(lcn::kPipe, 4, 5);
    for (int e = 1; e <= 5; ++e)
        network.elem(e).rough = 1e-4;
    network.elem(3).fix = 1;
    network.elem(3).FixedFlow = 1.0;
    network.connect();
    network.fixPressure(1, 2e5);
    network.fixPressure(6, 1e5);
    network.fixFlow(5, 2.0);
    EXPECT_FALSE(network.solve());
    const auto told = std::find_if(network.var.Messages.begin(), network.var.Messages.end(),
                                   [](const lcn::Message& message) { return message.id == 701203; });
    ASSERT_NE(told, network.var.Messages.end());
    EXPECT_EQ(told->parameters, (std::vector<double>{30.0, -1.0}));
}

TEST(Iteration, element_pressures_are_brought_up_to_the_solution)
{
    Row row;
    ASSERT_TRUE(row.solve());
    const double V = row.elem(2).Massflow / 1000.0 / 0.01;
    EXPECT_NEAR(row.elem(2).Pressure, (row.nodes[2].Pressure + row.nodes[3].Pressure) / 2.0 - 500.0 * V * V,
                1e-6);
}

TEST(Iteration, two_limits_at_one_junction_leave_the_smaller_one_binding_when_a_non_return_shuts)
{
    // supply 1 -> 2 limited to 5 kg/s, draw-off 2 -> 3 limited to 3 kg/s, a second supply 4 -> 2 behind a non-return.
    // Unlimited, both valves violate and the non-return flows forward; once both hold their limits 2 kg/s would have to
    // leave through the non-return. It shuts, the draw-off holds 3 kg/s and the supply carries as much.
    Solved network(4);
    network.add(lcn::kControlValve, 1, 2);
    network.add(lcn::kControlValve, 2, 3);
    network.add(lcn::kNonReturn, 4, 2);
    for (int e = 1; e <= 3; ++e)
        network.elem(e).rough = 1e-4;
    network.connect();
    network.fixPressure(1, 2e5);
    network.fixPressure(3, 1e5);
    network.fixPressure(4, 1.95e5);
    network.fixFlow(1, 5.0);
    network.fixFlow(2, 3.0);
    network.fixFlow(3, 0.0);
    EXPECT_TRUE(network.solve());
    EXPECT_NEAR(network.elem(1).Massflow, 3.0, 1e-4);
    EXPECT_NEAR(network.elem(2).Massflow, 3.0, 1e-4);
    EXPECT_NEAR(network.elem(3).Massflow, 0.0, 1e-4);
}

TEST(Iteration, grids_with_control_valves_and_non_returns_end_in_a_valid_state)
{
    // 4 x 4 grids between two fixed pressures with two of each at random places and directions
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        Solved network(18);
        for (const auto& [a, b] : SolverTest::gridEdges(4, 4))
            network.add(lcn::kPipe, a, b);
        for (int i = 0; i < 4; ++i) {
            const int e = 1 + static_cast<int>(random() % 24);
            lcnNET_elems& elem = network.elem(e);
            elem.type = i % 2 == 0 ? lcn::kControlValve : lcn::kNonReturn;
            network.fixFlow(e, i % 2 == 0 ? 0.5 + 30.0 * unit(random) : 0.0);
            if (random() % 2 == 0) std::swap(elem.StartNode, elem.EndNode);
        }
        network.add(lcn::kPipe, 17, 1 + static_cast<int>(random() % 8));
        network.add(lcn::kPipe, 9 + static_cast<int>(random() % 8), 18);
        for (int e = 1; e <= network.var.ElemTotal; ++e)
            network.elem(e).rough = 1e-4;
        network.connect();
        network.fixPressure(17, 2e5);
        network.fixPressure(18, 1e5 + 2e5 * unit(random));
        ASSERT_TRUE(network.solve()) << seed;
        expectValidLimits(network, seed);
    }
}
