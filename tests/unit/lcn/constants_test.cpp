// constants_test.cpp: values that solved flows rest on.
#include "lcn/constants.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(Constants, thresholds_and_gravity_have_their_exact_values)
{
    EXPECT_EQ(lcn::kTiny, 3e-38);
    EXPECT_EQ(lcn::kGravity, 9.80665);  // ISO 80000-3
    EXPECT_EQ(lcn::kPi, std::acos(-1.0));
    EXPECT_EQ(lcn::kSteadyTimeStep, 1e10);
    EXPECT_EQ(lcn::kLargeConductance, 1e6);
}
