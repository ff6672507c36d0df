// Feedback_test.cpp: one message and its values.
#include "analysis/Feedback.h"

#include <gtest/gtest.h>

using Velcor::Tavell::Feedback;

TEST(Feedback, holds_its_id_and_values)
{
    Feedback message(14, {12.0, 3.0, -0.5});
    EXPECT_EQ(message.GetId(), 14);
    ASSERT_EQ(message.GetValueSize(), 3u);
    EXPECT_EQ(message.GetValues()[0], 12.0);
    EXPECT_EQ(message.GetValues()[1], 3.0);
    EXPECT_EQ(message.GetValues()[2], -0.5);
}

TEST(Feedback, without_values_has_size_0_and_a_null_array)
{
    Feedback message(21, {});
    EXPECT_EQ(message.GetId(), 21);
    EXPECT_EQ(message.GetValueSize(), 0u);
    EXPECT_EQ(message.GetValues(), nullptr);
}
