// connection_test.cpp: node and element lists.
#include "lcn/connection.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "lcn/errors.h"
#include "unit/support/solver_network.h"

using SolverTest::SolverNetwork;

namespace
{

/// Entries 1 .. count of a list.
std::vector<int> entries(const lcn::array<int>& list, int count)
{
    std::vector<int> values;
    for (int b = 1; b <= count; ++b)
        values.push_back(list[b]);
    return values;
}

}  // namespace

TEST(Connection, lists_hold_elements_and_far_nodes_in_element_order_with_the_sign_of_the_end)
{
    SolverNetwork network(3);  // host numbers 10, 20, 30; elements 101, 102, 103
    network.add(1, 1, 2);
    network.add(1, 3, 2);
    network.add(1, 1, 3);
    network.elements[1].LocalStartNode = network.elements[1].LocalEndNode = 0;
    network.connect();
    EXPECT_EQ(network.elem(1).LocalStartNode, 1);
    EXPECT_EQ(network.elem(1).LocalEndNode, 2);

    const lcnNET_nodes& second = network.nodes[2];
    ASSERT_EQ(second.no_branches, 2);
    EXPECT_EQ(entries(second.LocalElements, 2), (std::vector<int>{1, 2}));
    EXPECT_EQ(entries(second.Elements, 2), (std::vector<int>{101, 102}));
    EXPECT_EQ(entries(second.Neighbours, 2), (std::vector<int>{10, 30}));

    const lcnNET_nodes& first = network.nodes[1];
    ASSERT_EQ(first.no_branches, 2);
    EXPECT_EQ(entries(first.LocalElements, 2), (std::vector<int>{-1, -3}));
    EXPECT_EQ(entries(first.Elements, 2), (std::vector<int>{-101, -103}));
    EXPECT_EQ(entries(first.Neighbours, 2), (std::vector<int>{20, 30}));

    const lcnNET_nodes& third = network.nodes[3];
    ASSERT_EQ(third.no_branches, 2);
    EXPECT_EQ(entries(third.LocalElements, 2), (std::vector<int>{-2, 3}));
    EXPECT_EQ(entries(third.Neighbours, 2), (std::vector<int>{20, 10}));
}

TEST(Connection, the_least_number_has_no_counterpart_and_keeps_its_sign)
{
    constexpr int kLeast = std::numeric_limits<int>::min();
    SolverNetwork network(2);
    network.add(1, 1, 2);
    network.elem(1).elem_no = kLeast;
    network.connect();
    EXPECT_EQ(network.nodes[1].Elements[1], kLeast);
    EXPECT_EQ(network.nodes[1].LocalElements[1], -1);
    EXPECT_EQ(network.nodes[2].Elements[1], kLeast);
}

TEST(Connection, a_node_without_elements_has_none)
{
    SolverNetwork network(3);
    network.add(1, 1, 2);
    network.nodes[3].no_branches = 9;
    network.connect();
    EXPECT_EQ(network.nodes[3].no_branches, 0);
}

TEST(Connection, parallel_elements_are_listed_each)
{
    SolverNetwork network(2);
    network.add(1, 1, 2);
    network.add(1, 2, 1);
    network.connect();
    EXPECT_EQ(entries(network.nodes[1].LocalElements, 2), (std::vector<int>{-1, 2}));
    EXPECT_EQ(entries(network.nodes[2].LocalElements, 2), (std::vector<int>{1, -2}));
}

TEST(Connection, a_loop_from_a_node_to_itself_counts_as_two_branches)
{
    SolverNetwork network(2);
    network.add(1, 2, 2);
    network.connect();
    ASSERT_EQ(network.nodes[2].no_branches, 2);
    EXPECT_EQ(entries(network.nodes[2].LocalElements, 2), (std::vector<int>{-1, 1}));
    EXPECT_EQ(entries(network.nodes[2].Neighbours, 2), (std::vector<int>{20, 20}));
}

TEST(Connection, the_first_of_several_nodes_with_one_number_is_meant)
{
    SolverNetwork network(3);
    network.nodes[3].node_no = 10;
    network.add(1, 2, 3);
    network.connect();
    EXPECT_EQ(network.elem(1).LocalEndNode, 1);
    EXPECT_EQ(network.nodes[3].no_branches, 0);
}

TEST(Connection, consecutive_numbers_with_a_repeated_one_still_mean_the_first)
{
    SolverNetwork network(4);
    const int numbers[] = {0, 1, 2, 2, 4};
    for (int i = 1; i <= 4; ++i)
        network.nodes[i].node_no = numbers[i];
    network.add(1, 4, 2);
    network.connect();
    EXPECT_EQ(network.elem(1).LocalStartNode, 4);
    EXPECT_EQ(network.elem(1).LocalEndNode, 2);
}

TEST(Connection, a_missing_end_raises_code_8_with_its_number)
{
    for (const int missing : {15, 0, -3}) {
        SolverNetwork network(2);
        network.elem(network.add(1, 1, 2)).EndNode = missing;
        EXPECT_THROW(network.connect(), lcn::FatalException);
        ASSERT_EQ(network.var.Messages.size(), 1U);
        EXPECT_EQ(network.var.Messages[0].id, 700650U);
        EXPECT_EQ(network.var.Messages[0].parameters, std::vector<double>{static_cast<double>(missing)});
    }
}

TEST(Connection, the_start_is_looked_up_before_the_end)
{
    SolverNetwork network(2);
    network.add(1, 1, 2);
    network.elem(1).StartNode = 5;
    network.elem(1).EndNode = 6;
    EXPECT_THROW(network.connect(), lcn::FatalException);
    EXPECT_EQ(network.var.Messages.at(0).parameters, std::vector<double>{5.0});
}

TEST(Connection, random_numberings_resolve_as_a_scan_does)
{
    std::mt19937 random(21);
    for (int round = 0; round < 50; ++round) {
        const int n = 1 + static_cast<int>(random() % 20);
        SolverNetwork network(n);
        for (int i = 1; i <= n; ++i)
            network.nodes[i].node_no = static_cast<int>(random() % 25) - 5;
        for (int e = 0; e < 10; ++e)
            network.add(1, 1 + static_cast<int>(random() % static_cast<unsigned>(n)),
                        1 + static_cast<int>(random() % static_cast<unsigned>(n)));
        network.connect();
        const auto scan = [&](int number) {
            int i = 1;
            while (network.nodes[i].node_no != number)
                ++i;
            return i;
        };
        for (int e = 1; e <= 10; ++e) {
            EXPECT_EQ(network.elem(e).LocalStartNode, scan(network.elem(e).StartNode));
            EXPECT_EQ(network.elem(e).LocalEndNode, scan(network.elem(e).EndNode));
        }
    }
}
