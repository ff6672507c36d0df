// minimum_degree_test.cpp: the order of elimination and its fill.
#include "lcn/minimum_degree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <set>
#include <vector>

#include "unit/support/graphs.h"

using namespace SolverTest;

namespace
{

std::vector<std::set<int>> neighbourSets(int n, const Edges& edges)
{
    std::vector<std::set<int>> sets(static_cast<std::size_t>(n));
    for (const auto& [a, b] : edges) {
        sets[static_cast<std::size_t>(a - 1)].insert(b - 1);
        sets[static_cast<std::size_t>(b - 1)].insert(a - 1);
    }
    return sets;
}

std::vector<int> orderOf(int n, const Edges& edges)
{
    lcn::Adjacency graph;
    graph.start.push_back(0);
    for (const std::set<int>& row : neighbourSets(n, edges)) {
        graph.columns.insert(graph.columns.end(), row.begin(), row.end());
        graph.start.push_back(static_cast<int>(graph.columns.size()));
    }
    return lcn::minimumDegreeOrder(graph);
}

/// Entries below the diagonal of the factor, by eliminating on the graph itself.
long long fill(int n, const Edges& edges, const std::vector<int>& order)
{
    std::vector<std::set<int>> sets = neighbourSets(n, edges);
    long long entries = 0;
    for (const int v : order) {
        const std::set<int> clique = sets[static_cast<std::size_t>(v)];
        entries += static_cast<long long>(clique.size());
        for (const int a : clique) {
            sets[static_cast<std::size_t>(a)].erase(v);
            for (const int b : clique)
                if (a != b) sets[static_cast<std::size_t>(a)].insert(b);
        }
    }
    return entries;
}

void expectPermutation(std::vector<int> order, int n)
{
    ASSERT_EQ(order.size(), static_cast<std::size_t>(n));
    std::sort(order.begin(), order.end());
    for (int i = 0; i < n; ++i)
        ASSERT_EQ(order[static_cast<std::size_t>(i)], i);
}

std::vector<int> naturalOrder(int n)
{
    std::vector<int> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 0);
    return order;
}

}  // namespace

TEST(MinimumDegree, every_equation_comes_once)
{
    std::mt19937 random(1);
    for (const int n : {1, 2, 3, 10, 57, 200})
        for (const int count : {0, n / 2, n, 3 * n, 10 * n})
            if (n > 1 || count == 0) expectPermutation(orderOf(n, randomEdges(n, count, random)), n);
    EXPECT_TRUE(orderOf(0, {}).empty());
}

TEST(MinimumDegree, trees_have_no_fill)
{
    std::mt19937 random(2);
    for (int repeat = 0; repeat < 20; ++repeat) {
        Edges edges;
        for (int row = 2; row <= 80; ++row)
            edges.push_back({row, 1 + static_cast<int>(random() % static_cast<unsigned>(row - 1))});
        edges = shuffled(edges, 80, random);
        EXPECT_EQ(fill(80, edges, orderOf(80, edges)), 79);
    }
}

TEST(MinimumDegree, cycle_has_the_least_fill)
{
    // A cycle of n needs n - 3 chords beside its n edges.
    for (const int n : {4, 5, 17, 64}) {
        Edges edges = path(n);
        edges.push_back({n, 1});
        EXPECT_EQ(fill(n, edges, orderOf(n, edges)), 2 * n - 3);
    }
}

TEST(MinimumDegree, grid_has_far_less_fill_than_in_its_own_order)
{
    std::mt19937 random(3);
    const Edges edges = shuffled(gridEdges(30, 30), 900, random);
    // row by row the factor of a k x k grid holds some k^3 entries, a good order some 7.75 k^2 log2 k
    EXPECT_LT(fill(900, edges, orderOf(900, edges)), 7.75 * 900 * std::log2(30.0) / 2.0);
    EXPECT_GT(fill(900, gridEdges(30, 30), naturalOrder(900)), 25000);
}

TEST(MinimumDegree, equations_with_very_many_neighbours_come_last)
{
    // 400 equations of a ring and one that meets them all: more than ten times the root of 401
    Edges edges = path(400);
    edges.push_back({400, 1});
    for (int i = 1; i <= 400; ++i)
        edges.push_back({i, 401});
    const std::vector<int> order = orderOf(401, edges);
    expectPermutation(order, 401);
    EXPECT_EQ(order.back(), 400);
}

TEST(MinimumDegree, equations_with_the_same_neighbours_stay_together_without_harm)
{
    // twelve cliques of six in a ring, neighbouring cliques fully joined
    Edges edges;
    for (int block = 0; block < 12; ++block)
        for (int a = 1; a <= 6; ++a)
            for (int b = 1; b <= 6; ++b) {
                if (a < b) edges.push_back({6 * block + a, 6 * block + b});
                edges.push_back({6 * block + a, 6 * ((block + 1) % 12) + b});
            }
    const std::vector<int> order = orderOf(72, edges);
    expectPermutation(order, 72);
    // the ring of blocks has 2 * 12 - 3 block pairs of 36, and each block 15 pairs within
    EXPECT_EQ(fill(72, edges, order), 21 * 36 + 12 * 15);
}

TEST(MinimumDegree, same_graph_gives_the_same_order)
{
    std::mt19937 random(4);
    const Edges edges = randomEdges(500, 1200, random);
    EXPECT_EQ(orderOf(500, edges), orderOf(500, edges));
}
