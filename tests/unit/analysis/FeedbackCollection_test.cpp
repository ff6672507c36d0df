// FeedbackCollection_test.cpp: messages in order, with their values.
#include "analysis/FeedbackCollection.h"

#include <gtest/gtest.h>

#include "tavell/IFeedback.h"

using Velcor::Tavell::FeedbackCollection;
using Velcor::Tavell::IFeedback;

TEST(FeedbackCollection, a_new_collection_is_empty)
{
    FeedbackCollection feedback;
    EXPECT_EQ(feedback.GetSize(), 0u);
    EXPECT_EQ(feedback.GetFeedback(0), nullptr);
}

TEST(FeedbackCollection, keeps_the_order_and_equal_messages)
{
    FeedbackCollection feedback;
    feedback.append(9, {1.0});
    feedback.append(4, {});
    feedback.append(9, {1.0});
    ASSERT_EQ(feedback.GetSize(), 3u);
    EXPECT_EQ(feedback.GetFeedback(0)->GetId(), 9);
    EXPECT_EQ(feedback.GetFeedback(1)->GetId(), 4);
    EXPECT_EQ(feedback.GetFeedback(2)->GetId(), 9);
    EXPECT_NE(feedback.GetFeedback(0), feedback.GetFeedback(2));
}

TEST(FeedbackCollection, an_index_at_or_past_the_end_gives_null)
{
    FeedbackCollection feedback;
    feedback.append(1, {2.0});
    EXPECT_NE(feedback.GetFeedback(0), nullptr);
    EXPECT_EQ(feedback.GetFeedback(1), nullptr);
    EXPECT_EQ(feedback.GetFeedback(static_cast<std::size_t>(-1)), nullptr);
}

TEST(FeedbackCollection, a_message_stays_where_it_is_while_others_are_added)
{
    FeedbackCollection feedback;
    feedback.append(7, {3.5});
    IFeedback* first = feedback.GetFeedback(0);
    const double* values = first->GetValues();
    for (int i = 0; i < 1000; ++i)
        feedback.append(i % 22, {});
    EXPECT_EQ(feedback.GetFeedback(0), first);
    EXPECT_EQ(first->GetValues(), values);
    EXPECT_EQ(values[0], 3.5);
}

TEST(FeedbackCollection, clear_leaves_an_empty_collection_that_can_be_filled_again)
{
    FeedbackCollection feedback;
    feedback.append(1, {2.0});
    feedback.clear();
    EXPECT_EQ(feedback.GetSize(), 0u);
    EXPECT_EQ(feedback.GetFeedback(0), nullptr);
    feedback.append(3, {});
    ASSERT_EQ(feedback.GetSize(), 1u);
    EXPECT_EQ(feedback.GetFeedback(0)->GetId(), 3);
}
