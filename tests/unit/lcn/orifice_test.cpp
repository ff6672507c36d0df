// orifice_test.cpp: discharge coefficient, tappings and resistance of an orifice plate.
#include "lcn/orifice.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

/// ISO 5167-2:2003, equation (4), for D >= 71.12 mm, term by term as printed.
double isoCoefficient(double beta, double Re, double L1, double L2)
{
    const double b4 = beta * beta * beta * beta;
    const double A = std::pow(19000.0 * beta / Re, 0.8);
    const double M2 = 2.0 * L2 / (1.0 - beta);
    double C = 0.5961;
    C += 0.0261 * beta * beta;
    C -= 0.216 * b4 * b4;
    C += 0.000521 * std::pow(1e6 * beta / Re, 0.7);
    C += (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / Re, 0.3);
    C += (0.043 + 0.080 * std::exp(-10.0 * L1) - 0.123 * std::exp(-7.0 * L1)) * (1.0 - 0.11 * A) * b4 /
         (1.0 - b4);
    C -= 0.031 * (M2 - 0.8 * std::pow(M2, 1.1)) * std::pow(beta, 1.3);
    return C;
}

constexpr lcn::Tappings kCorner{0.0, 0.0};
constexpr lcn::Tappings kDAndHalfD{1.0, 0.47};

}  // namespace

TEST(Orifice, a_length_of_two_inches_selects_flange_tappings)
{
    const lcn::Tappings tappings = lcn::tappingsOf(0.0508, 0.1);
    EXPECT_EQ(tappings.L1, 0.0254 / 0.1);
    EXPECT_EQ(tappings.L2, 0.0254 / 0.1);
    EXPECT_EQ(lcn::tappingsOf(0.0508 + 0.9e-10, 0.1).L1, 0.0254 / 0.1);
}

TEST(Orifice, a_length_of_one_and_a_half_diameters_selects_d_and_half_d_tappings)
{
    const lcn::Tappings tappings = lcn::tappingsOf(0.15, 0.1);
    EXPECT_EQ(tappings.L1, 1.0);
    EXPECT_EQ(tappings.L2, 0.47);
}

TEST(Orifice, any_other_length_selects_corner_tappings)
{
    for (const double length : {1e-6, 0.0508 + 2e-10, 0.15 + 2e-10, 1.0}) {
        EXPECT_EQ(lcn::tappingsOf(length, 0.1).L1, 0.0);
        EXPECT_EQ(lcn::tappingsOf(length, 0.1).L2, 0.0);
    }
}

TEST(Orifice, two_inches_win_over_one_and_a_half_diameters)
{
    EXPECT_EQ(lcn::tappingsOf(0.0508, 0.0508 / 1.5).L1, 0.0254 / (0.0508 / 1.5));
}

TEST(Orifice, the_coefficient_agrees_with_a_published_example)
{
    // C. Bell, documentation of the Python package fluids: D 0.07391 m, bore 0.0222 m, 0.12 kg/s, 1.85e-5 Pa s,
    // flange tappings
    const double D = 0.07391;
    const double Re = 4.0 * 0.12 / (std::acos(-1.0) * D * 1.85e-5);
    EXPECT_NEAR(lcn::readerHarrisGallagher(0.0222 / D, Re, {0.0254 / D, 0.0254 / D}, D), 0.5990326277163659,
                1e-14);
}

TEST(Orifice, the_coefficient_is_that_of_the_standard_for_all_tappings)
{
    for (const double beta : {0.1, 0.3, 0.5, 0.6, 0.75})
        for (const double Re : {5e3, 1e4, 1e5, 1e6, 1e8})
            for (const lcn::Tappings& t : {kCorner, kDAndHalfD, lcn::Tappings{0.1693, 0.1693}})
                EXPECT_NEAR(lcn::readerHarrisGallagher(beta, Re, t, 0.15),
                            isoCoefficient(beta, Re, t.L1, t.L2), 1e-13);
}

TEST(Orifice, below_71_2_millimetres_a_term_is_added_that_takes_the_diameter_in_metres)
{
    const double beta = 0.5;
    const double large = lcn::readerHarrisGallagher(beta, 1e5, kCorner, 0.0712);
    EXPECT_NEAR(large, isoCoefficient(beta, 1e5, 0.0, 0.0), 1e-14);
    // 0.011 x 0.25 x (2.8 - 0.05/25.4) = 0.0076945866
    const double small = lcn::readerHarrisGallagher(beta, 1e5, kCorner, 0.05);
    EXPECT_NEAR(small - large, 0.011 * 0.25 * (2.8 - 0.05 / 25.4), 1e-15);
    EXPECT_NEAR(small - large, 0.0076945866, 1e-10);
}

TEST(Orifice, expansibility_is_one_without_a_pressure_difference_and_follows_the_standard)
{
    EXPECT_EQ(lcn::expansibility(0.5, 2e5, 2e5, 1.4), 1.0);
    // beta 0.5, p2/p1 0.9, kappa 1.4: (0.351 + 0.016 + 0.0036328) (1 - 0.9^(1/1.4)) = 0.3706328 x 0.0724882
    EXPECT_NEAR(lcn::expansibility(0.5, 1e5, 0.9e5, 1.4),
                1.0 - (0.351 + 0.256 / 16.0 + 0.93 / 256.0) * (1.0 - std::pow(0.9, 1.0 / 1.4)), 1e-15);
}

TEST(Orifice, resistance_is_that_of_the_flow_equation)
{
    // m = C/sqrt(1 - b^4) eps pi/4 d^2 sqrt(2 rho dp), so dp = r2 rho Q^2 with Q = m/rho
    const double D = 0.1;
    const double beta = 0.6;
    const double epsilon = 0.95;
    const double C = isoCoefficient(beta, 2e5, 0.0, 0.0);
    const double rho = 1.2;
    const double dp = 500.0;
    const double d = beta * D;
    const double m = C / std::sqrt(1.0 - std::pow(beta, 4)) * epsilon * std::acos(-1.0) / 4.0 * d * d *
                     std::sqrt(2.0 * rho * dp);
    const double r2 = lcn::orificeResistance(beta, 2e5, kCorner, D, epsilon);
    EXPECT_NEAR(r2 * rho * (m / rho) * (m / rho), dp, 1e-9 * dp);
}

TEST(Orifice, without_flow_there_is_no_resistance)
{
    EXPECT_EQ(lcn::orificeResistance(0.5, 0.0, kCorner, 0.1, 1.0), 0.0);
    EXPECT_EQ(lcn::orificeResistance(0.5, 3e-38, kCorner, 0.1, 1.0), 0.0);
    EXPECT_GT(lcn::orificeResistance(0.5, 1.0, kCorner, 0.1, 1.0), 0.0);
}

TEST(Orifice, resistance_in_creeping_flow_is_that_of_every_reynolds_number_up_to_10)
{
    const double creeping = lcn::creepingOrificeResistance(0.5, kCorner, 0.1);
    EXPECT_GT(creeping, 0.0);
    EXPECT_EQ(creeping, lcn::orificeResistance(0.5, 10.0, kCorner, 0.1, 1.0));
    EXPECT_EQ(creeping, lcn::orificeResistance(0.5, 1e-30, kCorner, 0.1, 1.0));
}
