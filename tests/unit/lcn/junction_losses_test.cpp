// junction_losses_test.cpp: minor losses from the geometry of a junction. The numbers are by hand.
#include "lcn/junction_losses.h"

#include <gtest/gtest.h>

#include <cmath>

#include "unit/support/solver_network.h"

using SolverTest::SolverNetwork;

namespace
{

/// sin^2(22.5 deg) = 0.1464466: 0.9457 x 0.1464466 + 2.047 x 0.0214466
constexpr double kBend45 = 0.1823958;
/// sin^2(45 deg) = 1/2: 0.9457 / 2 + 2.047 / 4
constexpr double kBend90 = 0.9846;
/// A branch at a right angle with half the velocity: 1/4 + 1 - cos(67.5 deg)
constexpr double kBranch90 = 0.8673166;
/// The same on the branch's own velocity.
constexpr double kBranch90Own = 4.0 * kBranch90;

struct Direction {
    double x, y, z;
};
constexpr Direction kEast{1.0, 0.0, 0.0};
constexpr Direction kWest{-1.0, 0.0, 0.0};
constexpr Direction kNorth{0.0, 1.0, 0.0};
constexpr Direction kUp{0.0, 0.0, 1.0};
constexpr Direction kUnknown{0.0, 0.0, 0.0};

/// Boundary nodes and the free node 1; elements of density 1000 kg/m3 and 0.01 m2 area: 1 kg/s is 0.1 m/s.
struct Junctions : SolverNetwork {
    explicit Junctions(int nodeCount) : SolverNetwork(nodeCount)
    {
        for (int i = 2; i <= nodeCount; ++i)
            nodes[i].flag = lcn::kPressureBoundary;
    }

    /// An element with flow from start to end, drawn in this direction.
    lcnNET_elems& addFlow(int start, int end, double flow, Direction direction, int type = lcn::kPipe)
    {
        const int e = add(type, start, end);
        elem(e).Massflow = flow;
        elem(e).Vx = direction.x;
        elem(e).Vy = direction.y;
        elem(e).Vz = direction.z;
        return elem(e);
    }

    void addLosses()
    {
        connect();
        lcn::addJunctionLosses(nodes, elements, var);
    }
};

/// Element 1 into node 1, east, and element 2 out of it.
struct InLine : Junctions {
    explicit InLine(Direction out, double inArea = 0.01, double outArea = 0.01, double flow = 1.0)
        : Junctions(3)
    {
        addFlow(2, 1, flow, kEast).Area = inArea;
        addFlow(1, 3, flow, out).Area = outArea;
    }
};

/// 4 kg/s from the west; half goes on east through element 2, half turns north through element 3.
struct Dividing : Junctions {
    Dividing() : Junctions(4)
    {
        addFlow(2, 1, 4.0, kEast);
        addFlow(1, 3, 2.0, kEast);
        addFlow(1, 4, 2.0, kNorth);
    }
};

}  // namespace

TEST(JunctionLosses, expansion_is_the_square_of_the_missing_area_share)
{
    EXPECT_DOUBLE_EQ(lcn::expansionLoss(0.01, 0.02), 0.25);
    EXPECT_DOUBLE_EQ(lcn::expansionLoss(0.01, 0.1), 0.81);
    EXPECT_EQ(lcn::expansionLoss(0.01, 0.01), 0.0);
    EXPECT_EQ(lcn::expansionLoss(0.02, 0.01), 0.0);
}

TEST(JunctionLosses, contraction_is_half_of_the_missing_area_share)
{
    EXPECT_DOUBLE_EQ(lcn::contractionLoss(0.02, 0.01), 0.25);
    EXPECT_DOUBLE_EQ(lcn::contractionLoss(0.1, 0.01), 0.45);
    EXPECT_EQ(lcn::contractionLoss(0.01, 0.01), 0.0);
    EXPECT_EQ(lcn::contractionLoss(0.01, 0.02), 0.0);
}

TEST(JunctionLosses, bend_at_0_45_90_and_180_degrees)
{
    EXPECT_EQ(lcn::bendLoss(1.0), 0.0);
    EXPECT_NEAR(lcn::bendLoss(std::sqrt(0.5)), kBend45, 1e-6);
    EXPECT_NEAR(lcn::bendLoss(0.0), kBend90, 1e-12);
    EXPECT_NEAR(lcn::bendLoss(-1.0), 2.9927, 1e-12);  // 0.9457 + 2.047
}

TEST(JunctionLosses, a_deflection_within_rounding_is_none)
{
    EXPECT_EQ(lcn::bendLoss(1.0 - 5e-13), 0.0);
    EXPECT_GT(lcn::bendLoss(1.0 - 2e-12), 0.0);
}

TEST(JunctionLosses, a_branch_straight_through_is_the_square_of_the_velocity_change)
{
    EXPECT_DOUBLE_EQ(lcn::branchLoss(0.5, 1.0), 0.25);
    EXPECT_DOUBLE_EQ(lcn::branchLoss(3.0, 1.0), 4.0);
    EXPECT_EQ(lcn::branchLoss(1.0, 1.0), 0.0);
}

TEST(JunctionLosses, a_branch_at_a_right_angle_with_half_the_velocity)
{
    EXPECT_NEAR(lcn::branchLoss(0.5, 0.0), kBranch90, 1e-6);
    EXPECT_NEAR(lcn::branchLossOnOwnVelocity(0.5, 0.0), kBranch90Own, 1e-5);
}

TEST(JunctionLosses, a_branch_back_on_its_supply)
{
    // cos(135 deg) = -0.7071068: 1 + 1 + 2 x 0.7071068
    EXPECT_NEAR(lcn::branchLoss(1.0, -1.0), 3.4142136, 1e-6);
}

TEST(JunctionLosses, a_branch_loss_is_never_negative_and_never_above_200)
{
    for (int i = 0; i <= 400; ++i)
        for (int degrees = 0; degrees <= 180; ++degrees) {
            const double r = 0.01 * i;
            const double cosine = std::cos(degrees * std::acos(-1.0) / 180.0);
            ASSERT_GE(lcn::branchLoss(r, cosine), 0.0) << r << ' ' << degrees;
            const double own = lcn::branchLossOnOwnVelocity(r, cosine);
            ASSERT_TRUE(own >= 0.0 && own <= 200.0) << r << ' ' << degrees << ' ' << own;
        }
}

TEST(JunctionLosses, a_branch_that_hardly_flows_loses_200_times_its_own_dynamic_pressure)
{
    EXPECT_EQ(lcn::kLargestK, 200.0);
    for (const double r : {0.0, 1e-300, 1e-10, 0.01})
        for (const double cosine : {1.0, 0.0, -1.0})
            EXPECT_EQ(lcn::branchLossOnOwnVelocity(r, cosine), 200.0) << r << ' ' << cosine;
    EXPECT_NEAR(lcn::branchLossOnOwnVelocity(0.1, 1.0), 81.0, 1e-9);  // 0.9^2 / 0.1^2
}

TEST(JunctionLosses, a_straight_joint_of_equal_areas_loses_nothing)
{
    InLine net(kEast);
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_EQ(net.elem(2).k, 0.0);
}

TEST(JunctionLosses, an_expansion_counts_on_the_narrow_inflow)
{
    InLine net(kEast, 0.01, 0.02);
    net.addLosses();
    EXPECT_DOUBLE_EQ(net.elem(1).k, 0.25);
    EXPECT_EQ(net.elem(2).k, 0.0);
}

TEST(JunctionLosses, a_contraction_counts_on_the_narrow_outflow)
{
    InLine net(kEast, 0.02, 0.01);
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_DOUBLE_EQ(net.elem(2).k, 0.25);
}

TEST(JunctionLosses, a_bend_counts_on_the_outflow_of_equal_areas)
{
    InLine net(kNorth);
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_NEAR(net.elem(2).k, kBend90, 1e-12);
}

TEST(JunctionLosses, a_bend_counts_on_the_narrower_element)
{
    InLine widening(kNorth, 0.01, 0.02);
    widening.addLosses();
    EXPECT_NEAR(widening.elem(1).k, 0.25 + kBend90, 1e-12);
    EXPECT_EQ(widening.elem(2).k, 0.0);

    InLine narrowing(kUp, 0.02, 0.01);
    narrowing.addLosses();
    EXPECT_EQ(narrowing.elem(1).k, 0.0);
    EXPECT_NEAR(narrowing.elem(2).k, 0.25 + kBend90, 1e-12);
}

TEST(JunctionLosses, the_way_an_element_is_drawn_does_not_matter)
{
    Junctions net(3);
    net.addFlow(1, 2, -1.0, kWest);  // into node 1, east
    net.addFlow(3, 1, -1.0, kWest).Area = 0.005;
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_DOUBLE_EQ(net.elem(2).k, 0.25);  // contraction, no bend
}

TEST(JunctionLosses, a_reversed_flow_turns_an_expansion_into_a_contraction)
{
    InLine net(kEast, 0.01, 0.02, -1.0);
    net.addLosses();
    EXPECT_DOUBLE_EQ(net.elem(1).k, 0.25);  // 0.5 (1 - 1/2)
    EXPECT_EQ(net.elem(2).k, 0.0);
}

TEST(JunctionLosses, flows_up_to_1e_10_count_as_none)
{
    InLine still(kNorth, 0.01, 0.01, 1e-10);
    still.addLosses();
    EXPECT_EQ(still.elem(2).k, 0.0);

    InLine flowing(kNorth, 0.01, 0.01, 1.001e-10);
    flowing.addLosses();
    EXPECT_NEAR(flowing.elem(2).k, kBend90, 1e-12);
}

TEST(JunctionLosses, a_branch_without_flow_leaves_a_bend)
{
    Dividing net;
    net.elem(2).Massflow = 1e-10;
    net.addLosses();
    EXPECT_EQ(net.elem(2).k, 0.0);
    EXPECT_NEAR(net.elem(3).k, kBend90, 1e-12);
}

TEST(JunctionLosses, a_node_without_inflow_or_without_outflow_adds_nothing)
{
    for (const double sign : {1.0, -1.0}) {
        Junctions net(3);
        net.addFlow(2, 1, sign, kEast);
        net.addFlow(3, 1, sign, kNorth);
        net.addLosses();
        EXPECT_EQ(net.elem(1).k, 0.0);
        EXPECT_EQ(net.elem(2).k, 0.0);
    }
}

// Each branch has half the supply's velocity: (1 - 1/2)^2 / (1/2)^2 = 1 straight on.
TEST(JunctionLosses, the_branches_of_a_dividing_flow_lose_on_their_own_velocity)
{
    Dividing net;
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_DOUBLE_EQ(net.elem(2).k, 1.0);
    EXPECT_NEAR(net.elem(3).k, kBranch90Own, 1e-5);
}

// 1 kg/s at 0.1 m/s east and 3 kg/s at 0.3 m/s north: supply (0.1 + 3 x 0.3) / 4 = 0.25 m/s along (0.25, 0.75). The
// outflow at 0.4 m/s east: r = 1.6, cosine 0.25, 2.56 + 1 - 3.2 cos(0.75 acos 0.25) = 1.8004, over 2.56.
TEST(JunctionLosses, a_combining_flow_is_measured_against_its_flow_weighted_supply)
{
    Junctions net(4);
    net.addFlow(2, 1, 1.0, kEast);
    net.addFlow(3, 1, 3.0, kNorth);
    net.addFlow(1, 4, 4.0, kEast);
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_EQ(net.elem(2).k, 0.0);
    EXPECT_NEAR(net.elem(3).k, 0.7032868, 1e-6);
}

TEST(JunctionLosses, the_supply_is_weighted_by_flow_in_height_too)
{
    // as before with up for north, and the outflow at 0.4 m/s up: cosine 0.75, 3.56 - 3.2 cos(0.75 acos 0.75) = 0.81871
    Junctions net(4);
    net.addFlow(2, 1, 1.0, kEast);
    net.addFlow(3, 1, 3.0, kUp);
    net.addFlow(1, 4, 4.0, kUp);
    net.addLosses();
    EXPECT_NEAR(net.elem(3).k, 0.3198093, 1e-6);
}

TEST(JunctionLosses, opposed_inflows_leave_every_outflow_across_them)
{
    // the flow-weighted direction cancels: cosine 0, r = 2, K = (4 + 1 - 4 cos(67.5 deg)) / 4 on the outflow
    Junctions net(4);
    net.addFlow(2, 1, 1.0, kEast);
    net.addFlow(3, 1, 1.0, kWest);
    net.addFlow(1, 4, 2.0, kNorth);
    net.addLosses();
    EXPECT_NEAR(net.elem(3).k, 0.8673166, 1e-6);
}

TEST(JunctionLosses, mode_2_leaves_out_junctions_of_three_flows)
{
    Dividing dividing;
    dividing.var.Minor = 2;
    dividing.addLosses();
    EXPECT_EQ(dividing.elem(2).k, 0.0);
    EXPECT_EQ(dividing.elem(3).k, 0.0);

    Junctions combining(4);
    combining.var.Minor = 2;
    combining.addFlow(2, 1, 1.0, kEast);
    combining.addFlow(3, 1, 1.0, kNorth);
    combining.addFlow(1, 4, 2.0, kEast);
    combining.addLosses();
    EXPECT_EQ(combining.elem(3).k, 0.0);
}

TEST(JunctionLosses, mode_2_keeps_junctions_of_two_flows)
{
    InLine net(kNorth);
    net.var.Minor = 2;
    net.addLosses();
    EXPECT_NEAR(net.elem(2).k, kBend90, 1e-12);
}

TEST(JunctionLosses, mode_2_keeps_junctions_of_four_flows)
{
    Junctions net(5);
    net.var.Minor = 2;
    net.addFlow(2, 1, 4.0, kEast);
    net.addFlow(1, 3, 2.0, kEast);
    net.addFlow(1, 4, 2.0, kNorth);
    net.addFlow(1, 5, 2.0, kUp);
    net.addLosses();
    EXPECT_DOUBLE_EQ(net.elem(2).k, 1.0);
    EXPECT_NEAR(net.elem(3).k, kBranch90Own, 1e-5);
    EXPECT_NEAR(net.elem(4).k, kBranch90Own, 1e-5);
}

TEST(JunctionLosses, types_1_and_4_to_10_receive_losses_and_curves_do_not)
{
    for (int type = 0; type <= 11; ++type) {
        const bool receives = type == 1 || (type >= 4 && type <= 10);
        Dividing branch;
        branch.elem(3).type = type;
        branch.addLosses();
        EXPECT_EQ(branch.elem(3).k > 0.0, receives) << type;
        EXPECT_DOUBLE_EQ(branch.elem(2).k, 1.0) << type;

        InLine bend(kNorth);
        bend.elem(2).type = type;
        bend.addLosses();
        EXPECT_EQ(bend.elem(2).k > 0.0, receives) << type;
    }
}

TEST(JunctionLosses, an_element_without_area_receives_nothing)
{
    Dividing branch;
    branch.elem(3).Area = 0.0;
    branch.addLosses();
    EXPECT_EQ(branch.elem(3).k, 0.0);
    EXPECT_DOUBLE_EQ(branch.elem(2).k, 1.0);

    InLine bend(kNorth, 0.01, 0.0);
    bend.addLosses();
    EXPECT_EQ(bend.elem(1).k, 0.0);
    EXPECT_EQ(bend.elem(2).k, 0.0);
}

TEST(JunctionLosses, an_inflow_without_area_is_no_supply)
{
    // 2 kg/s east remain as supply, as fast as the 2 kg/s that leave east
    Junctions net(5);
    net.addFlow(2, 1, 2.0, kEast);
    net.addFlow(3, 1, 1.0, kNorth).Area = 0.0;
    net.addFlow(1, 4, 2.0, kEast);
    net.addFlow(1, 5, 1.0, kNorth);
    net.addLosses();
    EXPECT_EQ(net.elem(3).k, 0.0);
    EXPECT_NEAR(net.elem(4).k, kBranch90Own, 1e-5);
}

TEST(JunctionLosses, coincident_ends_count_as_straight)
{
    InLine bend(kUnknown);
    bend.addLosses();
    EXPECT_EQ(bend.elem(1).k, 0.0);
    EXPECT_EQ(bend.elem(2).k, 0.0);

    Dividing branch;
    branch.elem(3).Vy = 0.0;
    branch.addLosses();
    EXPECT_DOUBLE_EQ(branch.elem(3).k, 1.0);
}

TEST(JunctionLosses, an_element_from_a_node_to_itself_takes_no_part)
{
    InLine net(kNorth);
    net.addFlow(1, 1, 5.0, kUnknown);
    net.addLosses();
    EXPECT_NEAR(net.elem(2).k, kBend90, 1e-12);
    EXPECT_EQ(net.elem(3).k, 0.0);
}

TEST(JunctionLosses, only_free_and_held_nodes_add_losses)
{
    InLine fixed(kNorth);
    fixed.nodes[1].flag = lcn::kPressureBoundary;
    fixed.addLosses();
    EXPECT_EQ(fixed.elem(2).k, 0.0);

    InLine held(kNorth);
    held.nodes[1].flag = lcn::kPressureBoundary;
    held.nodes[1].held = 1;
    held.addLosses();
    EXPECT_NEAR(held.elem(2).k, kBend90, 1e-12);
}

TEST(JunctionLosses, the_losses_of_both_ends_add_up)
{
    // contraction 0.25 at node 1, expansion 0.25 at node 2
    Junctions net(4);
    net.nodes[2].flag = lcn::kFreeNode;
    net.addFlow(3, 1, 1.0, kEast).Area = 0.02;
    net.addFlow(1, 2, 1.0, kEast);
    net.addFlow(2, 4, 1.0, kEast).Area = 0.02;
    net.addLosses();
    EXPECT_EQ(net.elem(1).k, 0.0);
    EXPECT_DOUBLE_EQ(net.elem(2).k, 0.5);
    EXPECT_EQ(net.elem(3).k, 0.0);
}

TEST(JunctionLosses, losses_add_to_the_coefficient_that_is_there)
{
    InLine net(kEast, 0.02, 0.01);
    net.elem(2).k = 3.0;
    net.addLosses();
    EXPECT_DOUBLE_EQ(net.elem(2).k, 3.25);
}
