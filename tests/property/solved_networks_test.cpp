// Laws that hold on every solved network, recomputed from its results outside the solver.
#include <gtest/gtest.h>

#include <cmath>

#include "support/networks.h"

using namespace support;

namespace
{

constexpr double kCriterion =
    1e-6;  // the solver's criterion, for the mass error and for the summed pressure error

void expectLaws(const Description& description, const Built& built)
{
    const LawCheck check = checkLaws(description, built);
    // results carry the state after the last update, the criterion was met by that same state; a little room
    // for the different order of the sums
    EXPECT_LT(check.mass, 1.01 * kCriterion);
    EXPECT_LT(check.pressure, 1.01 * kCriterion) << check.worst;
}

/// Solves `count` random networks of elements of the given types and holds the laws on each.
void expectLawsOnRandomNetworks(unsigned seed, int count, const std::vector<int>& types)
{
    std::mt19937 random(seed);
    for (int i = 0; i < count; ++i) {
        SCOPED_TRACE("network " + std::to_string(i));
        const Description description = randomNetwork(random, 4 + i % 50, i % 20, types);
        const Built built(description);
        ASSERT_TRUE(built.solve()) << built.feedback();
        EXPECT_TRUE(built.feedbackIds().empty()) << built.feedback();
        expectLaws(description, built);
    }
}

}  // namespace

TEST(SolvedNetworks, pipes_obey_mass_balance_and_darcy_weisbach)
{
    expectLawsOnRandomNetworks(11, 120, {TAVELL_PIPE});
}

TEST(SolvedNetworks, hazen_williams_pipes_obey_their_law)
{
    expectLawsOnRandomNetworks(12, 80, {TAVELL_HAZEN_WILLIAMS_PIPE});
}

TEST(SolvedNetworks, general_losses_obey_their_law)
{
    expectLawsOnRandomNetworks(13, 80, {TAVELL_GENERAL_LOSS});
}

TEST(SolvedNetworks, valves_obey_their_law_in_either_direction)
{
    expectLawsOnRandomNetworks(14, 80, {TAVELL_KV_VALVE, TAVELL_CV_VALVE, TAVELL_PIPE});
}

TEST(SolvedNetworks, orifices_obey_their_law_in_either_direction)
{
    expectLawsOnRandomNetworks(19, 60, {TAVELL_ORIFICE, TAVELL_PIPE, TAVELL_PIPE});
}

TEST(SolvedNetworks, straight_loss_curves_obey_their_law)
{
    expectLawsOnRandomNetworks(20, 60, {TAVELL_LOSS, TAVELL_PIPE});
}

TEST(SolvedNetworks, mixed_networks_obey_every_law)
{
    expectLawsOnRandomNetworks(15, 150,
                               {TAVELL_PIPE, TAVELL_PIPE, TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_GENERAL_LOSS,
                                TAVELL_KV_VALVE, TAVELL_CV_VALVE, TAVELL_ORIFICE, TAVELL_LOSS});
}

TEST(SolvedNetworks, pumps_that_feed_random_networks_stand_on_their_curve)
{
    std::mt19937 random(24);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        Description description = randomNetwork(random, 5 + i % 30, i % 8, {TAVELL_PIPE});
        // the inlet's stub becomes the pump, from a low reservoir; its curve reaches beyond all the demands
        double demand = 0.0;
        for (const NodeData& node : description.nodes)
            if (node.type == TAVELL_NODE_OUTLET && node.constraint == TAVELL_CONSTRAINT_MASS_FLOW)
                demand += node.value;
        for (NodeData& node : description.nodes) {
            if (node.type == TAVELL_NODE_INLET) node.value = 2e5;
            if (node.type == TAVELL_NODE_OUTLET && node.constraint == TAVELL_CONSTRAINT_PRESSURE) {
                node.constraint = TAVELL_CONSTRAINT_MASS_FLOW;
                node.value = 0.5;
                demand += 0.5;
            }
        }
        for (ElementData& element : description.elements) {
            if (description.nodes[static_cast<std::size_t>(element.start)].type != TAVELL_NODE_INLET)
                continue;
            element.type = TAVELL_PUMP;
            const double most = 2.0 * demand / description.density;
            for (int point = 0; point < 5; ++point) {
                const double Q = most * point / 4.0;
                element.curveFlows.push_back(Q);
                element.curvePressures.push_back(6e5 * (1.0 - Q * Q / (most * most)));
            }
        }
        const Built built(description);
        ASSERT_TRUE(built.solve()) << built.feedback();
        // curve points are kept to six digits
        const LawCheck check = checkLaws(description, built);
        EXPECT_LT(check.mass, 1.01 * kCriterion);
        EXPECT_LT(check.pressure, 1e-5) << check.worst;
    }
}

TEST(SolvedNetworks, every_friction_method_gives_a_solved_network_near_the_others)
{
    std::mt19937 random(16);
    const Description description = randomNetwork(random, 30, 10, {TAVELL_PIPE});
    const Built reference(description);
    ASSERT_TRUE(reference.solve());
    const std::vector<double> expected = reference.results(TAVELL_RESULT_PRESSURE);
    const auto [low, high] = std::minmax_element(expected.begin(), expected.end());
    for (int method = 2; method <= 6; ++method) {
        SCOPED_TRACE(method);
        Description other = description;
        other.friction = method;
        const Built built(other);
        ASSERT_TRUE(built.solve()) << built.feedback();
        const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
        // the correlations differ by a few per cent in f
        for (std::size_t i = 0; i < pressure.size(); ++i)
            EXPECT_NEAR(pressure[i], expected[i], 0.1 * (*high - *low));
    }
}

TEST(SolvedNetworks, external_flows_add_up_to_nothing)
{
    std::mt19937 random(17);
    for (int i = 0; i < 20; ++i) {
        const Description description = randomNetwork(random, 20, 5, {TAVELL_PIPE});
        const Built built(description);
        ASSERT_TRUE(built.solve());
        double sum = 0.0;
        double largest = 0.0;
        for (const double flow : built.results(TAVELL_RESULT_EXTERNAL_MASS_FLOW)) {
            sum += flow;
            largest = std::fmax(largest, std::fabs(flow));
        }
        EXPECT_NEAR(sum, 0.0, 1e-13 * largest * static_cast<double>(description.nodes.size()));
    }
}

TEST(SolvedNetworks, the_same_network_gives_the_same_bits_every_time)
{
    std::mt19937 random(18);
    const Description description = randomNetwork(random, 40, 15, {TAVELL_PIPE, TAVELL_KV_VALVE});
    const Built first(description);
    ASSERT_TRUE(first.solve());
    const std::vector<double> flows = first.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> pressures = first.results(TAVELL_RESULT_PRESSURE);

    ASSERT_TRUE(first.solve());
    EXPECT_EQ(first.results(TAVELL_RESULT_MASS_FLOW), flows);
    const Built second(description);
    ASSERT_TRUE(second.solve());
    EXPECT_EQ(second.results(TAVELL_RESULT_MASS_FLOW), flows);
    EXPECT_EQ(second.results(TAVELL_RESULT_PRESSURE), pressures);
}

TEST(SolvedNetworks, a_large_grid_converges_in_about_thirty_iterations)
{
    static int iterations;
    iterations = 0;
    const Description description = grid(20, 20, 3.0);
    const Built built(description);
    ASSERT_TRUE(built.circuit().Solve(false, [] {
        ++iterations;
        return false;
    })) << built.feedback();
    EXPECT_LT(iterations,
              40);  // relaxation 0.5 halves the error: 2^-20 is 1e-6, and the nonlinearity costs some more
    expectLaws(description, built);
}
