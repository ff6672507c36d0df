// flow_update_test.cpp: flows from corrections, element pressures, flow ends, the first pressure difference.
#include "lcn/flow_update.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "lcn/element_hydraulics.h"
#include "unit/support/solver_network.h"

using lcn::NodeEquations;
using SolverTest::SolverNetwork;

namespace
{

/// Fixed node 1, free nodes 2 and 3, flow end 4; valves 1-2, 3-2 and a pipe 3-4 of fixed flow.
struct Line : SolverNetwork {
    Line() : SolverNetwork(4)
    {
        add(lcn::kKvValve, 1, 2);
        add(lcn::kKvValve, 3, 2);
        add(lcn::kPipe, 3, 4);
        for (int e = 1; e <= 2; ++e)
            elem(e).HWcoeff = 1e6;
        connect();
        fixPressure(1, 1e5);
        fixFlow(3, 0.5);
        nodes[4].flag = lcn::kFlowBoundary;
        nodes[2].Pressure = 2e5;
        nodes[3].Pressure = 3e5;
        equations.size(var);
        corrections = {0.0, 0.0, 100.0, -300.0, 0.0};
    }

    void update()
    {
        std::vector<int> all(static_cast<std::size_t>(var.ElemTotal));
        std::iota(all.begin(), all.end(), 1);
        lcn::updatePressures(nodes, var, corrections);
        lcn::updateFlows(nodes, elements, var, all, equations, corrections);
    }

    NodeEquations equations;
    std::vector<double> corrections;
};

/// A flow end at the end (or start) of an element of this type whose other end is at 1e5 Pa.
struct End : SolverNetwork {
    End(int type, bool outward, double massflow) : SolverNetwork(3)
    {
        add(lcn::kKvValve, 1, 2);
        if (outward)
            add(type, 2, 3);
        else
            add(type, 3, 2);
        connect();
        nodes[2].Pressure = 1e5;
        nodes[3].flag = lcn::kFlowBoundary;
        elem(2).HWcoeff = 4e6;
        elem(2).friction = 0.02;  // r2 of a pipe: 0.02 x 100 x 5000 = 1e4
        fixFlow(2, massflow);
    }

    double pressureAtEnd(double dt = lcn::kSteadyState)
    {
        lcn::FlowEnds ends;
        ends.prepare(nodes, elements, var);
        EXPECT_TRUE(ends.update(nodes, elements, var, dt));
        return nodes[3].Pressure;
    }
};

/// Two free nodes at 1e5 Pa joined by one element without a pressure difference.
struct Level : SolverNetwork {
    explicit Level(int type = lcn::kPipe) : SolverNetwork(2)
    {
        add(type, 1, 2);
        connect();
        nodes[1].Pressure = nodes[2].Pressure = 1e5;
        equations.size(var);
        lcn::assembleNodeEquations(nodes, elements, var, lcn::kSteadyState, equations);
        equations.rhs[1] = 1.0;
        corrections = {0.0, 2e-12, -1e-12};
    }

    void separate(double averageFlow = 1.0)
    {
        lcn::separateEqualPressures(nodes, elements, var, equations, corrections, averageFlow);
    }

    void expectUntouched()
    {
        separate();
        EXPECT_EQ(nodes[1].Pressure, 1e5);
        EXPECT_EQ(nodes[2].Pressure, 1e5);
    }

    NodeEquations equations;
    std::vector<double> corrections;
};

}  // namespace

TEST(FlowUpdate, pressures_move_by_relaxpp_times_their_corrections)
{
    Line line;
    line.update();
    EXPECT_EQ(line.nodes[1].Pressure, 1e5);
    EXPECT_EQ(line.nodes[2].Pressure, 2e5 + 50.0);
    EXPECT_EQ(line.nodes[3].Pressure, 3e5 - 150.0);
    EXPECT_EQ(line.nodes[3].PressureOld, 3e5);
}

TEST(FlowUpdate, flows_follow_their_estimate_and_the_relaxed_corrections)
{
    Line line;
    line.equations.flowEstimate[1] = 0.002;
    line.equations.flowResistance[1] = 1e7;
    line.equations.flowEstimate[2] = -0.001;
    line.equations.flowResistance[2] = 2e6;
    line.elem(1).Massflow = 9.0;
    line.update();
    // 1000 (0.5 (0 - 100)/1e7 + 0.002), 1000 (0.5 (-300 - 100)/2e6 - 0.001)
    EXPECT_NEAR(line.elem(1).Massflow, 1.995, 1e-12);
    EXPECT_NEAR(line.elem(2).Massflow, -1.1, 1e-12);
    EXPECT_EQ(line.elem(1).MassflowOld, 9.0);
    EXPECT_EQ(line.elem(3).Massflow, 0.5);
}

TEST(FlowUpdate, an_element_between_nodes_that_are_not_free_keeps_its_flow)
{
    Line line;
    line.nodes[2].flag = lcn::kPressureBoundary;
    line.elem(1).Massflow = 4.0;
    line.equations.flowEstimate[1] = 0.002;
    line.equations.flowResistance[1] = 1e7;
    line.update();
    EXPECT_EQ(line.elem(1).Massflow, 4.0);
}

TEST(FlowUpdate, an_element_without_a_law_carries_nothing)
{
    Line line;
    line.elem(1).type = 0;
    line.elem(1).Massflow = 4.0;
    line.update();
    EXPECT_EQ(line.elem(1).Massflow, 0.0);
}

TEST(ElementPressure, it_is_the_mean_less_the_dynamic_and_the_hydrostatic_pressure)
{
    Line line;
    line.elem(1).Massflow = 20.0;  // V = 20 / 1000 / 0.01 = 2 m/s
    line.nodes[1].Height = 1.0;
    line.nodes[2].Height = 4.0;
    lcn::updateElementPressures(line.nodes, line.elements, line.var);
    // 150000 - 1000 x 4 / 2 - 1000 x 9.80665 x 2.5
    EXPECT_NEAR(line.elem(1).Pressure, 150000.0 - 2000.0 - 24516.625, 1e-9);
}

TEST(ElementPressure, a_pump_or_loss_curve_has_that_of_its_start_node)
{
    for (const int type : {lcn::kPump, lcn::kLossCurve}) {
        Line line;
        line.elem(2).type = type;
        line.elem(2).Massflow = 20.0;
        lcn::updateElementPressures(line.nodes, line.elements, line.var);
        EXPECT_EQ(line.elem(2).Pressure, 3e5);
    }
}

TEST(ElementPressure, an_element_without_an_area_has_no_dynamic_pressure)
{
    Line line;
    line.elem(1).Area = 0.0;
    line.elem(1).Massflow = 20.0;
    lcn::updateElementPressures(line.nodes, line.elements, line.var);
    EXPECT_EQ(line.elem(1).Pressure, 150000.0);
}

TEST(ElementPressure, a_gas_relaxes_toward_its_ideal_density_and_half_the_mean_replaces_a_vacuum)
{
    Line line;
    line.var.compressible = true;
    line.var.gasConstant = 287.0;
    line.var.densityWeight = 0.5;
    line.elem(1).Temperature = 300.0;
    line.elem(1).density = 2.0;
    lcn::updateElementPressures(line.nodes, line.elements, line.var);
    EXPECT_NEAR(line.elem(1).density, 2.0 + 0.5 * (150000.0 / 287.0 / 300.0 - 2.0), 1e-12);

    line.elem(2).density = 1000.0;
    line.elem(2).Massflow = 1e6;  // dynamic pressure beyond the static one
    line.elem(2).Temperature = 300.0;
    lcn::updateElementPressures(line.nodes, line.elements, line.var);
    EXPECT_EQ(line.elem(2).Pressure, (2e5 + 3e5) / 4.0);
}

TEST(FlowEnds, an_ends_pressure_is_its_neighbours_less_the_loss_along_the_flow)
{
    // valve: 4e6 x 1000 x (2e-3)^2 = 16000 Pa; pipe: 1e4 x 1000 x 4e-6 = 40 Pa
    EXPECT_NEAR(End(lcn::kKvValve, true, 2.0).pressureAtEnd(), 1e5 - 16000.0, 1e-9);
    EXPECT_NEAR(End(lcn::kKvValve, true, -2.0).pressureAtEnd(), 1e5 + 16000.0, 1e-9);
    EXPECT_NEAR(End(lcn::kKvValve, false, 2.0).pressureAtEnd(), 1e5 + 16000.0, 1e-9);
    EXPECT_NEAR(End(lcn::kKvValve, false, -2.0).pressureAtEnd(), 1e5 - 16000.0, 1e-9);
    EXPECT_NEAR(End(lcn::kPipe, true, 2.0).pressureAtEnd(), 1e5 - 40.0, 1e-9);
    EXPECT_NEAR(End(lcn::kPipe, true, -2.0).pressureAtEnd(), 1e5 + 40.0, 1e-9);
    EXPECT_NEAR(End(lcn::kPipe, false, 2.0).pressureAtEnd(), 1e5 + 40.0, 1e-9);
    EXPECT_NEAR(End(lcn::kPipe, false, -2.0).pressureAtEnd(), 1e5 - 40.0, 1e-9);
    EXPECT_EQ(End(lcn::kPipe, true, 0.0).pressureAtEnd(), 1e5);
}

TEST(FlowEnds, next_to_a_fixed_pressure_the_same_holds)
{
    End end(lcn::kKvValve, true, 2.0);
    end.nodes[2].flag = lcn::kPressureBoundary;
    EXPECT_NEAR(end.pressureAtEnd(), 1e5 - 16000.0, 1e-9);
}

TEST(FlowEnds, in_a_time_step_the_inertia_of_the_column_is_added)
{
    End end(lcn::kKvValve, true, 2.0);
    end.elem(2).MassflowOld = 1.5;
    // 0.5 kg/s x 10 m / 0.01 m2 / 2 s = 250 Pa
    EXPECT_NEAR(end.pressureAtEnd(2.0), 1e5 - 16000.0 + 250.0, 1e-9);
}

TEST(FlowEnds, two_ends_of_one_element_keep_their_pressures)
{
    SolverNetwork network(2);
    network.add(lcn::kPipe, 1, 2);
    network.connect();
    network.nodes[1].flag = network.nodes[2].flag = lcn::kFlowBoundary;
    network.nodes[1].Pressure = 5.0;
    lcn::FlowEnds ends;
    ends.prepare(network.nodes, network.elements, network.var);
    EXPECT_TRUE(ends.update(network.nodes, network.elements, network.var, lcn::kSteadyState));
    EXPECT_EQ(network.nodes[1].Pressure, 5.0);
    EXPECT_EQ(network.nodes[2].Pressure, 0.0);
}

TEST(FlowEnds, a_pressure_that_is_no_number_is_told)
{
    End end(lcn::kKvValve, true, 2.0);
    end.elem(2).HWcoeff = std::numeric_limits<double>::infinity();
    lcn::FlowEnds ends;
    ends.prepare(end.nodes, end.elements, end.var);
    EXPECT_FALSE(ends.update(end.nodes, end.elements, end.var, lcn::kSteadyState));
}

TEST(FixedPressureElements, flows_are_settled_and_limits_imposed)
{
    SolverNetwork network(3);
    network.add(lcn::kKvValve, 1, 2);
    network.add(lcn::kControlValve, 1, 2);
    network.add(lcn::kNonReturn, 2, 1);
    network.add(lcn::kKvValve, 1, 2);
    network.elem(1).HWcoeff = network.elem(4).HWcoeff = 4e6;
    network.connect();
    network.fixPressure(1, 150000.0);
    network.fixPressure(2, 100000.0);
    network.fixFlow(4, 0.25);
    for (int e = 1; e <= 3; ++e)
        network.elem(e).Massflow = 0.1;
    lcn::FixedPressureElements between;
    between.prepare(network.nodes, network.elements, network.var);
    between.update(network.nodes, network.elements, network.var);
    EXPECT_NEAR(network.elem(1).Massflow, 1000.0 * std::sqrt(50.0 / 4e6), 1e-12);
    EXPECT_GT(network.elem(2).Massflow, 1.0);
    EXPECT_LT(network.elem(3).Massflow, -1.0);
    EXPECT_EQ(network.elem(4).Massflow, 0.25);

    network.elem(2).FlowLimited = network.elem(3).FlowLimited = 1;
    network.elem(2).FixedFlow = 1.0;
    between.update(network.nodes, network.elements, network.var);
    EXPECT_EQ(network.elem(2).fix, 1);
    EXPECT_EQ(network.elem(2).Massflow, 1.0);
    EXPECT_EQ(network.elem(3).fix, 1);
    EXPECT_EQ(network.elem(3).Massflow, 0.0);
}

TEST(FixedPressureElements, a_pipe_meets_its_law_after_one_update)
{
    // its friction factor follows the flow: the repeats stop at a change of 1e-13
    SolverNetwork network(2);
    network.add(lcn::kPipe, 1, 2);
    network.elem(1).rough = 1e-4;
    network.elem(1).Massflow = 0.1;
    network.connect();
    network.fixPressure(1, 150000.0);
    network.fixPressure(2, 100000.0);
    lcn::FixedPressureElements between;
    between.prepare(network.nodes, network.elements, network.var);
    EXPECT_TRUE(between.update(network.nodes, network.elements, network.var));
    EXPECT_NEAR(lcn::pressureLoss(network.nodes, network.elements, network.var, 1, +1), 50000.0, 1e-7);
}

TEST(FirstDifference, one_free_end_moves_in_the_sense_of_its_correction)
{
    Level level;
    level.separate();
    EXPECT_EQ(level.nodes[1].Pressure, 1e5 + 1e-9 * 1e5);
    EXPECT_EQ(level.nodes[2].Pressure, 1e5);

    Level opposite;
    opposite.corrections = {0.0, -2e-12, 1e-12};
    opposite.separate();
    EXPECT_EQ(opposite.nodes[1].Pressure, 1e5 - 1e-9 * 1e5);
}

TEST(FirstDifference, the_end_moves_when_the_start_is_not_free)
{
    Level level;
    level.fixPressure(1, 1e5);
    level.separate();
    EXPECT_EQ(level.nodes[1].Pressure, 1e5);
    EXPECT_EQ(level.nodes[2].Pressure, 1e5 - 1e-9 * 1e5);
}

TEST(FirstDifference, below_1_pascal_it_is_1e_minus_9)
{
    Level level;
    level.nodes[1].Pressure = level.nodes[2].Pressure = 0.0;
    level.separate();
    EXPECT_EQ(level.nodes[1].Pressure, 1e-9);
}

TEST(FirstDifference, each_of_its_conditions_is_needed)
{
    Level level;
    level.nodes[1].Pressure = 1e5 + 1.0;  // a difference after the update
    level.separate();
    EXPECT_EQ(level.nodes[1].Pressure, 1e5 + 1.0);

    Level fixed;
    fixed.elem(1).fix = 1;
    fixed.expectUntouched();
    Level noDifferenceOfCorrections;
    noDifferenceOfCorrections.corrections = {0.0, 5.0, 5.0};
    noDifferenceOfCorrections.expectUntouched();
    Level smallDrive;  // conductance 1e6 x 0.9e-12 below 1e-6 kg/s
    smallDrive.corrections = {0.0, 0.9e-12, 0.0};
    smallDrive.expectUntouched();
    Level balanced;
    balanced.equations.rhs[1] = 0.9e-6;
    balanced.expectUntouched();
    Level otherType(lcn::kHazenWilliams);
    otherType.expectUntouched();
    Level hadDifference;
    hadDifference.equations.withoutDrop.clear();
    hadDifference.expectUntouched();
}

TEST(FirstDifference, the_average_flow_scales_the_criterion)
{
    Level level;
    level.separate(4.0);  // drive 3e-6 kg/s against 4e-6
    EXPECT_EQ(level.nodes[1].Pressure, 1e5);
    level.separate(2.0);
    EXPECT_NE(level.nodes[1].Pressure, 1e5);
}
