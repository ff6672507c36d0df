// element_curve_test.cpp: curve points as text.
#include "model/element_curve.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

using namespace Velcor::Tavell;

TEST(ElementCurve, each_value_has_6_digits_and_a_comma)
{
    const double values[] = {0.001, 0.0025, 12.0, 1234567.0, -0.0};
    EXPECT_EQ(curveText(values, 3), "0.001,0.0025,12,");
    EXPECT_EQ(curveText(values, 5), "0.001,0.0025,12,1.23457e+06,-0,");
}

TEST(ElementCurve, no_value_is_a_single_comma)
{
    EXPECT_EQ(curveText(nullptr, 0), ",");
}

TEST(ElementCurve, text_splits_at_each_comma)
{
    EXPECT_EQ(curveValues("0.001,0.0025,12,"), (std::vector<double>{0.001, 0.0025, 12.0}));
    EXPECT_EQ(curveValues("1, 2"), (std::vector<double>{1.0, 2.0}));
    EXPECT_TRUE(curveValues("").empty());
}

TEST(ElementCurve, a_piece_that_is_no_number_throws)
{
    EXPECT_THROW(curveValues("1,abc,2,"), std::invalid_argument);
    EXPECT_THROW(curveValues("1,,2,"), std::invalid_argument);
    EXPECT_THROW(curveValues(","), std::invalid_argument);
    EXPECT_THROW(curveValues("1,1e999,"), std::out_of_range);
}
