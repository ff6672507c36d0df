// Losses that follow from the geometry of junctions, seen from outside.
#include <gtest/gtest.h>

#include <cmath>

#include "support/networks.h"

using namespace support;

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kComputed = 1.0;   // computed losses unless a K is specified
constexpr double kSpecified = 0.0;  // specified K only

/// Pipes between the given places, in order; a pressure inlet at the first, a mass flow outlet at the last.
Description path(const std::vector<std::array<double, 3>>& places, const std::vector<double>& diameters,
                 double massFlow)
{
    Description d;
    d.gravity = {0.0, 0.0, 0.0};
    for (const auto& at : places) {
        NodeData node;
        node.at = at;
        d.nodes.push_back(node);
    }
    for (std::size_t i = 1; i < places.size(); ++i) {
        ElementData pipe;
        pipe.start = static_cast<int>(i) - 1;
        pipe.end = static_cast<int>(i);
        pipe.diameter = diameters[i - 1];
        d.elements.push_back(pipe);
    }
    d.nodes.front().type = TAVELL_NODE_INLET;
    d.nodes.front().value = 5e5;
    d.nodes.back().type = TAVELL_NODE_OUTLET;
    d.nodes.back().constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    d.nodes.back().value = massFlow;
    return d;
}

/// Pressure from the first to the last node that junctions alone take away [Pa].
double junctionLoss(Description d)
{
    d.minorLoss = kComputed;
    const Built with(d);
    d.minorLoss = kSpecified;
    const Built without(d);
    EXPECT_TRUE(with.solve()) << with.feedback();
    EXPECT_TRUE(without.solve());
    return without.results(TAVELL_RESULT_PRESSURE).back() - with.results(TAVELL_RESULT_PRESSURE).back();
}

double dynamicPressure(const Description& d, double diameter, double massFlow)
{
    const double V = massFlow / d.density / (kPi * diameter * diameter / 4.0);
    return d.density * V * V / 2.0;
}

}  // namespace

TEST(Junctions, straight_run_of_equal_pipes_has_no_loss)
{
    // also where the direction is not along an axis and rounding shows in it
    const std::vector<std::array<double, 3>> places = {{0, 0, 0}, {1, 2, 3}, {3, 6, 9}, {7, 14, 21}};
    Description d = path(places, {0.1, 0.1, 0.1}, 5.0);
    d.minorLoss = kComputed;
    const Built with(d);
    d.minorLoss = kSpecified;
    const Built without(d);
    ASSERT_TRUE(with.solve());
    ASSERT_TRUE(without.solve());
    EXPECT_EQ(with.results(TAVELL_RESULT_PRESSURE), without.results(TAVELL_RESULT_PRESSURE));
}

TEST(Junctions, sudden_expansion_loses_borda_carnot)
{
    const Description d = path({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {0.05, 0.1}, 4.0);
    const double expected = std::pow(1.0 - 0.25, 2) * dynamicPressure(d, 0.05, 4.0);
    EXPECT_NEAR(junctionLoss(d), expected, 1e-4 * expected);
}

TEST(Junctions, sudden_contraction_loses_half_the_area_change)
{
    const Description d = path({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {0.1, 0.05}, 4.0);
    const double expected = 0.5 * (1.0 - 0.25) * dynamicPressure(d, 0.05, 4.0);
    EXPECT_NEAR(junctionLoss(d), expected, 1e-4 * expected);
}

TEST(Junctions, mitre_bend_follows_weisbach)
{
    // 90 degrees: 0.9457/2 + 2.047/4 = 0.9846
    const Description d = path({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {0.1, 0.1}, 10.0);
    const double expected = (0.9457 / 2.0 + 2.047 / 4.0) * dynamicPressure(d, 0.1, 10.0);
    EXPECT_NEAR(junctionLoss(d), expected, 1e-4 * expected);
}

TEST(Junctions, two_bends_of_one_element_add_up)
{
    const Description d = path({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {2, 1, 0}}, {0.1, 0.1, 0.1}, 10.0);
    const double expected = 2.0 * (0.9457 / 2.0 + 2.047 / 4.0) * dynamicPressure(d, 0.1, 10.0);
    EXPECT_NEAR(junctionLoss(d), expected, 1e-4 * expected);
}

TEST(Junctions, specified_loss_replaces_the_computed_one)
{
    Description d = path({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {0.1, 0.1}, 10.0);
    for (ElementData& element : d.elements)
        element.properties.push_back({static_cast<double>(TAVELL_ELEMENT_K_SPECIFIED), 0.3});
    EXPECT_NEAR(junctionLoss(d), 0.0, 1e-3);
}

namespace
{

/// A tee: inlet along x, two equal branches at the given angle to either side.
Description tee(double angle, bool reverseSecond)
{
    Description d = path({{0, 0, 0}, {1, 0, 0}}, {0.1}, 0.0);
    for (const double side : {+1.0, -1.0}) {
        NodeData node;
        node.at = {1.0 + std::cos(angle), side * std::sin(angle), 0.0};
        node.type = TAVELL_NODE_OUTLET;
        node.constraint = TAVELL_CONSTRAINT_PRESSURE;
        node.value = 4.9e5;
        d.nodes.push_back(node);
        ElementData pipe;
        pipe.start = 1;
        pipe.end = static_cast<int>(d.nodes.size()) - 1;
        if (side < 0.0 && reverseSecond) std::swap(pipe.start, pipe.end);
        d.elements.push_back(pipe);
    }
    d.nodes[1].type = TAVELL_NODE_INTERNAL;
    d.nodes[1].constraint = TAVELL_CONSTRAINT_PRESSURE;
    d.minorLoss = kComputed;
    return d;
}

}  // namespace

TEST(Junctions, symmetric_tee_divides_its_flow_equally)
{
    for (const double angle : {kPi / 6.0, kPi / 2.0, 2.5}) {
        const Built built(tee(angle, false));
        ASSERT_TRUE(built.solve()) << built.feedback();
        const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
        EXPECT_NEAR(flow[1], flow[2], 1e-9 * flow[1]);
    }
}

TEST(Junctions, dividing_branch_loses_by_velocity_ratio_and_angle)
{
    // r = 1/2 at 90 degrees: K = 1/4 + 1 - cos(67.5 deg) on the supply
    const Description d = tee(kPi / 2.0, false);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
    const double K = 1.25 - std::cos(0.75 * kPi / 2.0);
    const double expected = lossOf(d, d.elements[1], flow[1]) + K * dynamicPressure(d, 0.1, flow[0]);
    EXPECT_NEAR(pressure[1] - pressure[2], expected, 1e-4 * expected);
}

TEST(Junctions, reversing_an_element_changes_nothing_but_its_sign)
{
    // short pipes, where dividing losses could also hold an unequal division
    const Built a(tee(1.0, false));
    const Built b(tee(1.0, true));
    ASSERT_TRUE(a.solve());
    ASSERT_TRUE(b.solve());
    const std::vector<double> flowA = a.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> flowB = b.results(TAVELL_RESULT_MASS_FLOW);
    EXPECT_NEAR(flowB[2], -flowA[2], 1e-9 * flowA[2]);
    EXPECT_NEAR(flowB[1], flowA[1], 1e-9 * flowA[1]);
}

TEST(Junctions, random_trees_and_looped_networks_converge)
{
    std::mt19937 random(71);
    for (int i = 0; i < 80; ++i) {
        SCOPED_TRACE(i);
        Description d =
            randomNetwork(random, 5 + i % 50, i % 2 == 0 ? 0 : i % 20,
                          {TAVELL_PIPE, TAVELL_PIPE, TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_KV_VALVE});
        d.minorLoss = i % 3 == 2 ? 2.0 : kComputed;
        const Built built(d);
        EXPECT_TRUE(built.solve()) << built.feedback();
    }
}

TEST(Junctions, grids_out_of_true_converge)
{
    std::mt19937 random(72);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        Description d = grid(3 + i % 8, 3 + i % 5, 3.0);
        for (NodeData& node : d.nodes)
            for (double& coordinate : node.at)
                coordinate += 2.0 * unit(random);
        for (ElementData& element : d.elements)
            element.diameter *= 0.5 + 2.0 * unit(random);
        d.minorLoss = kComputed;
        const Built built(d);
        EXPECT_TRUE(built.solve()) << built.feedback();
    }
}
