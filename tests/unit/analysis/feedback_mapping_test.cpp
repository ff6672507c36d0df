// feedback_mapping_test.cpp: diagnostic codes to feedback ids.
#include "analysis/feedback_mapping.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "tavell/IFeedback.h"

using Velcor::Tavell::FeedbackCollection;
using Velcor::Tavell::mapFeedback;

namespace
{

struct Row {
    std::uint32_t code;
    int id;
};

// clang-format off
const std::vector<Row> kRows = {
    {700480, 5},
    {700490, 3},
    {700500, 4},
    {700530, 0},
    {700540, 6},
    {700550, 7},
    {700650, 1},
    {700660, 2},
    {700720, 8},
    {700820, 14},
    {700890, 10},
    {700900, 11},
    {701200, 12},
    {701201, 13},
    {701202, 15},
    {701203, 16},
    {701204, 17},
    {701205, 18},
    {701206, 19},
    {701207, 20},
    {701208, 21},
    {702400, 9},
};
// clang-format on

}  // namespace

TEST(FeedbackMapping, every_code_has_its_feedback_id)
{
    for (const Row& row : kRows) {
        FeedbackCollection feedback;
        mapFeedback({{row.code, {}}}, feedback);
        ASSERT_EQ(feedback.GetSize(), 1u) << row.code;
        EXPECT_EQ(feedback.GetFeedback(0)->GetId(), row.id) << row.code;
    }
}

TEST(FeedbackMapping, every_feedback_id_from_0_to_21_has_one_code)
{
    std::vector<int> codesOf(22, 0);
    for (const Row& row : kRows)
        ++codesOf.at(static_cast<std::size_t>(row.id));
    EXPECT_EQ(codesOf, std::vector<int>(22, 1));
}

TEST(FeedbackMapping, no_other_six_digit_code_is_mapped)
{
    std::size_t mapped = 0;
    for (std::uint32_t code = 700000; code < 703000; ++code) {
        FeedbackCollection feedback;
        try {
            mapFeedback({{code, {}}}, feedback);
            ++mapped;
        } catch (const std::runtime_error&) {
            EXPECT_EQ(feedback.GetSize(), 0u);
        }
    }
    EXPECT_EQ(mapped, kRows.size());
}

TEST(FeedbackMapping, values_are_copied_as_they_are)
{
    FeedbackCollection feedback;
    mapFeedback({{700820, {12.0, 3.0, 4.0, 0.25}}}, feedback);
    ASSERT_EQ(feedback.GetFeedback(0)->GetValueSize(), 4u);
    const double* values = feedback.GetFeedback(0)->GetValues();
    EXPECT_EQ(std::vector<double>(values, values + 4), (std::vector<double>{12.0, 3.0, 4.0, 0.25}));
}

TEST(FeedbackMapping, a_message_without_values_gives_a_null_array)
{
    FeedbackCollection feedback;
    mapFeedback({{701208, {}}}, feedback);
    EXPECT_EQ(feedback.GetFeedback(0)->GetValueSize(), 0u);
    EXPECT_EQ(feedback.GetFeedback(0)->GetValues(), nullptr);
}

TEST(FeedbackMapping, messages_with_the_same_code_stay_apart_and_in_order)
{
    FeedbackCollection feedback;
    mapFeedback({{701205, {3.0}}, {700550, {0.0}}, {701205, {2.0}}}, feedback);
    ASSERT_EQ(feedback.GetSize(), 3u);
    EXPECT_EQ(feedback.GetFeedback(0)->GetId(), 18);
    EXPECT_EQ(feedback.GetFeedback(0)->GetValues()[0], 3.0);
    EXPECT_EQ(feedback.GetFeedback(1)->GetId(), 7);
    EXPECT_EQ(feedback.GetFeedback(2)->GetId(), 18);
    EXPECT_EQ(feedback.GetFeedback(2)->GetValues()[0], 2.0);
}

TEST(FeedbackMapping, the_previous_feedback_is_replaced)
{
    FeedbackCollection feedback;
    mapFeedback({{700550, {0.0}}, {700540, {0.0, 1.0}}}, feedback);
    mapFeedback({{701201, {}}}, feedback);
    ASSERT_EQ(feedback.GetSize(), 1u);
    EXPECT_EQ(feedback.GetFeedback(0)->GetId(), 13);
}

TEST(FeedbackMapping, no_messages_leave_an_empty_collection)
{
    FeedbackCollection feedback;
    feedback.append(1, {});
    mapFeedback({}, feedback);
    EXPECT_EQ(feedback.GetSize(), 0u);
    EXPECT_EQ(feedback.GetFeedback(0), nullptr);
}

TEST(FeedbackMapping, an_unknown_code_throws_and_keeps_the_items_before_it)
{
    FeedbackCollection feedback;
    try {
        mapFeedback({{700550, {0.0}}, {701208, {}}, {700551, {}}, {700540, {}}}, feedback);
        FAIL() << "the code 700551 was mapped";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Unmapped message Id");
    }
    ASSERT_EQ(feedback.GetSize(), 2u);
    EXPECT_EQ(feedback.GetFeedback(0)->GetId(), 7);
    EXPECT_EQ(feedback.GetFeedback(1)->GetId(), 21);
}
