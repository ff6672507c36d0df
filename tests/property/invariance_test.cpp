// What must not depend on numbering, on the direction in which elements are drawn, or on the units of the
// problem.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "support/networks.h"

using namespace support;

namespace
{

/// Relative to the average flow. Two solves that differ in their numbering alone stop at the same iteration:
/// over 200 random networks they differed by at most 4e-8.
constexpr double kBetweenSolves = 1e-6;

double averageOf(const std::vector<double>& flows)
{
    double sum = 0.0;
    for (const double flow : flows)
        sum += std::fabs(flow);
    return sum / static_cast<double>(flows.size());
}

std::vector<int> shuffled(std::mt19937& random, std::size_t count)
{
    std::vector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);
    return order;
}

const std::vector<int> kAllKinds = {TAVELL_PIPE,         TAVELL_PIPE,     TAVELL_HAZEN_WILLIAMS_PIPE,
                                    TAVELL_GENERAL_LOSS, TAVELL_KV_VALVE, TAVELL_CV_VALVE};

}  // namespace

TEST(Invariance, renumbering_nodes_and_elements_changes_nothing_beyond_rounding)
{
    std::mt19937 random(21);
    for (int i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        const Description original = randomNetwork(random, 5 + i, i % 10, kAllKinds);
        const std::vector<int> nodeOrder = shuffled(random, original.nodes.size());
        const std::vector<int> elementOrder = shuffled(random, original.elements.size());
        std::vector<int> newPosition(nodeOrder.size());
        Description permuted = original;
        for (std::size_t n = 0; n < nodeOrder.size(); ++n) {
            permuted.nodes[n] = original.nodes[static_cast<std::size_t>(nodeOrder[n])];
            newPosition[static_cast<std::size_t>(nodeOrder[n])] = static_cast<int>(n);
        }
        for (std::size_t e = 0; e < elementOrder.size(); ++e) {
            permuted.elements[e] = original.elements[static_cast<std::size_t>(elementOrder[e])];
            permuted.elements[e].start = newPosition[static_cast<std::size_t>(permuted.elements[e].start)];
            permuted.elements[e].end = newPosition[static_cast<std::size_t>(permuted.elements[e].end)];
        }
        const Built a(original);
        const Built b(permuted);
        ASSERT_TRUE(a.solve()) << a.feedback();
        ASSERT_TRUE(b.solve()) << b.feedback();
        const std::vector<double> flowA = a.results(TAVELL_RESULT_MASS_FLOW);
        const std::vector<double> flowB = b.results(TAVELL_RESULT_MASS_FLOW);
        for (std::size_t e = 0; e < elementOrder.size(); ++e)
            EXPECT_NEAR(flowB[e], flowA[static_cast<std::size_t>(elementOrder[e])],
                        kBetweenSolves * averageOf(flowA));
    }
}

TEST(Invariance, reversing_an_element_flips_the_sign_of_its_flow_and_nothing_else)
{
    std::mt19937 random(22);
    for (int i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        const Description original = randomNetwork(random, 6 + i, i % 10, kAllKinds);
        Description reversed = original;
        std::vector<double> sign(original.elements.size(), 1.0);
        for (std::size_t e = 0; e < reversed.elements.size(); ++e) {
            // a flow constraint counts along its element, so stubs of outlets stay as they are
            const auto end = static_cast<std::size_t>(reversed.elements[e].end);
            if (original.nodes[end].type == TAVELL_NODE_OUTLET || random() % 2 == 0) continue;
            std::swap(reversed.elements[e].start, reversed.elements[e].end);
            sign[e] = -1.0;
        }
        const Built a(original);
        const Built b(reversed);
        ASSERT_TRUE(a.solve()) << a.feedback();
        ASSERT_TRUE(b.solve()) << b.feedback();
        const std::vector<double> flowA = a.results(TAVELL_RESULT_MASS_FLOW);
        const std::vector<double> flowB = b.results(TAVELL_RESULT_MASS_FLOW);
        for (std::size_t e = 0; e < sign.size(); ++e)
            EXPECT_NEAR(flowB[e], sign[e] * flowA[e], kBetweenSolves * averageOf(flowA));
        const std::vector<double> pressureA = a.results(TAVELL_RESULT_PRESSURE);
        const std::vector<double> pressureB = b.results(TAVELL_RESULT_PRESSURE);
        for (std::size_t n = 0; n < pressureA.size(); ++n)
            EXPECT_NEAR(pressureB[n], pressureA[n], 1e-5 * std::fabs(pressureA[n]));
    }
}

TEST(Invariance, moving_or_turning_the_whole_network_with_gravity_changes_nothing)
{
    std::mt19937 random(23);
    const Description original = randomNetwork(random, 25, 8, kAllKinds);
    Description turned = original;
    for (NodeData& node : turned.nodes)
        node.at = {node.at[2] + 5.0, node.at[0] - 7.0, node.at[1] + 11.0};
    turned.gravity = {-1.0, 0.0, 0.0};
    const Built a(original);
    const Built b(turned);
    ASSERT_TRUE(a.solve());
    ASSERT_TRUE(b.solve());
    const std::vector<double> pressureA = a.results(TAVELL_RESULT_PRESSURE);
    const std::vector<double> pressureB = b.results(TAVELL_RESULT_PRESSURE);
    for (std::size_t n = 0; n < pressureA.size(); ++n)
        EXPECT_NEAR(pressureB[n], pressureA[n], 1e-8 * 8e5);
}

TEST(Invariance, flows_scale_with_the_root_of_pressure_in_a_network_of_quadratic_losses)
{
    // valves only: dp = r rho Q^2 exactly, so four times the pressure difference gives twice the flow
    const auto flowAt = [](double pressure) {
        Description d;
        d.gravity = {0.0, 0.0, 0.0};
        for (int i = 0; i < 5; ++i) {
            NodeData node;
            node.at = {static_cast<double>(i), i % 2 ? 1.0 : 0.0, 0.0};
            d.nodes.push_back(node);
        }
        d.nodes[0].type = TAVELL_NODE_INLET;
        d.nodes[0].value = 1e5 + pressure;
        d.nodes[4].type = TAVELL_NODE_OUTLET;
        d.nodes[4].value = 1e5;
        const int ends[][2] = {{0, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 4}};
        double Kv = 10.0;
        for (const auto& pair : ends) {
            ElementData valve;
            valve.start = pair[0];
            valve.end = pair[1];
            valve.type = TAVELL_KV_VALVE;
            valve.properties = {{static_cast<double>(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT), Kv}};
            Kv += 7.0;
            d.elements.push_back(valve);
        }
        const Built built(d);
        EXPECT_TRUE(built.solve()) << built.feedback();
        return built.results(TAVELL_RESULT_MASS_FLOW);
    };
    const std::vector<double> one = flowAt(2e4);
    const std::vector<double> two = flowAt(8e4);
    ASSERT_EQ(one.size(), 5U);
    for (std::size_t e = 0; e < one.size(); ++e)
        EXPECT_NEAR(two[e], 2.0 * one[e], 1e-5 * std::fabs(two[e]));
}

TEST(Invariance, laminar_flows_scale_with_pressure)
{
    const auto flowAt = [](double pressure) {
        Description d;
        d.gravity = {0.0, 0.0, 0.0};
        for (int i = 0; i < 4; ++i) {
            NodeData node;
            node.at = {static_cast<double>(i), 0.0, i == 2 ? 1.0 : 0.0};
            d.nodes.push_back(node);
        }
        d.nodes[0].type = TAVELL_NODE_INLET;
        d.nodes[0].value = 1e5 + pressure;
        d.nodes[3].type = TAVELL_NODE_OUTLET;
        d.nodes[3].value = 1e5;
        for (const auto& pair : {std::array<int, 2>{0, 1}, {1, 2}, {2, 3}, {1, 3}}) {
            ElementData pipe;
            pipe.start = pair[0];
            pipe.end = pair[1];
            pipe.diameter = 0.005;
            d.elements.push_back(pipe);
        }
        const Built built(d);
        EXPECT_TRUE(built.solve()) << built.feedback();
        return built.results(TAVELL_RESULT_MASS_FLOW);
    };
    const std::vector<double> one = flowAt(10.0);
    const std::vector<double> three = flowAt(30.0);
    ASSERT_EQ(one.size(), 4U);
    for (std::size_t e = 0; e < one.size(); ++e)
        EXPECT_NEAR(three[e], 3.0 * one[e], 1e-5 * std::fabs(three[e]));
}
