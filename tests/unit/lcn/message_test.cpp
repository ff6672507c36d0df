// message_test.cpp: the forms in which diagnostics are recorded.
#include "lcn/message.h"

#include <gtest/gtest.h>

#include <vector>

#include "lcn/records.h"

TEST(Message, each_form_appends_its_parameters_in_order)
{
    lcnNET_var var;
    var.AddMessage(700480);
    var.AddMessage(700490, std::vector<double>{1.5, -2.0, 3.0});
    var.AddMessage(700500, 7);
    var.AddMessage(700530, 8, 0.25);
    ASSERT_EQ(var.Messages.size(), 4U);
    EXPECT_EQ(var.Messages[0].id, 700480U);
    EXPECT_TRUE(var.Messages[0].parameters.empty());
    EXPECT_EQ(var.Messages[1].id, 700490U);
    EXPECT_EQ(var.Messages[1].parameters, (std::vector<double>{1.5, -2.0, 3.0}));
    EXPECT_EQ(var.Messages[2].parameters, (std::vector<double>{7.0}));
    EXPECT_EQ(var.Messages[3].parameters, (std::vector<double>{8.0, 0.25}));
}

TEST(Message, the_form_without_arguments_records_a_cancellation)
{
    lcnNET_var var;
    var.AddMessage();
    ASSERT_EQ(var.Messages.size(), 1U);
    EXPECT_EQ(var.Messages[0].id, 701208U);
    EXPECT_TRUE(var.Messages[0].parameters.empty());
}

TEST(Message, the_same_diagnostic_twice_is_two_messages)
{
    lcnNET_var var;
    var.AddMessage(701200, 2);
    var.AddMessage(701200, 2);
    EXPECT_EQ(var.Messages.size(), 2U);
}
