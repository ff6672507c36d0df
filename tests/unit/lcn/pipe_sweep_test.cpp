// pipe_sweep_test.cpp: the sweeps over compact pipes against the functions that work on the records.
#include "lcn/pipe_sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "lcn/constants.h"
#include "lcn/flow_update.h"
#include "lcn/friction.h"
#include "unit/support/large_network.h"

using lcn::Friction;
using lcn::NodeEquations;
using lcn::PipeSweep;
using SolverTest::LargeNetwork;

namespace
{

/// A prepared network with random pressures and flows, and a sweep over it.
struct Swept : LargeNetwork {
    Swept() : LargeNetwork(9)
    {
        elem(10).type = lcn::kNonReturn;
        elem(11).type = lcn::kControlValve;
        elem(11).FixedFlow = 3.0;
        elem(12).type = lcn::kKvValve;
        elem(12).HWcoeff = 0.02;
        elem(13).type = lcn::kHazenWilliams;
        elem(13).HWcoeff = 120.0;
        elem(14).k = 3.0;
        elem(15).type = 0;
        fixFlow(16, 0.7);  // a target
        prepare();
        std::mt19937 random(1);
        std::uniform_real_distribution<double> pressure(4e5, 6e5);
        std::uniform_real_distribution<double> flow(-8.0, 8.0);
        for (int i = 1; i <= lattice; ++i)
            nodes[i].Pressure = pressure(random);
        for (int e = 1; e <= inner; ++e)
            elem(e).Massflow = e % 9 == 0 ? 1e-3 * flow(random) : flow(random);
        sweep.prepare(nodes, elements, var, lcn::kSteadyState, true);
        equations.size(var);
        corrections.assign(static_cast<std::size_t>(var.NodeTotal) + 1, 0.0);
        for (int i = 1; i <= lattice; ++i)
            corrections[static_cast<std::size_t>(i)] = pressure(random) - 5e5;
    }

    PipeSweep sweep;
    NodeEquations equations;
    std::vector<double> corrections;
};

void expectClose(const std::vector<double>& a, const std::vector<double>& b, double relative)
{
    ASSERT_EQ(a.size(), b.size());
    double largest = 0.0;
    for (const double value : a)
        largest = std::fmax(largest, std::fabs(value));
    for (std::size_t i = 1; i < a.size(); ++i)
        EXPECT_NEAR(a[i], b[i], relative * (std::fabs(a[i]) + 1e-3 * largest)) << i;
}

bool contains(const std::vector<int>& list, int value)
{
    return std::binary_search(list.begin(), list.end(), value);
}

}  // namespace

TEST(PipeSweep, holds_open_pipes_and_given_flows_and_leaves_the_rest_to_the_records)
{
    const Swept network;
    ASSERT_TRUE(network.sweep.isUsed());
    for (const int e : {10, 11, 12, 13, 15, 16})
        EXPECT_TRUE(contains(network.sweep.others(), e)) << e;
    EXPECT_EQ(network.sweep.others().size(), 6U);
    EXPECT_FALSE(contains(network.sweep.others(), 14));
    EXPECT_FALSE(contains(network.sweep.others(), network.demands.front()));
}

TEST(PipeSweep, every_element_is_either_here_or_with_the_others)
{
    Swept network;
    std::vector<int> seen(static_cast<std::size_t>(network.var.ElemTotal) + 1, 0);
    for (const PipeSweep::Pipe& pipe : network.sweep.pipes())
        ++seen[static_cast<std::size_t>(pipe.element)];
    for (const int e : network.sweep.others())
        ++seen[static_cast<std::size_t>(e)];
    for (const int e : network.demands)
        ++seen[static_cast<std::size_t>(e)];
    for (int e = 1; e <= network.var.ElemTotal; ++e)
        EXPECT_EQ(seen[static_cast<std::size_t>(e)], 1) << e;
}

TEST(PipeSweep, equations_are_those_of_the_records)
{
    for (int method = 0; method <= 6; ++method) {
        SCOPED_TRACE(method);
        Swept network;
        network.var.FrictionMethod = method;
        network.sweep.updateFriction(network.var);
        lcn::clearNodeEquations(network.equations);
        network.sweep.assemble(network.nodes, network.equations);
        lcn::addToNodeEquations(network.nodes, network.elements, network.var, lcn::kSteadyState,
                                network.sweep.others(), network.equations, Friction::kEvaluate);
        lcn::completeNodeEquations(network.nodes, network.elements, network.var, lcn::kSteadyState,
                                   network.equations);

        Swept reference;
        reference.var.FrictionMethod = method;
        lcn::assembleNodeEquations(reference.nodes, reference.elements, reference.var, lcn::kSteadyState,
                                   reference.equations);
        // a dozen roundings of either
        expectClose(network.equations.coef, reference.equations.coef, 1e-13);
        expectClose(network.equations.diag, reference.equations.diag, 1e-13);
        expectClose(network.equations.rhs, reference.equations.rhs, 1e-12);
    }
}

TEST(PipeSweep, flows_move_as_in_the_records_and_take_their_friction_along)
{
    Swept network;
    network.sweep.assemble(network.nodes, network.equations);
    network.sweep.updateFlows(network.var, network.equations, network.corrections);
    network.sweep.write(network.elements);

    Swept reference;
    lcn::assembleNodeEquations(reference.nodes, reference.elements, reference.var, lcn::kSteadyState,
                               reference.equations);
    std::vector<int> pipes;
    for (const PipeSweep::Pipe& pipe : reference.sweep.pipes())
        pipes.push_back(pipe.element);
    lcn::updateFlows(reference.nodes, reference.elements, reference.var, pipes, reference.equations,
                     reference.corrections);
    for (const int e : pipes) {
        lcn::frictionFactor(reference.elem(e), reference.var);
        EXPECT_NEAR(network.elem(e).Massflow, reference.elem(e).Massflow, 1e-11) << e;
        EXPECT_EQ(network.elem(e).MassflowOld, reference.elem(e).MassflowOld) << e;
        EXPECT_NEAR(network.elem(e).friction, reference.elem(e).friction, 1e-10 * reference.elem(e).friction)
            << e;
    }
}

TEST(PipeSweep, friction_is_relaxed_below_0_4_only)
{
    for (const double relaxpp : {0.5, 0.4, 0.39, 0.1}) {
        Swept network;
        network.var.relaxpp = relaxpp;
        PipeSweep::Pipe& pipe = network.sweep.pipes().front();
        lcnNET_elems one = network.elem(pipe.element);
        one.friction = pipe.f = 0.1;
        one.Massflow = pipe.mass;
        network.sweep.updateFriction(network.var);
        lcn::frictionFactor(one, network.var);
        EXPECT_NEAR(pipe.f, one.friction, 1e-15) << relaxpp;
    }
}

TEST(PipeSweep, inflows_and_total_are_those_of_all_elements_that_are_here)
{
    Swept network;
    std::vector<double> balance(network.corrections.size(), 0.0);
    network.sweep.addInflows(balance);
    std::vector<double> expected(balance.size(), 0.0);
    double total = 0.0;
    for (int e = 1; e <= network.var.ElemTotal; ++e) {
        if (contains(network.sweep.others(), e)) continue;
        expected[static_cast<std::size_t>(network.elem(e).LocalStartNode)] -= network.elem(e).Massflow;
        expected[static_cast<std::size_t>(network.elem(e).LocalEndNode)] += network.elem(e).Massflow;
        total += std::fabs(network.elem(e).Massflow);
    }
    expectClose(expected, balance, 1e-12);
    EXPECT_NEAR(network.sweep.totalFlow(), total, 1e-12 * total);
}

TEST(PipeSweep, pressure_misses_are_the_sum_over_laws_of_open_pipes)
{
    Swept network;
    double expected = 0.0;
    for (const PipeSweep::Pipe& pipe : network.sweep.pipes()) {
        const double pStart = network.nodes[pipe.start].Pressure;
        const double pEnd = network.nodes[pipe.end].Pressure;
        const double loss =
            lcn::signedPressureLoss(network.nodes, network.elements, network.var, pipe.element, +1);
        if (pipe.toRe * std::fabs(pipe.mass) > lcn::kSmallestMeasuredRe)
            expected += std::fabs((pStart - pEnd - loss) / ((pStart + pEnd) / 2.0));
    }
    EXPECT_GT(expected, 0.0);
    EXPECT_NEAR(network.sweep.pressureMisses(network.nodes, network.var), expected, 1e-12 * expected);
}

TEST(PipeSweep, pressure_misses_of_the_law_do_not_know_a_damped_friction_factor)
{
    Swept network;
    const double expected = network.sweep.pressureMisses(network.nodes, network.var);
    for (PipeSweep::Pipe& pipe : network.sweep.pipes())
        pipe.f = 0.5;
    EXPECT_NE(network.sweep.pressureMisses(network.nodes, network.var), expected);
    EXPECT_EQ(network.sweep.pressureMisses(network.nodes, network.var, Friction::kUndamped), expected);
    EXPECT_EQ(network.sweep.pipes().front().f, 0.5);
}

TEST(PipeSweep, equal_pressures_are_listed)
{
    Swept network;
    const PipeSweep::Pipe& pipe = network.sweep.pipes()[5];
    network.nodes[pipe.start].Pressure = network.nodes[pipe.end].Pressure;
    network.sweep.assemble(network.nodes, network.equations);
    EXPECT_EQ(network.equations.withoutDrop, std::vector<int>{pipe.element});
    EXPECT_EQ(network.equations.coef[static_cast<std::size_t>(pipe.element)], lcn::kLargeConductance);
}

TEST(PipeSweep, geometry_that_is_no_number_shows_in_the_flow)
{
    Swept network;
    network.elem(14).length = std::numeric_limits<double>::quiet_NaN();
    network.sweep.prepare(network.nodes, network.elements, network.var, lcn::kSteadyState, true);
    network.sweep.assemble(network.nodes, network.equations);
    network.sweep.updateFlows(network.var, network.equations, network.corrections);
    network.sweep.write(network.elements);
    EXPECT_TRUE(std::isnan(network.elem(14).Massflow));
    EXPECT_TRUE(std::isnan(network.sweep.totalFlow()));
}

TEST(PipeSweep, flows_read_again_are_those_of_the_records)
{
    Swept network;
    std::vector<double> before;
    for (const PipeSweep::Pipe& pipe : network.sweep.pipes())
        before.insert(before.end(), {pipe.mass, pipe.f});
    const double total = network.sweep.totalFlow();
    for (PipeSweep::Pipe& pipe : network.sweep.pipes())
        pipe.mass = std::numeric_limits<double>::quiet_NaN();
    network.sweep.readFlows(network.elements, network.var);
    std::vector<double> after;
    for (const PipeSweep::Pipe& pipe : network.sweep.pipes())
        after.insert(after.end(), {pipe.mass, pipe.f});
    EXPECT_EQ(after, before);
    EXPECT_EQ(network.sweep.totalFlow(), total);
}

TEST(PipeSweep, everything_is_with_the_others_where_more_than_flows_and_pressures_changes)
{
    for (const int kind : {0, 1, 2, 3, 4, 5}) {
        SCOPED_TRACE(kind);
        Swept network;
        network.var.compressible = kind == 0;
        network.var.Minor = kind == 2 ? 1 : 4;
        if (kind == 3) network.var.flowWeight = 0.5;
        network.var.ViscosityLaw = kind == 4;
        network.var.Energy = kind == 4 ? 1 : 0;
        network.sweep.prepare(network.nodes, network.elements, network.var,
                              kind == 1 ? 0.5 : lcn::kSteadyState, kind != 5);
        EXPECT_FALSE(network.sweep.isUsed());
        EXPECT_EQ(network.sweep.others().size(), static_cast<std::size_t>(network.var.ElemTotal));
        EXPECT_EQ(network.sweep.totalFlow(), 0.0);
        EXPECT_EQ(network.sweep.pressureMisses(network.nodes, network.var), 0.0);
        std::vector<double> balance(network.corrections.size(), 1.0);
        const std::vector<double> before = balance;
        network.sweep.addInflows(balance);
        EXPECT_EQ(balance, before);
        const double flow = network.elem(1).Massflow;
        network.sweep.write(network.elements);
        EXPECT_EQ(network.elem(1).Massflow, flow);
    }
}
