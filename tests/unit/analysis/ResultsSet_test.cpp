// ResultsSet_test.cpp: ids, values and the cache of converted values.
#include "analysis/ResultsSet.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

using Velcor::Tavell::ResultsSet;

namespace
{

/// Pressures [Pa] of two nodes; 3.0 and 101325.0 convert to kPa without a doubt about the rounding rule.
ResultsSet pressures()
{
    return ResultsSet(true, {4, 7}, {3.0, 101325.0});
}

}  // namespace

TEST(ResultsSet, an_empty_set_has_size_0_and_null_arrays)
{
    ResultsSet set;
    EXPECT_EQ(set.GetSize(), 0u);
    EXPECT_EQ(set.GetIds(), nullptr);
    EXPECT_EQ(set.GetValues(), nullptr);
    EXPECT_EQ(set.GetL10NValues(1.0, 0.0), nullptr);
    EXPECT_EQ(set.GetL10NValues(2.0, 1.0), nullptr);
}

TEST(ResultsSet, a_set_filled_with_nothing_still_has_null_arrays)
{
    ResultsSet set(false, std::vector<int>(), {});
    EXPECT_EQ(set.GetSize(), 0u);
    EXPECT_EQ(set.GetIds(), nullptr);
    EXPECT_EQ(set.GetValues(), nullptr);
    EXPECT_EQ(set.GetL10NValues(1.0, 0.0), nullptr);
}

TEST(ResultsSet, is_nodal_as_constructed)
{
    EXPECT_FALSE(ResultsSet().IsNodal());
    EXPECT_FALSE(ResultsSet(false).IsNodal());
    EXPECT_TRUE(ResultsSet(true).IsNodal());
    EXPECT_TRUE(pressures().IsNodal());
}

TEST(ResultsSet, holds_the_ids_and_values_it_is_constructed_with)
{
    ResultsSet set = pressures();
    ASSERT_EQ(set.GetSize(), 2u);
    EXPECT_EQ(set.GetIds()[0], 4);
    EXPECT_EQ(set.GetIds()[1], 7);
    EXPECT_EQ(set.GetValues()[0], 3.0);
    EXPECT_EQ(set.GetValues()[1], 101325.0);
}

TEST(ResultsSet, keeps_the_order_and_repeated_ids)
{
    ResultsSet set(false, {9, 2, 9}, {1.5, -2.5, 0.0});
    ASSERT_EQ(set.GetSize(), 3u);
    EXPECT_EQ(std::vector<int>(set.GetIds(), set.GetIds() + 3), (std::vector<int>{9, 2, 9}));
    EXPECT_EQ(std::vector<double>(set.GetValues(), set.GetValues() + 3),
              (std::vector<double>{1.5, -2.5, 0.0}));
}

TEST(ResultsSet, sets_of_one_kind_share_their_ids)
{
    const auto ids = std::make_shared<const std::vector<int>>(std::vector<int>{4, 7});
    ResultsSet pressure(true, ids, {3.0, 101325.0});
    ResultsSet temperature(true, ids, {293.15, 300.0});
    EXPECT_EQ(pressure.GetIds(), temperature.GetIds());
    ResultsSet copy = pressure;
    pressure = ResultsSet(true);
    EXPECT_EQ(pressure.GetIds(), nullptr);
    EXPECT_EQ(copy.GetIds()[1], 7) << "a set keeps its ids when another one goes";
}

TEST(ResultsSet, conversion_by_1_and_0_gives_an_equal_copy)
{
    ResultsSet set = pressures();
    const double* converted = set.GetL10NValues(1.0, 0.0);
    ASSERT_NE(converted, nullptr);
    EXPECT_NE(converted, set.GetValues());
    EXPECT_EQ(converted[0], 3.0);
    EXPECT_EQ(converted[1], 101325.0);
}

TEST(ResultsSet, conversion_is_value_times_scale_plus_offset_rounded_twice)
{
    ResultsSet set(true, {1}, {293.15});
    // A product and a sum, each rounded on its own; volatile keeps the compiler from fusing the two here.
    volatile double product = 293.15 * 1.8;
    EXPECT_EQ(set.GetL10NValues(1.8, -459.67)[0], product + -459.67);
}

TEST(ResultsSet, conversion_leaves_the_values_alone)
{
    ResultsSet set = pressures();
    set.GetL10NValues(0.001, 5.0);
    EXPECT_EQ(set.GetValues()[0], 3.0);
    EXPECT_EQ(set.GetValues()[1], 101325.0);
}

TEST(ResultsSet, the_same_pair_gives_the_same_pointer_and_values)
{
    ResultsSet set = pressures();
    const double* first = set.GetL10NValues(2.0, 1.0);
    const double* second = set.GetL10NValues(2.0, 1.0);
    EXPECT_EQ(first, second);
    EXPECT_EQ(second[0], 7.0);
}

TEST(ResultsSet, another_pair_overwrites_the_array_that_earlier_pointers_see)
{
    ResultsSet set = pressures();
    const double* first = set.GetL10NValues(2.0, 0.0);
    ASSERT_EQ(first[0], 6.0);
    EXPECT_EQ(set.GetL10NValues(2.0, 1.0), first);
    EXPECT_EQ(first[0], 7.0);
    EXPECT_EQ(set.GetL10NValues(3.0, 1.0), first);
    EXPECT_EQ(first[0], 10.0);
}

TEST(ResultsSet, the_first_conversion_of_a_filled_set_converts_whatever_the_pair)
{
    // 1 and 0 are the pair that a new set starts with, 0 and 0 the one of zeroed memory.
    ResultsSet identity = pressures();
    EXPECT_EQ(identity.GetL10NValues(1.0, 0.0)[1], 101325.0);
    ResultsSet zero = pressures();
    EXPECT_EQ(zero.GetL10NValues(0.0, 0.0)[1], 0.0);
}

TEST(ResultsSet, a_scale_that_is_not_a_number_converts_to_values_that_are_none)
{
    ResultsSet set = pressures();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(set.GetL10NValues(nan, 0.0)[0] != set.GetL10NValues(nan, 0.0)[0]);
    EXPECT_EQ(set.GetL10NValues(1.0, 0.0)[0], 3.0);
}
