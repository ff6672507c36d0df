// array_test.cpp: shared storage with an index offset.
#include "lcn/array.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

#include "lcn/records.h"

TEST(Array, a_default_array_has_no_elements_and_offset_zero)
{
    const lcn::array<double> a;
    EXPECT_TRUE(a.isEmpty());
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(a.offset(), 0);
    EXPECT_EQ(a.data(), nullptr);
}

TEST(Array, resizing_gives_exactly_that_many_zero_slots)
{
    lcn::array<int> a;
    a.resize(5);
    EXPECT_EQ(a.size(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(a[i], 0);
}

TEST(Array, resizing_to_zero_and_back_gives_zero_slots_again)
{
    lcn::array<double> a;
    a.resize(3);
    a.fill(7.0);
    a.resize(0);
    EXPECT_EQ(a.data(), nullptr);
    EXPECT_EQ(a.offset(), 0);
    a.resize(2);
    EXPECT_EQ(a[0], 0.0);
    EXPECT_EQ(a[1], 0.0);
}

TEST(Array, shrinking_drops_slots_from_the_end_and_keeps_the_others)
{
    lcn::array<int> a;
    a.assign({1, 2, 3, 4});
    a.resize(2);
    EXPECT_EQ(a.size(), 2);
    EXPECT_EQ(a[0], 1);
    EXPECT_EQ(a[1], 2);
}

TEST(Array, growing_keeps_the_values_and_zeroes_the_new_slots)
{
    lcn::array<int> a;
    a.assign({1, 2});
    a.resize(4);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(a[2], 0);
    EXPECT_EQ(a[3], 0);
}

TEST(Array, a_negative_count_leaves_no_slots)
{
    lcn::array<int> a;
    a.resize(-1);
    EXPECT_TRUE(a.isEmpty());
}

TEST(Array, a_write_through_a_copy_shows_in_the_original)
{
    lcn::array<double> a;
    a.resize(4);
    lcn::array<double> b(a);
    b[3] = 5.0;
    EXPECT_EQ(a[3], 5.0);
    lcn::array<double> c;
    c = a;
    c[1] = 2.0;
    EXPECT_EQ(b[1], 2.0);
}

TEST(Array, resizing_shows_through_every_copy)
{
    lcn::array<int> a;
    const lcn::array<int> b(a);
    a.resize(6);
    EXPECT_EQ(b.size(), 6);
    EXPECT_EQ(b.data(), a.data());
}

TEST(Array, the_storage_outlives_the_first_handle)
{
    lcn::array<int> last;
    {
        lcn::array<int> first;
        first.assign({4, 5});
        last = first;
    }
    EXPECT_EQ(last[1], 5);
}

TEST(Array, fill_writes_every_slot)
{
    lcn::array<float> a;
    a.resize(3);
    a.fill(1.5F);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(a[i], 1.5F);
}

TEST(Array, element_i_of_a_shifted_handle_is_slot_offset_plus_i)
{
    lcn::array<int> a;
    a.assign({0, 1, 2, 3, 4});
    const lcn::array<int> view = a.shiftedBy(2);
    EXPECT_EQ(view.offset(), 2);
    EXPECT_EQ(view.size(), 3);
    EXPECT_EQ(view[1], 3);
    EXPECT_EQ(view.shiftedBy(1)[1], 4);
    EXPECT_EQ(a.offset(), 0);
}

TEST(Array, resizing_and_assigning_put_the_offset_back_to_zero)
{
    lcn::array<int> a;
    a.assign({1, 2, 3});
    lcn::array<int> view = a.shiftedBy(2);
    view.resize(3);
    EXPECT_EQ(view.offset(), 0);
    EXPECT_EQ(view[0], 1);
    view = a.shiftedBy(1);
    view.assign({9});
    EXPECT_EQ(view.offset(), 0);
    EXPECT_EQ(view[0], 9);
}

TEST(Array, moving_a_handle_to_another_leaves_both_usable)
{
    lcn::array<int> from, to;
    from.resize(3);
    from[2] = 7;
    to = from.shiftedBy(1);
    EXPECT_EQ(to[1], 7);
    EXPECT_EQ(to.offset(), 1);
    to = std::move(from);
    EXPECT_EQ(to[2], 7);
    EXPECT_EQ(to.offset(), 0);
    from.resize(1);  // NOLINT(bugprone-use-after-move): it has the storage that the other one had
    EXPECT_EQ(to.size(), 1) << "the view that it was given is of the same storage";
}

TEST(Array, arrays_of_arrays_and_of_records_destroy_what_they_hold)
{
    lcn::array<lcn::array<double>> outer;
    outer.resize(2);
    lcn::array<double> inner;
    inner.resize(2);
    outer[1] = inner;
    outer[1][1] = 3.0;
    EXPECT_EQ(inner[1], 3.0);

    lcn::array<lcnNET_elems> records;
    records.resize(2);
    records[1].Curve.FlowRate.resize(4);
    const lcn::array<double> flows = records[1].Curve.FlowRate;
    records.resize(0);
    EXPECT_EQ(flows.size(), 4);
}

TEST(Array, new_records_do_not_share_their_lists)
{
    lcn::array<lcnNET_nodes> nodes;
    nodes.resize(3);
    nodes[1].Elements.resize(2);
    EXPECT_TRUE(nodes[2].Elements.isEmpty());
}

TEST(Array, only_the_destructor_is_virtual)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<lcn::array<int>>);
    EXPECT_TRUE(std::is_copy_constructible_v<lcn::array<lcnNET_pumps>>);
}
