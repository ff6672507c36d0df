// errors_test.cpp: the table of fatal faults.
#include "lcn/errors.h"

#include <gtest/gtest.h>

#include <climits>
#include <exception>
#include <string>
#include <vector>

#include "lcn/records.h"

namespace
{

struct Fault {
    std::uint32_t id;
    std::vector<double> parameters;
    std::string text;
};

/// What a code records and throws for element 4, a 2, b 3, node 1.
Fault faultOf(int code)
{
    lcnNET_var var;
    try {
        lcn::lcnErrmsg(var, code, 2, 4, 3, 1);
    } catch (const lcn::FatalException& error) {
        EXPECT_EQ(var.Messages.size(), 1U);
        return {var.Messages.back().id, var.Messages.back().parameters, error.what()};
    }
}

void expectFault(int code, std::uint32_t id, const std::vector<double>& parameters, const std::string& text)
{
    const Fault fault = faultOf(code);
    EXPECT_EQ(fault.id, id);
    EXPECT_EQ(fault.parameters, parameters);
    EXPECT_EQ(fault.text, text);
}

}  // namespace

TEST(Errors, code_8_names_a_missing_node)
{
    expectFault(8, 700650, {1}, "Node 1 has not been specified in the network");
}

TEST(Errors, code_9_names_a_missing_element)
{
    expectFault(9, 700660, {4}, "Element 4 has not been specified in the network");
}

TEST(Errors, code_16_names_a_node_with_a_temperature_and_no_pressure)
{
    expectFault(16, 700720, {1}, "Node 1 has a specified temperature with no pressure");
}

TEST(Errors, code_26_calls_a_the_upstream_node)
{
    expectFault(26, 700820, {4, 2, 3, 1},
                "Error in curve, element 4 upstream node 2, downstream node 3 in Circuit with inlet node 1");
}

TEST(Errors, code_32_calls_a_the_down_stream_node)
{
    expectFault(32, 702400, {4, 2, 3}, "Error in circuit, element 4 down stream node 2, upstream node 3");
}

TEST(Errors, code_33_has_no_parameters)
{
    expectFault(33, 701201, {}, "There are no internal nodes in the circuit definition");
}

TEST(Errors, an_unknown_code_is_itself_reported_with_id_zero)
{
    expectFault(7, 0, {}, "Unknown error code provided to lcnErrmsg, 7");
    expectFault(0, 0, {}, "Unknown error code provided to lcnErrmsg, 0");
}

TEST(Errors, negative_and_extreme_numbers_are_written_in_plain_decimal)
{
    lcnNET_var var;
    try {
        lcn::lcnErrmsg(var, 8, 0, 0, 0, INT_MIN);
    } catch (const lcn::FatalException& error) {
        EXPECT_STREQ(error.what(), "Node -2147483648 has not been specified in the network");
        EXPECT_EQ(var.Messages.back().parameters, std::vector<double>{-2147483648.0});
    }
    try {
        lcn::lcnErrmsg(var, -1234567, 0, 0, 0, 0);
    } catch (const lcn::FatalException& error) {
        EXPECT_STREQ(error.what(), "Unknown error code provided to lcnErrmsg, -1234567");
    }
    EXPECT_EQ(var.Messages.size(), 2U);
}

TEST(Errors, a_fault_is_appended_after_the_messages_before_it)
{
    lcnNET_var var;
    var.AddMessage(701204, 5);
    EXPECT_THROW(lcn::lcnErrmsg(var, 33, 0, 0, 0, 0), lcn::FatalException);
    ASSERT_EQ(var.Messages.size(), 2U);
    EXPECT_EQ(var.Messages[0].id, 701204U);
    EXPECT_EQ(var.Messages[1].id, 701201U);
}

TEST(Errors, the_exception_is_a_standard_one_and_its_copy_keeps_the_text)
{
    const lcn::FatalException error("text");
    const lcn::FatalException copy(error);  // NOLINT(performance-unnecessary-copy-initialization)
    const std::exception& base = copy;
    EXPECT_STREQ(base.what(), "text");
}
