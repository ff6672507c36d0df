// node_sets_test.cpp: disjoint sets of nodes.
#include "lcn/node_sets.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

TEST(NodeSets, every_node_is_alone_to_begin_with)
{
    lcn::NodeSets sets(3);
    for (int node = 0; node <= 3; ++node)
        EXPECT_EQ(sets.find(node), node);
}

TEST(NodeSets, joining_says_whether_two_sets_became_one_and_keeps_the_smaller_representative)
{
    lcn::NodeSets sets(4);
    EXPECT_TRUE(sets.join(4, 2));
    EXPECT_EQ(sets.find(4), 2);
    EXPECT_TRUE(sets.join(2, 1));
    EXPECT_FALSE(sets.join(1, 4));
    EXPECT_EQ(sets.find(4), 1);
    EXPECT_EQ(sets.find(3), 3);
}

TEST(NodeSets, they_agree_with_relabelling_on_random_joins)
{
    std::mt19937 random(7);
    lcn::NodeSets sets(60);
    std::vector<int> label(61);
    for (int i = 0; i <= 60; ++i)
        label[static_cast<std::size_t>(i)] = i;
    for (int step = 0; step < 80; ++step) {
        const auto a = random() % 61;
        const auto b = random() % 61;
        const int from = label[a];
        const int to = label[b];
        EXPECT_EQ(sets.join(static_cast<int>(a), static_cast<int>(b)), from != to);
        for (int& l : label)
            if (l == from) l = to;
    }
    for (int i = 0; i <= 60; ++i)
        for (int j = 0; j <= 60; ++j)
            EXPECT_EQ(sets.find(i) == sets.find(j),
                      label[static_cast<std::size_t>(i)] == label[static_cast<std::size_t>(j)]);
}
