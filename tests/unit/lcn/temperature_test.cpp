// temperature_test.cpp: temperatures of nodes and elements at given flows. The numbers are by hand.
#include "lcn/temperature.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "unit/support/solver_network.h"

using lcn::TemperatureSolve;
using SolverTest::SolverNetwork;

namespace
{

/// Nodes at 300 K, Cp 4000 J/(kg K), no convection.
struct WarmNetwork : SolverNetwork {
    explicit WarmNetwork(int nodeCount) : SolverNetwork(nodeCount)
    {
        var.Energy = 1;
        var.Cp = 4000.0;
        for (int i = 1; i <= nodeCount; ++i)
            nodes[i].Temperature = 300.0;
    }

    /// A pipe at 300 K that carries flow and takes heat.
    int addFlow(int start, int end, double flow, double heat = 0.0)
    {
        const int e = add(lcn::kPipe, start, end);
        elem(e).Massflow = flow;
        elem(e).Temperature = 300.0;
        elem(e).Energy_var = 5;
        elem(e).heat = heat;
        return e;
    }

    void fixTemperature(int node, double temperature)
    {
        nodes[node].tempflag = 1;
        nodes[node].Temperature = temperature;
    }

    /// End nodes are boundaries, as in any prepared network; the others are free.
    void prepare()
    {
        connect();
        for (int i = 1; i <= var.NodeTotal; ++i)
            nodes[i].flag = nodes[i].no_branches == 1 ? lcn::kFlowBoundary : lcn::kFreeNode;
    }

    TemperatureSolve solve()
    {
        prepare();
        return lcn::TemperatureSolver().solve(nodes, elements, var);
    }

    double temperature(int node) const { return nodes[node].Temperature; }
};

/// A pipe with laminar flow, Nu 3.66, along a wall at 350 K: h = 0.5 x 3.66 / 0.1 = 18.3 W/(m2 K), Cp x flow 400 W/K.
struct WallHeatedPipe : WarmNetwork {
    explicit WallHeatedPipe(double transferUnits) : WarmNetwork(2)
    {
        addFlow(1, 2, 0.1);
        var.Conductivity = 0.5;
        elem(1).Energy_var = 1;
        elem(1).MetalTemp = 350.0;
        elem(1).WettedArea = transferUnits * 400.0 / 18.3;
        fixTemperature(1, 300.0);
    }
};

/// A main flow of 1 kg/s at 300 K past a dead end of nodes 4 and 5 at 350 K, closed by element 5. Elements 3 and 4 carry
/// the flow given, at 340 K.
struct DeadEnd : WarmNetwork {
    explicit DeadEnd(double flow) : WarmNetwork(6)
    {
        addFlow(1, 2, 1.0);
        addFlow(2, 3, 1.0);
        addFlow(2, 4, flow);
        addFlow(4, 5, flow);
        elem(addFlow(5, 6, 0.0)).fix = 1;
        fixTemperature(1, 300.0);
        nodes[4].Temperature = nodes[5].Temperature = 350.0;
        elem(3).Temperature = elem(4).Temperature = 340.0;
    }
};

/// Three pipes apart from each other, from nodes at 300 K to nodes at 350 K: 1 kg/s and twice the flow given, the last
/// one fixed.
struct SmallFlows : WarmNetwork {
    explicit SmallFlows(double flow) : WarmNetwork(6)
    {
        addFlow(1, 4, 1.0);
        addFlow(2, 5, flow);
        elem(addFlow(3, 6, flow)).fix = 1;
        for (int i = 1; i <= 3; ++i) {
            nodes[i + 3].Temperature = 350.0;
            elem(i).Temperature = 340.0;
        }
    }
};

/// A loop of two nodes and 1 kg/s, node 1 fixed at 400 K. Nothing is upstream of all, so that only sweeps move node 2.
struct LoopWithFixedNode : WarmNetwork {
    LoopWithFixedNode() : WarmNetwork(2)
    {
        addFlow(1, 2, 1.0);
        addFlow(2, 1, 1.0);
        fixTemperature(1, 400.0);
    }
};

/// The same with 8000 W in element 1, after one sweep: a second, separate pipe is not finite and ends the solve there.
struct LoopAfterOneSweep : WarmNetwork {
    explicit LoopAfterOneSweep(double flow, double relaxpp) : WarmNetwork(4)
    {
        addFlow(1, 2, flow, 8000.0);
        addFlow(2, 1, flow);
        addFlow(3, 4, 1.0);
        fixTemperature(1, 400.0);
        fixTemperature(3, std::numeric_limits<double>::quiet_NaN());
        var.relaxpp = relaxpp;
        sweeps = solve().sweeps;
    }

    int sweeps = 0;
};

/// A pipe of air, R T = 287 x 300 = 86100 J/kg, at 172200 Pa: 2 kg/m3, to be reached from 1 kg/m3 at weight 0.5.
struct GasPipe : WarmNetwork {
    explicit GasPipe(double flow) : WarmNetwork(2)
    {
        addFlow(1, 2, flow);
        var.compressible = true;
        var.gasConstant = 287.0;
        var.heatRatio = 1.4;
        var.densityWeight = 0.5;
        elem(1).Temperature = 200.0;
        elem(1).density = 1.0;
        elem(1).Pressure = 172200.0;
    }
};

}  // namespace

// Element 1: mean 400 + 8000 / (2 x 4000 x 1) = 401 K, half of the way from 300. Node 2: half of the way to 402 K, and
// element 2 half of the way to node 2.
TEST(Temperature, a_sweep_moves_nodes_and_elements_by_relaxpp)
{
    const LoopAfterOneSweep net(1.0, 0.5);
    EXPECT_EQ(net.sweeps, 1);
    EXPECT_DOUBLE_EQ(net.elem(1).Temperature, 350.5);
    EXPECT_DOUBLE_EQ(net.temperature(2), 351.0);
    EXPECT_DOUBLE_EQ(net.elem(2).Temperature, 325.5);
    EXPECT_EQ(net.elem(1).TemperatureOld, 300.0);
}

TEST(Temperature, an_unrelaxed_sweep_gives_an_element_the_mean_along_its_length)
{
    const LoopAfterOneSweep net(1.0, 1.0);
    EXPECT_DOUBLE_EQ(net.elem(1).Temperature, 401.0);
    EXPECT_DOUBLE_EQ(net.temperature(2), 402.0);
}

// The flow enters element 1 from node 2 at 300 K and leaves it with 302; element 2 brings 400 K to node 2.
TEST(Temperature, a_reversed_flow_starts_from_the_end_node)
{
    const LoopAfterOneSweep net(-1.0, 1.0);
    EXPECT_DOUBLE_EQ(net.temperature(2), 400.0);
    EXPECT_DOUBLE_EQ(net.elem(1).Temperature, 401.0);
    EXPECT_DOUBLE_EQ(net.elem(2).Temperature, 400.0);
}

TEST(Temperature, an_element_with_zero_flow_keeps_its_temperature)
{
    WarmNetwork net(2);
    net.addFlow(1, 2, 0.0, 4000.0);
    net.elem(1).Temperature = 280.0;
    EXPECT_TRUE(net.solve().converged);
    EXPECT_EQ(net.elem(1).Temperature, 280.0);
    EXPECT_EQ(net.temperature(2), 300.0);
}

TEST(Temperature, without_a_heat_capacity_every_temperature_stays)
{
    WarmNetwork net(2);
    net.addFlow(1, 2, 1.0, 4000.0);
    net.nodes[1].Temperature = 310.0;
    net.elem(1).Temperature = 280.0;
    net.var.Cp = 0.0;
    EXPECT_TRUE(net.solve().converged);
    EXPECT_EQ(net.elem(1).Temperature, 280.0);
    EXPECT_EQ(net.temperature(2), 300.0);
}

// Two sweeps: 1.5, then 1.75 kg/m3.
TEST(Temperature, the_density_of_a_gas_follows_its_temperature)
{
    GasPipe net(0.1);
    EXPECT_EQ(net.solve().sweeps, 2);
    EXPECT_EQ(net.elem(1).Temperature, 300.0);
    EXPECT_DOUBLE_EQ(net.elem(1).density, 1.75);
}

// 0.9 sqrt(1.4 x 86100) = 312.4708 m/s; 10 kg/s through 0.01 m2 then have 1000 / 312.4708 = 3.200299 kg/m3.
TEST(Temperature, a_gas_never_passes_0_9_of_the_speed_of_sound)
{
    GasPipe net(10.0);
    net.solve();
    EXPECT_NEAR(net.elem(1).density, 3.200299, 1e-5);
}

TEST(Temperature, a_node_that_nothing_enters_keeps_its_temperature)
{
    WarmNetwork net(3);
    net.addFlow(1, 2, 1.0);
    net.addFlow(3, 1, -2.0);
    net.nodes[1].Temperature = 310.0;
    EXPECT_TRUE(net.solve().converged);
    EXPECT_EQ(net.temperature(1), 310.0);
    EXPECT_EQ(net.temperature(2), 310.0);
    EXPECT_EQ(net.temperature(3), 310.0);
}

TEST(Temperature, a_fixed_node_stays_whatever_enters_it)
{
    WarmNetwork net(3);
    net.addFlow(1, 2, 1.0);
    net.addFlow(2, 3, 1.0);
    net.fixTemperature(2, 350.0);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_EQ(net.temperature(2), 350.0);
    EXPECT_EQ(net.temperature(3), 350.0);
}

// (1 x 300 + 2 x 320 + 3 x 340) / 6 = 326.6667 K, and 24000 W / (4000 x 6) = 1 K more.
TEST(Temperature, three_streams_mix_by_flow_each_with_the_heat_of_its_element)
{
    WarmNetwork net(5);
    net.addFlow(1, 4, 1.0);
    net.addFlow(4, 2, -2.0, 24000.0);  // drawn against its flow
    net.addFlow(3, 4, 3.0);
    net.addFlow(4, 5, 6.0);
    net.fixTemperature(1, 300.0);
    net.fixTemperature(2, 320.0);
    net.fixTemperature(3, 340.0);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(4), 1960.0 / 6.0 + 1.0, 1e-9);
    EXPECT_NEAR(net.temperature(5), 1960.0 / 6.0 + 1.0, 1e-9);
    // 320 + 24000 / (2 x 4000 x 2); elements settle to 1e-10 of their temperature
    EXPECT_NEAR(net.elem(2).Temperature, 321.5, 1e-6);
}

// Without a loop the march gives the answer: the first sweep changes no temperature and the second sees no change.
TEST(Temperature, a_long_line_settles_in_two_sweeps)
{
    constexpr int kNodes = 200;
    WarmNetwork net(kNodes);
    for (int i = 1; i < kNodes; ++i)
        net.addFlow(i, i + 1, 1.0);
    net.fixTemperature(1, 350.0);
    const TemperatureSolve solve = net.solve();
    EXPECT_EQ(solve.sweeps, 2);
    EXPECT_EQ(solve.error, 0.0);
    EXPECT_TRUE(solve.converged);
    EXPECT_EQ(net.temperature(kNodes), 350.0);
}

TEST(Temperature, the_number_of_a_node_does_not_matter_to_the_answer)
{
    WarmNetwork net(4);
    net.addFlow(2, 1, 1.0, 4000.0);
    net.addFlow(3, 2, 1.0, 4000.0);
    net.addFlow(4, 3, 1.0, 4000.0);
    net.fixTemperature(4, 350.0);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(1), 353.0, 1e-9);
}

// Sweep k leaves node 2 at 400 - 100 x 0.5^k: its relative change is 0.25 x 0.5^k, below 1e-9 first at k = 28.
TEST(Temperature, a_loop_settles_as_fast_as_relaxpp_lets_it)
{
    LoopWithFixedNode net;
    const TemperatureSolve solve = net.solve();
    EXPECT_EQ(solve.sweeps, 28);
    EXPECT_TRUE(solve.converged);
    EXPECT_NEAR(net.temperature(2), 400.0, 1e-6);  // 100 x 0.5^28 = 3.7e-7
}

// The change of sweep k is 25 x 0.75^(k-1) K, of 400 K: below 1e-9 first at k = 64.
TEST(Temperature, a_smaller_relaxpp_takes_more_sweeps)
{
    LoopWithFixedNode net;
    net.var.relaxpp = 0.25;
    EXPECT_EQ(net.solve().sweeps, 64);
}

TEST(Temperature, an_unrelaxed_sweep_takes_the_mixing_temperature_at_once)
{
    LoopWithFixedNode net;
    net.var.relaxpp = 1.0;
    EXPECT_EQ(net.solve().sweeps, 2);
    EXPECT_EQ(net.temperature(2), 400.0);
}

// 40 kW into 1 kg/s that nothing leaves: 10 K more with each turn, for ever.
TEST(Temperature, a_heated_loop_without_exits_ends_after_400_sweeps)
{
    WarmNetwork net(2);
    net.addFlow(1, 2, 1.0, 40000.0);
    net.addFlow(2, 1, 1.0);
    const TemperatureSolve solve = net.solve();
    EXPECT_EQ(solve.sweeps, 400);
    EXPECT_EQ(solve.sweeps, lcn::kMostTemperatureSweeps);
    EXPECT_FALSE(solve.converged);
    EXPECT_TRUE(solve.finite);
    EXPECT_GT(solve.error, net.var.Concrit);
}

TEST(Temperature, a_value_that_is_not_finite_ends_the_solve_at_once)
{
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        WarmNetwork net(2);
        net.addFlow(1, 2, 1.0);
        net.fixTemperature(1, bad);
        const TemperatureSolve solve = net.solve();
        EXPECT_EQ(solve.sweeps, 1);
        EXPECT_FALSE(solve.finite);
        EXPECT_FALSE(solve.converged);
    }
}

// Below two transfer units the outlet is 300 + 50 n / (1 + n/2).
TEST(Temperature, a_wall_warms_the_flow_by_its_mean_temperature)
{
    WallHeatedPipe net(1.9);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(2), 300.0 + 50.0 * 1.9 / 1.95, 1e-6);
    EXPECT_NEAR(net.elem(1).Temperature, 300.0 + 25.0 * 1.9 / 1.95, 1e-6);
}

TEST(Temperature, twenty_transfer_units_bring_the_flow_to_the_wall_and_no_further)
{
    WallHeatedPipe net(20.0);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(2), 350.0, 1e-9);
    EXPECT_NEAR(net.elem(1).heat, 20000.0, 1e-6);  // 400 W/K x 50 K
}

// Concrit 1e-6: unfixed flows up to 1e-6 of the average, here 1/3 kg/s, are residue.
TEST(Temperature, an_unfixed_flow_of_1e_9_of_the_average_carries_no_heat)
{
    for (const double direction : {1.0, -1.0}) {
        SmallFlows net(direction * 1e-9 / 3.0);
        EXPECT_TRUE(net.solve().converged);
        EXPECT_EQ(net.temperature(2), 300.0);
        EXPECT_EQ(net.temperature(5), 350.0);
        EXPECT_EQ(net.elem(2).Temperature, 340.0);
    }
}

TEST(Temperature, a_fixed_flow_carries_heat_however_small_it_is)
{
    SmallFlows net(1e-9 / 3.0);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(6), 300.0, 1e-9);
    EXPECT_NEAR(net.elem(3).Temperature, 300.0, 1e-6);
}

TEST(Temperature, an_unfixed_flow_above_the_residue_carries_heat)
{
    SmallFlows net(1e-5 / 3.0);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(5), 300.0, 1e-9);
    EXPECT_NEAR(net.elem(2).Temperature, 300.0, 1e-6);
}

// 1e-9 of the average is below the criterion and 1e-4 above it; neither has a way out.
TEST(Temperature, residue_in_a_dead_end_carries_no_heat)
{
    for (const double flow : {1e-9, -1e-9, 1e-4, -1e-4}) {
        DeadEnd net(flow);
        EXPECT_TRUE(net.solve().converged) << flow;
        EXPECT_EQ(net.temperature(2), 300.0) << flow;
        EXPECT_EQ(net.temperature(3), 300.0) << flow;
        EXPECT_EQ(net.temperature(4), 350.0) << flow;
        EXPECT_EQ(net.temperature(5), 350.0) << flow;
        EXPECT_EQ(net.elem(3).Temperature, 340.0) << flow;
        EXPECT_EQ(net.elem(4).Temperature, 340.0) << flow;
    }
}

TEST(Temperature, an_end_that_lets_flow_out_is_no_dead_end)
{
    DeadEnd net(1e-4);
    net.fixFlow(5, 1e-4);
    EXPECT_TRUE(net.solve().converged);
    EXPECT_NEAR(net.temperature(4), 300.0, 1e-9);
    EXPECT_NEAR(net.temperature(6), 300.0, 1e-9);
}

TEST(Temperature, one_solver_serves_networks_of_any_size_in_turn)
{
    lcn::TemperatureSolver solver;
    for (const int count : {50, 2, 20}) {
        WarmNetwork net(count);
        for (int i = 1; i < count; ++i)
            net.addFlow(i, i + 1, 1.0);
        net.fixTemperature(1, 350.0);
        net.prepare();
        EXPECT_TRUE(solver.solve(net.nodes, net.elements, net.var).converged);
        EXPECT_EQ(net.temperature(count), 350.0) << count;
    }
}
