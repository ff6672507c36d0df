// flow_limits_test.cpp: when control valves and non-return elements are fixed and released.
#include "lcn/flow_limits.h"

#include <gtest/gtest.h>

#include <limits>

#include "unit/support/solver_network.h"

using lcn::FlowLimits;
using SolverTest::SolverNetwork;

namespace
{

/// Fixed nodes 1 and 4 at 2e5 and 1e5 Pa, free nodes 2 and 3; element 1 (1-2) and 2 (2-3) of a given type, pipes 3 (3-4)
/// and 4 (2-4), 5 (1-3).
struct Network : SolverNetwork {
    Network(int type1, int type2) : SolverNetwork(4)
    {
        add(type1, 1, 2);
        add(type2, 2, 3);
        add(lcn::kPipe, 3, 4);
        add(lcn::kPipe, 2, 4);
        add(lcn::kPipe, 1, 3);
        connect();
        fixPressure(1, 2e5);
        fixPressure(4, 1e5);
        nodes[2].Pressure = 1.6e5;
        nodes[3].Pressure = 1.3e5;
        for (int e = 1; e <= var.ElemTotal; ++e)
            elem(e).Massflow = 1.0;
        limits.prepare(nodes, elements, var);
    }

    bool update(int n, double massError = 0.0, double averageFlow = 1.0)
    {
        return limits.update(nodes, elements, var, n, massError, averageFlow);
    }

    FlowLimits limits;
};

/// A control valve 1-2 with this limit and flow beside a pipe 2-3.
Network valve(double limit, double massflow)
{
    Network network(lcn::kControlValve, lcn::kPipe);
    network.elem(1).FixedFlow = limit;
    network.elem(1).Massflow = massflow;
    return network;
}

}  // namespace

TEST(FlowLimits, they_start_unset)
{
    Network network(lcn::kControlValve, lcn::kNonReturn);
    network.elem(1).FlowLimited = network.elem(2).FlowLimited = network.elem(3).FlowLimited = 1;
    network.limits.prepare(network.nodes, network.elements, network.var);
    EXPECT_EQ(network.elem(1).FlowLimited, 0);
    EXPECT_EQ(network.elem(2).FlowLimited, 0);
    EXPECT_EQ(network.elem(3).FlowLimited, 1);  // a pipe's target is not theirs
}

TEST(FlowLimits, a_flow_above_its_limit_is_marked_for_the_next_assembly)
{
    for (const double massflow : {2.1, -2.1}) {
        Network network = valve(2.0, massflow);
        EXPECT_TRUE(network.update(3));
        EXPECT_EQ(network.elem(1).FlowLimited, 1);
        EXPECT_EQ(network.elem(1).fix, 0);
        EXPECT_EQ(network.elem(1).Massflow, massflow);
    }
    Network allowed = valve(2.0, 2.0);
    EXPECT_FALSE(allowed.update(3));
    EXPECT_EQ(allowed.elem(1).FlowLimited, 0);
}

TEST(FlowLimits, reverse_flow_above_a_millionth_of_the_average_is_marked)
{
    Network network(lcn::kPipe, lcn::kNonReturn);
    network.elem(2).Massflow = -0.9e-6;
    EXPECT_FALSE(network.update(3));
    network.elem(2).Massflow = -1.1e-6;
    EXPECT_TRUE(network.update(3));
    EXPECT_EQ(network.elem(2).FlowLimited, 1);
}

TEST(FlowLimits, nothing_is_decided_before_the_third_iteration_or_while_the_balance_is_off)
{
    Network network = valve(2.0, 3.0);
    EXPECT_FALSE(network.update(1));
    EXPECT_FALSE(network.update(2));
    EXPECT_FALSE(network.update(3, 1e-3));
    EXPECT_FALSE(network.update(3, -1e-3));
    EXPECT_FALSE(network.update(3, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(network.elem(1).FlowLimited, 0);
    EXPECT_TRUE(network.update(3, -0.99e-3));
}

TEST(FlowLimits, three_iterations_pass_between_two_changes)
{
    Network network(lcn::kControlValve, lcn::kNonReturn);
    network.elem(1).FixedFlow = 2.0;
    network.elem(1).Massflow = 3.0;
    EXPECT_TRUE(network.update(5));
    network.elem(2).Massflow = -1.0;
    EXPECT_FALSE(network.update(6));
    EXPECT_FALSE(network.update(7));
    EXPECT_TRUE(network.update(8));
    EXPECT_EQ(network.elem(2).FlowLimited, 1);
}

TEST(FlowLimits, several_violators_are_marked_at_once_when_all_nodes_stay_reached)
{
    Network network(lcn::kControlValve, lcn::kNonReturn);
    network.elem(1).FixedFlow = 2.0;
    network.elem(1).Massflow = 3.0;
    network.elem(2).Massflow = -1.0;
    EXPECT_TRUE(network.update(3));
    EXPECT_EQ(network.elem(1).FlowLimited, 1);
    EXPECT_EQ(network.elem(2).FlowLimited, 1);
}

TEST(FlowLimits, of_two_links_the_worse_is_marked_and_the_last_one_is_passed_over)
{
    // without pipes 3 to 5 node 2 and 3 hang on the valves 1 (1-2) and 6 (3-4)
    for (const bool firstIsWorse : {true, false}) {
        Network network(lcn::kControlValve, lcn::kPipe);
        network.add(lcn::kControlValve, 3, 4);
        network.connect();
        for (int e = 3; e <= 5; ++e)
            network.fixFlow(e, 0.0);
        network.elem(1).FixedFlow = network.elem(6).FixedFlow = 1.0;
        network.elem(1).Massflow = firstIsWorse ? 3.0 : 2.0;
        network.elem(6).Massflow = firstIsWorse ? 2.0 : 3.0;
        network.limits.prepare(network.nodes, network.elements, network.var);
        EXPECT_TRUE(network.update(3));
        EXPECT_EQ(network.elem(1).FlowLimited, firstIsWorse ? 1 : 0);
        EXPECT_EQ(network.elem(6).FlowLimited, firstIsWorse ? 0 : 1);
    }
}

TEST(FlowLimits, a_violator_that_is_the_only_link_is_marked_when_no_other_is_left)
{
    Network network(lcn::kControlValve, lcn::kPipe);
    for (int e = 3; e <= 5; ++e)
        network.fixFlow(e, 0.0);
    network.elem(1).FixedFlow = 1.0;
    network.elem(1).Massflow = 2.0;
    EXPECT_TRUE(network.update(3));
    EXPECT_EQ(network.elem(1).FlowLimited, 1);
}

TEST(FlowLimits, a_shut_non_return_opens_when_the_pressure_pushes_forward)
{
    Network network(lcn::kPipe, lcn::kNonReturn);
    network.fixFlow(2, 0.0);
    network.elem(2).FlowLimited = 1;
    EXPECT_TRUE(network.update(3, 0.0, 4.0));
    EXPECT_EQ(network.elem(2).fix, 0);
    EXPECT_EQ(network.elem(2).FlowLimited, 0);
    EXPECT_EQ(network.elem(2).Massflow, 0.001 * 4.0);
}

TEST(FlowLimits, a_shut_non_return_stays_shut_within_1e_minus_9_of_the_largest_pressure)
{
    Network network(lcn::kPipe, lcn::kNonReturn);
    network.fixFlow(2, 0.0);
    network.nodes[2].Pressure = 1.3e5 + 1.9e-4;  // 1e-9 x 2e5
    EXPECT_FALSE(network.update(3));
    network.nodes[2].Pressure = 1.3e5 + 2.1e-4;
    EXPECT_TRUE(network.update(3));
    Network reverse(lcn::kPipe, lcn::kNonReturn);
    reverse.fixFlow(2, 0.0);
    reverse.nodes[2].Pressure = 1e5;
    EXPECT_FALSE(reverse.update(3));
}

TEST(FlowLimits, a_control_valve_is_released_when_its_own_loss_at_the_limit_exceeds_the_drop)
{
    // K = 20000: loss at 1 kg/s about 20000 x 5000 x 1000 x 1e-6 = 1e5 Pa, the drop is 4e4 Pa
    Network network = valve(1.0, 1.0);
    network.fixFlow(1, 1.0);
    network.elem(1).FlowLimited = 1;
    network.elem(1).k = 20000.0;
    EXPECT_TRUE(network.update(3));
    EXPECT_EQ(network.elem(1).fix, 0);
    EXPECT_EQ(network.elem(1).FlowLimited, 0);
    EXPECT_EQ(network.elem(1).Massflow, 0.5);
}

TEST(FlowLimits, a_control_valve_with_pressure_to_spare_holds_its_limit)
{
    Network network = valve(1.0, 1.0);
    network.fixFlow(1, 1.0);
    EXPECT_FALSE(network.update(3));
    EXPECT_EQ(network.elem(1).fix, 1);
}

TEST(FlowLimits, the_drop_is_counted_in_the_direction_of_the_limited_flow)
{
    Network network = valve(-1.0, -1.0);  // flows 2 -> 1, against a pressure that falls 1 -> 2
    network.fixFlow(1, -1.0);
    EXPECT_TRUE(network.update(3));
    EXPECT_EQ(network.elem(1).Massflow, -0.5);
    Network falling = valve(-1.0, -1.0);
    falling.fixFlow(1, -1.0);
    falling.nodes[2].Pressure = 3e5;
    EXPECT_FALSE(falling.update(3));
}

TEST(FlowLimits, a_release_comes_before_any_marking)
{
    Network network(lcn::kControlValve, lcn::kNonReturn);
    network.elem(1).FixedFlow = 1.0;
    network.elem(1).Massflow = 5.0;
    network.fixFlow(2, 0.0);
    EXPECT_TRUE(network.update(3));
    EXPECT_EQ(network.elem(2).fix, 0);
    EXPECT_EQ(network.elem(1).FlowLimited, 0);
}

TEST(FlowLimits, an_element_is_released_at_most_50_times)
{
    Network network(lcn::kPipe, lcn::kNonReturn);
    int released = 0;
    for (int n = 3; n <= 3 * 60; n += 3) {
        network.fixFlow(2, 0.0);
        if (network.update(n)) ++released;
    }
    EXPECT_EQ(released, 50);
    EXPECT_EQ(network.elem(2).fix, 1);
}

TEST(FlowLimits, elements_at_a_flow_end_are_not_theirs)
{
    Network network(lcn::kNonReturn, lcn::kPipe);
    network.nodes[1].flag = lcn::kFlowBoundary;
    network.elem(1).Massflow = -1.0;
    network.limits.prepare(network.nodes, network.elements, network.var);
    EXPECT_FALSE(network.update(3));
    EXPECT_EQ(network.elem(1).FlowLimited, 0);
}

TEST(FlowLimits, at_the_end_all_of_them_are_marked_for_the_reports)
{
    const Network network(lcn::kControlValve, lcn::kNonReturn);
    network.limits.finish(network.elements);
    EXPECT_EQ(network.elem(1).FlowLimited, 1);
    EXPECT_EQ(network.elem(2).FlowLimited, 1);
    EXPECT_EQ(network.elem(3).FlowLimited, 0);
}
