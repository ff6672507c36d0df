// ordering_test.cpp: reverse Cuthill-McKee numbering.
#include "lcn/ordering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

#include "unit/support/graphs.h"

using namespace SolverTest;

namespace
{

/// Position of every row in an ordering.
std::vector<int> positions(const std::vector<int>& order)
{
    std::vector<int> position(order.size(), 0);
    for (std::size_t p = 1; p < order.size(); ++p)
        position[static_cast<std::size_t>(order[p])] = static_cast<int>(p);
    return position;
}

int bandwidth(int n, const Edges& edges)
{
    const std::vector<int> position = positions(lcn::reverseCuthillMcKee(makeGraph(n, edges)));
    int largest = 0;
    for (const auto& [a, b] : edges)
        largest = std::max(
            largest, std::abs(position[static_cast<std::size_t>(a)] - position[static_cast<std::size_t>(b)]));
    return largest;
}

void expectPermutation(const std::vector<int>& order, int n)
{
    ASSERT_EQ(order.size(), static_cast<std::size_t>(n) + 1);
    std::vector<int> sorted(order.begin() + 1, order.end());
    std::sort(sorted.begin(), sorted.end());
    std::vector<int> expected(static_cast<std::size_t>(n));
    std::iota(expected.begin(), expected.end(), 1);
    EXPECT_EQ(sorted, expected);
}

}  // namespace

TEST(Ordering, an_empty_graph_has_an_empty_ordering)
{
    expectPermutation(lcn::reverseCuthillMcKee(makeGraph(0, {})), 0);
}

TEST(Ordering, rows_without_edges_are_all_numbered)
{
    expectPermutation(lcn::reverseCuthillMcKee(makeGraph(5, {})), 5);
}

TEST(Ordering, every_random_graph_gives_a_permutation)
{
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        const int n = 2 + static_cast<int>(random() % 60);
        const int edges = static_cast<int>(random() % static_cast<unsigned>(3 * n));
        expectPermutation(lcn::reverseCuthillMcKee(makeGraph(n, randomEdges(n, edges, random))), n);
    }
}

TEST(Ordering, a_shuffled_path_has_bandwidth_one)
{
    std::mt19937 random(2);
    for (const int n : {2, 3, 10, 101, 1000})
        EXPECT_EQ(bandwidth(n, shuffled(path(n), n, random)), 1) << n;
}

TEST(Ordering, a_shuffled_grid_has_about_the_bandwidth_of_its_width)
{
    // numbered along its short side a grid has the width as bandwidth; by levels from a corner one more
    std::mt19937 random(3);
    for (int round = 0; round < 10; ++round)
        EXPECT_LE(bandwidth(8 * 40, shuffled(gridEdges(8, 40), 8 * 40, random)), 8 + 2);
}

TEST(Ordering, components_do_not_mix)
{
    std::mt19937 random(4);
    Edges edges = path(10);
    for (int row = 11; row < 20; ++row)
        edges.push_back({row, row + 1});
    const Edges mixed = shuffled(edges, 20, random);
    EXPECT_EQ(bandwidth(20, mixed), 1);
}

TEST(Ordering, a_hub_with_many_neighbours_is_ordered_quickly_and_completely)
{
    constexpr int kCount = 200000;
    Edges edges;
    for (int row = 2; row <= kCount; ++row)
        edges.push_back({1, row});
    expectPermutation(lcn::reverseCuthillMcKee(makeGraph(kCount, edges)), kCount);
}

TEST(Ordering, repeated_edges_change_nothing_on_a_path)
{
    std::mt19937 random(5);
    Edges edges = path(30);
    const Edges once = edges;
    edges.insert(edges.end(), once.begin(), once.end());
    EXPECT_EQ(bandwidth(30, shuffled(edges, 30, random)), 1);
}

TEST(Ordering, the_numbering_of_a_path_is_reversed)
{
    // the search starts at row 1, goes to the far end 4 and numbers from the end that gave the most levels
    const std::vector<int> order = lcn::reverseCuthillMcKee(makeGraph(4, path(4)));
    EXPECT_EQ(order, (std::vector<int>{0, 4, 3, 2, 1}));
}

TEST(Ordering, neighbours_are_numbered_by_increasing_degree)
{
    // a tail 1-2-3 to a hub 4 with neighbours 5 (degree 3), 6 (1) and 7 (2), listed in that order. From 1 and from 8 there
    // are six levels, so 1 stays the root; breadth first 1 2 3 4 | 6 7 5 | 10 8 9, then reversed
    const Edges edges{{1, 2}, {2, 3}, {3, 4}, {4, 5}, {4, 6}, {4, 7}, {5, 8}, {5, 9}, {7, 10}};
    EXPECT_EQ(lcn::reverseCuthillMcKee(makeGraph(10, edges)),
              (std::vector<int>{0, 9, 8, 10, 5, 7, 6, 4, 3, 2, 1}));
}

TEST(Ordering, the_root_moves_to_an_end_that_gives_more_levels)
{
    // from the middle of a path the search goes to an end
    const std::vector<int> order = lcn::reverseCuthillMcKee(makeGraph(5, {{1, 2}, {1, 3}, {2, 4}, {3, 5}}));
    EXPECT_EQ(order, (std::vector<int>{0, 5, 3, 1, 2, 4}));
}

TEST(Ordering, a_spur_in_the_middle_is_no_root_although_its_degree_is_smallest)
{
    // from 1 there are five levels, and both ends 2 and 8 in the last; from 2 there are seven: 2 3 4 5 | 1 6 | 7 8
    const Edges edges{{2, 3}, {3, 4}, {4, 5}, {5, 6}, {6, 7}, {7, 8}, {1, 5}};
    EXPECT_EQ(lcn::reverseCuthillMcKee(makeGraph(8, edges)), (std::vector<int>{0, 8, 7, 6, 1, 5, 4, 3, 2}));
}
