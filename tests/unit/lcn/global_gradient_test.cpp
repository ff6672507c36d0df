// global_gradient_test.cpp: the search for starting values near the solution.
#include "lcn/global_gradient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "lcn/element_hydraulics.h"
#include "lcn/pressure_groups.h"
#include "unit/support/large_network.h"

using lcn::NearStart;
using SolverTest::LargeNetwork;
using SolverTest::makeCurve;

namespace
{

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

int callsLeft = 0;
bool atTheLastCall()
{
    return --callsLeft == 0;
}

/// What the search may write.
std::vector<double> stateOf(const LargeNetwork& network, lcn::PipeSweep& pipes)
{
    std::vector<double> state;
    for (int i = 1; i <= network.var.NodeTotal; ++i)
        state.insert(state.end(), {network.nodes[i].Pressure, network.nodes[i].Temperature});
    for (int e = 1; e <= network.var.ElemTotal; ++e)
        state.insert(state.end(),
                     {network.elem(e).Massflow, network.elem(e).friction, network.elem(e).FixedFlow});
    for (const lcn::PipeSweep::Pipe& pipe : pipes.pipes())
        state.insert(state.end(), {pipe.mass, pipe.f});
    state.push_back(pipes.totalFlow());
    return state;
}

/// A search from prepared records.
struct Search {
    explicit Search(LargeNetwork& searched, double dt = lcn::kSteadyState) : network(searched)
    {
        const auto& [var, nodes, elements] = std::tie(network.var, network.nodes, network.elements);
        groups.check(nodes, elements, var);
        equations.size(var);
        corrections.assign(static_cast<std::size_t>(var.NodeTotal) + 1, 0.0);
        system.prepare(nodes, elements, network.var);
        pipes.prepare(nodes, elements, var, dt, true);
        before = stateOf(network, pipes);
    }

    NearStart run(lcn::CancelCallback cancel = nullptr)
    {
        return lcn::startNearSolution(network.nodes, network.elements, network.var, pipes, system, equations,
                                      corrections, cancel);
    }

    /// Bit for bit, numbers that are none included.
    bool isUntouched()
    {
        const std::vector<double> after = stateOf(network, pipes);
        return std::equal(before.begin(), before.end(), after.begin(), after.end(),
                          [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); });
    }

    LargeNetwork& network;
    lcn::PressureGroups groups;
    lcn::NodeEquations equations;
    std::vector<double> corrections;
    lcn::PressureSystem system;
    lcn::PipeSweep pipes;
    std::vector<double> before;
};

/// Free nodes balance within 1e-6 of the mean flow, and every open element's law meets the pressures within 1e-6
/// of their range, 1e5 Pa.
void expectSolved(Search& search)
{
    LargeNetwork& network = search.network;
    search.pipes.write(network.elements);
    std::vector<double> balance(static_cast<std::size_t>(network.var.NodeTotal) + 1, 0.0);
    double total = 0.0;
    for (int e = 1; e <= network.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = network.elem(e);
        balance[static_cast<std::size_t>(elem.LocalStartNode)] -= elem.Massflow;
        balance[static_cast<std::size_t>(elem.LocalEndNode)] += elem.Massflow;
        total += std::fabs(elem.Massflow);
        const lcnNET_nodes& start = network.nodes[elem.LocalStartNode];
        const lcnNET_nodes& end = network.nodes[elem.LocalEndNode];
        if (elem.fix != 0 || (start.flag != lcn::kFreeNode && end.flag != lcn::kFreeNode)) continue;
        // a loss curve enters as its chord, 1e5 Pa s/m3 here
        const double loss =
            elem.type == lcn::kLossCurve
                ? 1e5 * elem.volumeFlow()
                : lcn::signedPressureLoss(network.nodes, network.elements, network.var, e, +1);
        EXPECT_NEAR(start.Pressure - end.Pressure, loss, 0.1) << "element " << e << " type " << elem.type;
    }
    const double average = total / network.var.ElemTotal;
    for (int i = 1; i <= network.var.NodeTotal; ++i)
        if (network.nodes[i].flag == lcn::kFreeNode) {
            EXPECT_NEAR(balance[static_cast<std::size_t>(i)], 0.0, 1e-6 * std::fmax(average, 1e-3))
                << "node " << i;
        }
}

/// Every eleventh inner element of this type, with its inputs.
void makeSome(LargeNetwork& network, int type)
{
    for (int e = 3; e <= network.inner; e += 11) {
        lcnNET_elems& elem = network.elem(e);
        elem.type = type;
        switch (type) {
        case lcn::kPump:
            elem.Curve = makeCurve({0.0, 0.02, 0.04, 0.06}, {8e3, 7e3, 4e3, 0.0});
            break;
        case lcn::kLossCurve:
            elem.Curve = makeCurve({0.01, 0.02, 0.03, 0.04}, {1e3, 2e3, 3e3, 4e3});
            break;
        case lcn::kHazenWilliams:
            elem.HWcoeff = 120.0;
            break;
        case lcn::kOrifice:
            elem.HWcoeff = 0.06;
            break;
        case lcn::kGeneralLoss:
            elem.HWcoeff = 0.02;
            elem.Param1 = 1.0;
            elem.Param2 = 1.0;
            elem.Param3 = 4.9;
            elem.Param4 = 1.9;
            break;
        case lcn::kKvValve:
        case lcn::kCvValve:
            elem.HWcoeff = 100.0 / 3600.0;
            break;
        case lcn::kControlValve:
            elem.FixedFlow = 50.0;
            elem.fix = 1;
            break;
        case lcn::kNonReturn:
            elem.FixedFlow = 0.0;
            elem.fix = 1;
            break;
        default:
            break;
        }
    }
}

}  // namespace

TEST(GlobalGradient, large_network_of_pipes_is_found)
{
    LargeNetwork network;
    network.prepare();
    Search search(network);
    ASSERT_EQ(search.run(), NearStart::kFound);
    expectSolved(search);
    EXPECT_TRUE(network.var.Messages.empty());
}

TEST(GlobalGradient, every_kind_of_element_is_found)
{
    for (int type = lcn::kPump; type <= lcn::kNonReturn; ++type) {
        SCOPED_TRACE(type);
        LargeNetwork network;
        makeSome(network, type);
        network.prepare();
        Search search(network);
        ASSERT_EQ(search.run(), NearStart::kFound);
        expectSolved(search);
    }
}

TEST(GlobalGradient, every_friction_method_is_found)
{
    for (int method = 0; method <= 6; ++method) {
        SCOPED_TRACE(method);
        LargeNetwork network;
        network.var.FrictionMethod = method;
        network.prepare();
        Search search(network);
        ASSERT_EQ(search.run(), NearStart::kFound);
        expectSolved(search);
    }
}

TEST(GlobalGradient, laminar_network_is_found)
{
    LargeNetwork network;
    network.var.Viscosity = 1.0;
    network.prepare();
    Search search(network);
    ASSERT_EQ(search.run(), NearStart::kFound);
    expectSolved(search);
}

TEST(GlobalGradient, fixed_flows_inside_and_their_targets_are_kept)
{
    LargeNetwork network;
    network.fixFlow(40, 0.3);  // a pipe between inner nodes: a target
    makeSome(network, lcn::kPump);
    network.fixFlow(3, 0.2);  // a pump: fixed
    network.prepare();
    ASSERT_EQ(network.elem(40).FlowLimited, 1);
    ASSERT_EQ(network.elem(3).fix, 1);
    Search search(network);
    ASSERT_EQ(search.run(), NearStart::kFound);
    EXPECT_EQ(network.elem(3).Massflow, 0.2);
    network.elem(40).Massflow = 0.3;  // as the first iteration imposes it
    network.elem(40).fix = 1;
    expectSolved(search);
}

TEST(GlobalGradient, network_without_demands_is_found)
{
    LargeNetwork network(20, 0.0);
    network.prepare();
    Search search(network);
    ASSERT_EQ(search.run(), NearStart::kFound);
    expectSolved(search);
}

TEST(GlobalGradient, network_at_rest_ends_with_finite_values_or_leaves_all_as_it_was)
{
    LargeNetwork network(20, 0.0);
    network.fixPressure(network.lattice + 2, 6e5);
    network.prepare();
    Search search(network);
    if (search.run() != NearStart::kFound) {
        EXPECT_TRUE(search.isUntouched());
    } else {
        for (const double value : stateOf(network, search.pipes))
            EXPECT_TRUE(std::isfinite(value));
        EXPECT_LT(search.pipes.totalFlow(), 1e-2);  // [kg/s], 0.02 at one demand of the network with demands
    }
}

TEST(GlobalGradient, dead_ends_at_rest_are_found)
{
    LargeNetwork network;
    for (std::size_t i = 0; i < network.demands.size(); i += 2)
        network.fixFlow(network.demands[i], 0.0);
    network.prepare();
    Search search(network);
    ASSERT_EQ(search.run(), NearStart::kFound);
    expectSolved(search);
}

TEST(GlobalGradient, small_networks_are_not_tried)
{
    LargeNetwork network(17);  // 289 free nodes
    network.prepare();
    Search search(network);
    EXPECT_EQ(search.run(), NearStart::kNotTried);
    EXPECT_TRUE(search.isUntouched());

    LargeNetwork larger(18);  // 324
    larger.prepare();
    Search second(larger);
    EXPECT_EQ(second.run(), NearStart::kFound);
}

TEST(GlobalGradient, traced_networks_are_not_tried)
{
    LargeNetwork network;
    network.prepare();
    network.var.Debug = true;
    Search search(network);
    EXPECT_EQ(search.run(), NearStart::kNotTried);
    EXPECT_TRUE(search.isUntouched());
}

TEST(GlobalGradient, gas_unsteady_steps_and_computed_junction_losses_are_not_tried)
{
    for (const int kind : {0, 1, 2, 3, 4}) {
        SCOPED_TRACE(kind);
        LargeNetwork network;
        network.prepare();
        network.var.compressible = kind == 0;
        network.var.Minor = kind == 2 ? 2 : 0;
        if (kind == 3) network.var.flowWeight = 0.5;
        network.var.ViscosityLaw = kind == 4;
        network.var.Energy = kind == 4 ? 1 : 0;
        Search search(network, kind == 1 ? 1.0 : lcn::kSteadyState);
        EXPECT_EQ(search.run(), NearStart::kNotTried);
        EXPECT_TRUE(search.isUntouched());
    }
}

TEST(GlobalGradient, cancelled_search_leaves_all_as_it_was)
{
    for (int step = 1; step <= 4; ++step) {
        SCOPED_TRACE(step);
        LargeNetwork network;
        makeSome(network, lcn::kControlValve);
        makeSome(network, lcn::kHazenWilliams);
        network.prepare();
        Search search(network);
        callsLeft = step;
        EXPECT_EQ(search.run(atTheLastCall), NearStart::kCancelled);
        EXPECT_EQ(callsLeft, 0);
        EXPECT_TRUE(search.isUntouched());
    }
}

TEST(GlobalGradient, solve_cancelled_in_the_search_fails_with_701208)
{
    for (int step = 1; step <= 4; ++step) {
        SCOPED_TRACE(step);
        LargeNetwork network;
        network.prepare();
        callsLeft = step;
        EXPECT_FALSE(
            lcn::iterate(network.nodes, network.elements, network.var, lcn::kSteadyState, atTheLastCall));
        EXPECT_EQ(callsLeft, 0);  // asked no more once it has said so
        EXPECT_EQ(network.var.nIter, 1);
        const std::vector<std::uint32_t> ids = network.messageIds();
        EXPECT_EQ(std::count(ids.begin(), ids.end(), 701208U), 1);
    }
}

TEST(GlobalGradient, geometry_that_is_no_number_is_not_found_and_leaves_all_as_it_was)
{
    const auto fields = {&lcnNET_elems::length, &lcnNET_elems::diam, &lcnNET_elems::Area,
                         &lcnNET_elems::rough,  &lcnNET_elems::k,    &lcnNET_elems::LaminarFactor};
    for (const auto field : fields) {
        LargeNetwork network;
        network.prepare();
        network.elem(100).*field = kNotANumber;
        if (field == &lcnNET_elems::LaminarFactor)
            network.elem(100).diam = network.var.Viscosity * 1e-3;  // laminar
        Search search(network);
        EXPECT_EQ(search.run(), NearStart::kNotFound);
        EXPECT_TRUE(search.isUntouched());
    }
}

TEST(GlobalGradient, fixed_pressure_that_is_no_number_is_not_found_and_leaves_all_as_it_was)
{
    LargeNetwork network;
    network.prepare();
    network.nodes[network.lattice + 1].Pressure = kNotANumber;
    Search search(network);
    EXPECT_EQ(search.run(), NearStart::kNotFound);
    EXPECT_TRUE(search.isUntouched());
}

TEST(GlobalGradient, search_that_wanders_to_its_last_step_is_not_found_and_leaves_all_as_it_was)
{
    // every third element loses as the 0.3rd power of its flow: Newton's steps overshoot by 1 / 0.3 - 1 = 2.3
    LargeNetwork network;
    for (int e = 1; e <= network.inner; e += 3) {
        network.elem(e).type = lcn::kGeneralLoss;
        network.elem(e).HWcoeff = 100.0;
        network.elem(e).Param1 = 1.0;
        network.elem(e).Param4 = 0.3;
    }
    network.prepare();
    Search search(network);
    static int steps;
    steps = 0;
    const NearStart outcome = search.run([] {
        ++steps;
        return false;
    });
    EXPECT_EQ(outcome, NearStart::kNotFound);
    EXPECT_EQ(steps, 20);
    EXPECT_TRUE(search.isUntouched());
}

TEST(GlobalGradient, part_without_a_pressure_is_not_found_or_solved)
{
    LargeNetwork network;
    // both stubs to the fixed pressures shut: only fixed flows are left, and they do not balance
    network.fixFlow(network.inner + 1, 0.0);
    network.fixFlow(network.inner + 2, 0.0);
    network.prepare();
    Search search(network);
    EXPECT_EQ(search.run(), NearStart::kNotFound);
    EXPECT_TRUE(search.isUntouched());
}

TEST(GlobalGradient, part_that_is_held_for_want_of_a_pressure_is_found)
{
    LargeNetwork network;
    network.fixFlow(network.inner + 1, 0.5);  // in at one corner, out at the other
    network.fixFlow(network.inner + 2, 0.5);
    for (const int e : network.demands)
        network.fixFlow(e, 0.0);
    network.prepare();
    Search search(network);
    ASSERT_EQ(std::count_if(&network.nodes[1], &network.nodes[network.lattice] + 1,
                            [](const lcnNET_nodes& node) { return node.held == 1; }),
              1);
    ASSERT_EQ(search.run(), NearStart::kFound);
    expectSolved(search);
}
