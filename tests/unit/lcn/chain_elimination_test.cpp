// chain_elimination_test.cpp: what is eliminated before the core, and what it costs.
#include "lcn/chain_elimination.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "unit/support/graphs.h"

using namespace SolverTest;

namespace
{

std::vector<lcn::EquationPair> pairsOf(const Edges& edges)
{
    std::vector<lcn::EquationPair> pairs;
    for (const auto& [a, b] : edges)
        pairs.push_back({a, b});
    return pairs;
}

lcn::ChainElimination prepared(int n, const Edges& edges)
{
    lcn::ChainElimination chains;
    chains.prepare(n, pairsOf(edges));
    return chains;
}

/// Two hubs with count equations between them.
Edges twoHubs(int count)
{
    Edges edges;
    for (int i = 3; i < 3 + count; ++i) {
        edges.push_back({1, i});
        edges.push_back({i, 2});
    }
    return edges;
}

/// A line whose equations all meet one hub as well.
Edges fan(int n)
{
    Edges edges;
    for (int i = 2; i <= n; ++i) {
        edges.push_back({1, i});
        if (i < n) edges.push_back({i, i + 1});
    }
    return edges;
}

/// count hubs in a ring, every two neighbours joined by width equations, so that repetitions come late.
Edges ringOfHubs(int count, int width)
{
    Edges edges;
    int next = count;
    for (int hub = 1; hub <= count; ++hub)
        for (int i = 0; i < width; ++i) {
            edges.push_back({hub, ++next});
            edges.push_back({next, hub % count + 1});
        }
    return edges;
}

Edges completeGraph(int n)
{
    Edges edges;
    for (int a = 1; a <= n; ++a)
        for (int b = a + 1; b <= n; ++b)
            edges.push_back({a, b});
    return edges;
}

}  // namespace

TEST(ChainElimination, trees_cycles_and_series_parallel_networks_leave_no_core)
{
    EXPECT_EQ(prepared(100, path(100)).coreSize(), 0);
    EXPECT_EQ(prepared(202, twoHubs(200)).coreSize(), 0);
    EXPECT_EQ(prepared(200, fan(200)).coreSize(), 0);
    EXPECT_EQ(prepared(50, gridEdges(2, 25)).coreSize(), 0);
    EXPECT_EQ(prepared(3 + 3 * 40, ringOfHubs(3, 40)).coreSize(), 0);
}

TEST(ChainElimination, equations_with_three_neighbours_stay)
{
    const lcn::ChainElimination chains = prepared(4, completeGraph(4));
    EXPECT_EQ(chains.coreSize(), 4);
    EXPECT_EQ(chains.corePairs().size(), 6U);
    EXPECT_EQ(chains.rounds(), 0);
}

TEST(ChainElimination, chains_between_core_equations_become_one_pair)
{
    // the complete graph of four, every pair cut by two equations, and a dead end at each
    Edges edges;
    int next = 4;
    for (const auto& [a, b] : completeGraph(4)) {
        edges.push_back({a, next + 1});
        edges.push_back({next + 1, next + 2});
        edges.push_back({next + 2, b});
        next += 2;
    }
    for (int i = 1; i <= 4; ++i)
        edges.push_back({i, ++next});
    const lcn::ChainElimination chains = prepared(next, edges);
    EXPECT_EQ(chains.coreSize(), 4);
    EXPECT_EQ(chains.corePairs().size(), 6U);
}

TEST(ChainElimination, repeated_pairs_are_one_neighbour)
{
    Edges edges = path(30);
    for (int repeat = 0; repeat < 40; ++repeat)
        for (const auto& [a, b] : path(30))
            edges.push_back({b, a});
    EXPECT_EQ(prepared(30, edges).coreSize(), 0);
}

TEST(ChainElimination, core_pairs_are_distinct)
{
    std::mt19937 random(1);
    for (int repeat = 0; repeat < 20; ++repeat) {
        const lcn::ChainElimination chains = prepared(60, randomEdges(60, 150, random));
        std::vector<std::pair<int, int>> seen;
        for (const lcn::EquationPair& pair : chains.corePairs()) {
            EXPECT_LT(pair.row, pair.column);
            EXPECT_LT(pair.column, chains.coreSize());
            seen.emplace_back(pair.row, pair.column);
        }
        std::sort(seen.begin(), seen.end());
        EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
    }
}

TEST(ChainElimination, rounds_of_a_line_are_logarithmic)
{
    // In order, every round takes every second equation: log2 of n, and one for the last.
    EXPECT_EQ(prepared(1 << 10, path(1 << 10)).rounds(), 11);
    EXPECT_EQ(prepared(1 << 16, path(1 << 16)).rounds(), 17);
    // In random order a round takes more than a third: log n / log 1.5 at most.
    std::mt19937 random(2);
    EXPECT_LE(prepared(1 << 16, shuffled(path(1 << 16), 1 << 16, random)).rounds(), 28);
}

TEST(ChainElimination, work_is_linear_whatever_the_shape)
{
    std::mt19937 random(3);
    const auto check = [&](auto&& make, const char* what) {
        const auto [smallSize, smallEdges] = make(1000);
        const auto [largeSize, largeEdges] = make(16000);
        const auto small = static_cast<double>(prepared(smallSize, smallEdges).work());
        const auto large = static_cast<double>(prepared(largeSize, largeEdges).work());
        EXPECT_LT(large, 18.0 * small) << what;
    };
    using Case = std::pair<int, Edges>;
    check([](int n) { return Case{n, path(n)}; }, "line");
    check([&](int n) { return Case{n, shuffled(path(n), n, random)}; }, "shuffled line");
    check([](int n) { return Case{n + 2, twoHubs(n)}; }, "two hubs");
    check([&](int n) { return Case{n + 2, shuffled(twoHubs(n), n + 2, random)}; }, "two hubs, shuffled");
    check([](int n) { return Case{n, fan(n)}; }, "fan");
    check([](int n) { return Case{2 * n, gridEdges(2, n)}; }, "ladder");
    check([](int n) { return Case{40 + n, ringOfHubs(40, n / 40)}; }, "ring of hubs");
    check([](int n) { return Case{n, gridEdges(n / 25, 25)}; }, "grid");
    check([&](int n) { return Case{n, randomEdges(n, n + n / 8, random)}; }, "random");
}

TEST(ChainElimination, line_becomes_the_series_conductance)
{
    // By hand: conductances 1, 2 and 2 in a row are 1/(1 + 1/2 + 1/2) = 1/2 between the ends. The ends are kept
    // in the core by a complete graph of four of which they are two.
    Edges edges = completeGraph(4);
    edges.push_back({1, 5});
    edges.push_back({5, 6});
    edges.push_back({6, 2});
    lcn::ChainElimination chains = prepared(6, edges);
    ASSERT_EQ(chains.coreSize(), 4);
    const std::vector<double> conductance = {1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 2.0, 2.0};
    const std::vector<double> outside = {0.0, 0.0, 1.0, 0.0, 0.5, 0.0, 0.0};
    ASSERT_TRUE(chains.eliminate(outside.data(), conductance.data()));
    for (std::size_t i = 0; i < 6; ++i) {
        const lcn::EquationPair pair = chains.corePairs()[i];
        const double expected = pair.row == 0 && pair.column == 1 ? 1.5 : 1.0;
        EXPECT_NEAR(chains.coreConductance()[i], expected, 1e-15);
    }
    EXPECT_NEAR(chains.coreDiagonal()[0], 3.5, 1e-15);
    EXPECT_NEAR(chains.coreDiagonal()[1], 4.5, 1e-15);
    EXPECT_EQ(chains.coreDiagonal()[3], 3.5);
}

TEST(ChainElimination, last_pivot_is_the_way_out_alone)
{
    lcn::ChainElimination chains = prepared(2, path(2));
    const double conductance = 1.0;
    const std::vector<double> weak = {0.0, 0.0, 1e-30};
    EXPECT_TRUE(chains.eliminate(weak.data(), &conductance));
    const std::vector<double> none = {0.0, 0.0, 0.0};
    EXPECT_FALSE(chains.eliminate(none.data(), &conductance));
}
