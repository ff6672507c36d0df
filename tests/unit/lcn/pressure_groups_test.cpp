// pressure_groups_test.cpp: parts that no fixed pressure reaches.
#include "lcn/pressure_groups.h"

#include <gtest/gtest.h>

#include <vector>

#include "unit/support/solver_network.h"

using lcn::PressureGroups;
using SolverTest::SolverNetwork;

namespace
{

/// Fixed node 1, then pipes 1-2, 2-3, 3-4, 4-5 and the closed end 5-6: free nodes 2 to 5.
struct Chain : SolverNetwork {
    Chain() : SolverNetwork(6)
    {
        for (int i = 1; i <= 5; ++i)
            add(lcn::kPipe, i, i + 1);
        connect();
        fixPressure(1, 1e5);
        nodes[6].flag = lcn::kFlowBoundary;
        for (int i = 2; i <= 6; ++i)
            nodes[i].Pressure = 1000.0 * i;
        fixFlow(5, 0.0);
    }

    bool check()
    {
        const bool changed = groups.check(nodes, elements, var);
        groups.record(var);
        return changed;
    }

    void expectMessage(std::size_t index, std::uint32_t id, const std::vector<double>& parameters) const
    {
        ASSERT_LT(index, var.Messages.size());
        EXPECT_EQ(var.Messages[index].id, id);
        EXPECT_EQ(var.Messages[index].parameters, parameters);
    }

    PressureGroups groups;
};

}  // namespace

TEST(PressureGroups, a_sound_network_records_nothing_and_changes_nothing)
{
    Chain chain;
    EXPECT_FALSE(chain.check());
    EXPECT_TRUE(chain.var.Messages.empty());
    for (int i = 2; i <= 5; ++i)
        EXPECT_EQ(chain.nodes[i].flag, lcn::kFreeNode);
}

TEST(PressureGroups, a_balanced_part_has_its_first_node_held_at_its_present_pressure)
{
    Chain chain;
    chain.fixFlow(2, 0.0);  // cuts nodes 3, 4, 5 off
    EXPECT_TRUE(chain.check());
    EXPECT_EQ(chain.nodes[3].flag, lcn::kPressureBoundary);
    EXPECT_EQ(chain.nodes[3].Pressbound, 3000.0);
    EXPECT_EQ(chain.nodes[3].Pressure, 3000.0);
    EXPECT_EQ(chain.nodes[4].flag, lcn::kFreeNode);
    ASSERT_EQ(chain.var.Messages.size(), 3U);
    chain.expectMessage(0, 701204, {30});
    chain.expectMessage(1, 701205, {102});
    chain.expectMessage(2, 701205, {105});
}

TEST(PressureGroups, fixed_flows_that_cancel_bound_a_balanced_part)
{
    Chain chain;
    chain.fixFlow(2, 2.0);
    chain.fixFlow(5, 2.0);
    EXPECT_TRUE(chain.check());
    ASSERT_EQ(chain.var.Messages.size(), 3U);
    chain.expectMessage(0, 701204, {30});
    chain.expectMessage(1, 701206, {102});
    chain.expectMessage(2, 701206, {105});
}

TEST(PressureGroups, a_net_inflow_is_reported_and_nothing_else_happens)
{
    Chain chain;
    chain.fixFlow(2, 2.0);
    chain.fixFlow(5, 0.5);
    EXPECT_FALSE(chain.check());
    ASSERT_EQ(chain.var.Messages.size(), 1U);
    chain.expectMessage(0, 701203, {30, 1.5});
    EXPECT_EQ(chain.nodes[3].flag, lcn::kFreeNode);
}

TEST(PressureGroups, a_net_inflow_of_1e_minus_9_of_the_largest_flow_is_balanced)
{
    Chain chain;
    chain.fixFlow(2, 2.0);
    chain.fixFlow(5, 2.0 - 1.9e-9);
    EXPECT_TRUE(chain.check());
    Chain other;
    other.fixFlow(2, 2.0);
    other.fixFlow(5, 2.0 - 2.1e-9);
    EXPECT_FALSE(other.check());
    EXPECT_EQ(other.messageIds(), std::vector<std::uint32_t>{701203});
}

TEST(PressureGroups, a_network_without_any_fixed_pressure_is_one_group)
{
    Chain chain;
    chain.nodes[1].flag = lcn::kFlowBoundary;
    chain.fixFlow(1, 0.0);
    EXPECT_TRUE(chain.check());
    EXPECT_EQ(chain.nodes[2].flag, lcn::kPressureBoundary);
    chain.expectMessage(0, 701204, {20});
}

TEST(PressureGroups, a_single_free_node_between_fixed_flows_needs_nothing)
{
    Chain chain;
    chain.fixFlow(1, 2.0);
    chain.fixFlow(2, 2.0);
    chain.fixFlow(3, 2.0);
    chain.fixFlow(4, 2.0);
    EXPECT_FALSE(chain.check());
    EXPECT_TRUE(chain.var.Messages.empty());
}

TEST(PressureGroups, a_pending_limit_bounds_a_part_as_a_fixed_flow_does)
{
    Chain chain;
    chain.elem(2).type = lcn::kNonReturn;
    chain.elem(2).FlowLimited = 1;
    chain.elem(2).Massflow = -1.0;
    EXPECT_TRUE(chain.check());
    chain.expectMessage(1, 701205, {102});

    Chain limited;
    limited.elem(2).type = lcn::kControlValve;
    limited.elem(2).FlowLimited = 1;
    limited.elem(2).FixedFlow = 2.0;
    limited.elem(2).Massflow = -3.0;
    EXPECT_FALSE(limited.check());
    limited.expectMessage(0, 701203, {30, -2.0});
}

TEST(PressureGroups, an_element_without_a_law_carries_no_pressure)
{
    Chain chain;
    chain.elem(2).type = 0;
    EXPECT_TRUE(chain.check());
    chain.expectMessage(0, 701204, {30});
    chain.expectMessage(1, 701205, {102});
}

TEST(PressureGroups, two_parts_are_reported_each)
{
    Chain chain;
    chain.fixFlow(1, 0.0);
    chain.fixFlow(3, 0.0);
    EXPECT_TRUE(chain.check());
    EXPECT_EQ(chain.nodes[2].flag, lcn::kPressureBoundary);
    EXPECT_EQ(chain.nodes[4].flag, lcn::kPressureBoundary);
    EXPECT_EQ(chain.messageIds(),
              (std::vector<std::uint32_t>{701204, 701205, 701205, 701204, 701205, 701205}));
}

TEST(PressureGroups, checking_again_holds_the_same_node_without_reporting_it_again)
{
    Chain chain;
    chain.fixFlow(2, 0.0);
    EXPECT_TRUE(chain.check());
    EXPECT_FALSE(chain.check());
    EXPECT_EQ(chain.nodes[3].flag, lcn::kPressureBoundary);
    EXPECT_EQ(chain.var.Messages.size(), 3U);
}

TEST(PressureGroups, a_node_is_released_when_its_part_is_reached_again)
{
    Chain chain;
    chain.fixFlow(2, 0.0);
    chain.check();
    chain.elem(2).fix = 0;
    EXPECT_TRUE(chain.check());
    EXPECT_EQ(chain.nodes[3].flag, lcn::kFreeNode);
    EXPECT_FALSE(chain.check());
}

TEST(PressureGroups, a_released_node_gives_back_the_mass_source_it_had_while_it_was_held)
{
    // a held node stores its residual as a source, as every boundary node does; a free one must not keep it, or its
    // balance would be measured against a supply that is in no equation
    Chain chain;
    chain.fixFlow(2, 0.0);
    chain.check();
    chain.nodes[3].Masssource = 0.25;
    chain.elem(2).fix = 0;
    chain.check();
    EXPECT_EQ(chain.nodes[3].Masssource, 0.0);
}
