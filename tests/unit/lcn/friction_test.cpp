// friction_test.cpp: the friction-factor correlations and how an element takes them.
#include "lcn/friction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace
{

constexpr double kReynolds[] = {5e3, 1e4, 1e5, 1e6, 1e7, 1e8};
constexpr double kRoughness[] = {1e-6, 1e-5, 1e-4, 1e-3, 1e-2};

/// Colebrook's equation solved by bisection in x = 1/sqrt(f), independent of the library's search.
double colebrookByBisection(double Re, double relRough)
{
    double low = 0.1;
    double high = 100.0;
    for (int i = 0; i < 200; ++i) {
        const double x = (low + high) / 2.0;
        const double residual = -x - 2.0 * std::log10(relRough / 3.7 + 2.51 * x / Re);
        (residual > 0.0 ? low : high) = x;
    }
    return 1.0 / (low * low);
}

/// Largest relative distance of a correlation from Colebrook's over a range.
template <typename Correlation> double largestDistance(Correlation&& f, double fromRe, double toRe)
{
    double largest = 0.0;
    for (const double Re : kReynolds)
        for (const double t : kRoughness)
            if (Re >= fromRe && Re <= toRe)
                largest = std::max(largest, std::fabs(f(Re, t) / colebrookByBisection(Re, t) - 1.0));
    return largest;
}

/// A pipe in which water flows at this Reynolds number.
lcnNET_elems pipeAt(double Re)
{
    lcnNET_elems elem;
    elem.type = lcn::kPipe;
    elem.density = 1000.0;
    elem.Area = 0.01;
    elem.diam = 0.1;
    elem.Massflow = Re * 0.001 * elem.Area / elem.diam;
    return elem;
}

lcnNET_var settings(double relaxpp, int method = 0)
{
    lcnNET_var var;
    var.Viscosity = 0.001;
    var.relaxpp = relaxpp;
    var.FrictionMethod = method;
    return var;
}

}  // namespace

// Values of each formula at Re 1e5, eps/D 1e-4, worked out from the published formula outside the library.
TEST(Friction, swamee_jain_at_re_1e5)
{
    EXPECT_NEAR(lcn::swameeJain(1e5, 1e-4), 0.01845244530756638, 1e-15);
}
TEST(Friction, haaland_at_re_1e5)
{
    EXPECT_NEAR(lcn::haaland(1e5, 1e-4), 0.018265053014793857, 1e-15);
}
TEST(Friction, serghides_at_re_1e5)
{
    EXPECT_NEAR(lcn::serghides(1e5, 1e-4), 0.01851358983180063, 1e-14);
}
TEST(Friction, altshul_at_re_1e5_is_above_the_branch_point)
{
    EXPECT_NEAR(lcn::altshul(1e5, 1e-4), 0.018382997825686878, 1e-15);
}
TEST(Friction, evangelides_at_re_1e5)
{
    EXPECT_NEAR(lcn::evangelides(1e5, 1e-4), 0.018525128421514474, 1e-15);
}
TEST(Friction, colebrook_white_at_re_1e5)
{
    EXPECT_NEAR(lcn::colebrookWhite(1e5, 1e-4).value(), 0.018513866077471648, 1e-8);
}

TEST(Friction, altshul_below_0_018_takes_its_second_branch)
{
    // 0.11 (68/1e7 + 1e-5)^0.25 = 0.11 x 0.0640212 = 0.0070423 -> 0.85 x 0.0070423 + 0.0028
    const double first = 0.11 * std::pow(68.0 / 1e7 + 1e-5, 0.25);
    ASSERT_LT(first, 0.018);
    EXPECT_NEAR(lcn::altshul(1e7, 1e-5), 0.85 * first + 0.0028, 1e-16);
}

TEST(Friction, colebrook_white_solves_its_equation_over_the_published_range)
{
    // the search stops at 1e-6 in 1/sqrt(f), which is at least 3 here: 2 x 1e-6 / 3 in f
    EXPECT_LT(largestDistance([](double Re, double t) { return lcn::colebrookWhite(Re, t).value(); }, 0, 1e9),
              1e-6);
}

TEST(Friction, colebrook_white_is_settled_to_eight_digits_where_it_settles_slowest)
{
    // a smooth pipe at the smallest Re; a search that stopped at a change of 1e-3 would be 1e-7 off
    EXPECT_NEAR(lcn::colebrookWhite(5e3, 0.0).value() / colebrookByBisection(5e3, 0.0), 1.0, 1e-8);
}

TEST(Friction, each_explicit_correlation_is_as_close_to_colebrook_as_published)
{
    EXPECT_LT(largestDistance(lcn::swameeJain, 5e3, 1e8),
              0.035);  // 1 % in most of the range, 3 % at its edge
    EXPECT_LT(largestDistance(lcn::haaland, 5e3, 1e8), 0.02);
    EXPECT_LT(largestDistance(lcn::serghides, 5e3, 1e8), 0.0001);
    EXPECT_LT(largestDistance(lcn::evangelides, 1e4, 1e7), 0.01);
}

TEST(Friction, serghides_gives_its_common_value_when_its_three_steps_agree)
{
    // fully rough: Re is out of the formula, A = B = C
    const double x = -2.0 * std::log10(0.01 / 3.7);
    EXPECT_NEAR(lcn::serghides(1e300, 0.01), 1.0 / (x * x), 1e-15);
}

TEST(Friction, methods_2_to_6_select_a_correlation_and_any_other_swamee_jain)
{
    EXPECT_EQ(lcn::turbulentFriction(2, 1e5, 1e-4), lcn::colebrookWhite(1e5, 1e-4));
    EXPECT_EQ(lcn::turbulentFriction(3, 1e5, 1e-4), lcn::haaland(1e5, 1e-4));
    EXPECT_EQ(lcn::turbulentFriction(4, 1e5, 1e-4), lcn::serghides(1e5, 1e-4));
    EXPECT_EQ(lcn::turbulentFriction(5, 1e5, 1e-4), lcn::altshul(1e5, 1e-4));
    EXPECT_EQ(lcn::turbulentFriction(6, 1e5, 1e-4), lcn::evangelides(1e5, 1e-4));
    for (const int method : {-1, 0, 1, 7, 100})
        EXPECT_EQ(lcn::turbulentFriction(method, 1e5, 1e-4), lcn::swameeJain(1e5, 1e-4));
}

TEST(Friction, at_rest_it_is_64)
{
    EXPECT_EQ(lcn::frictionLaw(0, 0.0, 1e-4, 64.0), 64.0);
    EXPECT_EQ(lcn::frictionLaw(0, 3e-38, 1e-4, 64.0), 64.0);
}

TEST(Friction, laminar_value_is_Cl_over_Re_up_to_2300)
{
    EXPECT_EQ(lcn::frictionLaw(0, 1000.0, 1e-4, 64.0), 0.064);
    EXPECT_EQ(lcn::frictionLaw(0, 2300.0, 1e-4, 64.0), 64.0 / 2300.0);
    EXPECT_EQ(lcn::frictionLaw(0, 2300.0, 1e-4, 96.0), 96.0 / 2300.0);
}

TEST(Friction, laminar_value_never_exceeds_64)
{
    EXPECT_EQ(lcn::frictionLaw(0, 1.0, 1e-4, 64.0), 64.0);
    EXPECT_EQ(lcn::frictionLaw(0, 0.5, 1e-4, 64.0), 64.0);
    EXPECT_EQ(lcn::frictionLaw(0, 1.0, 1e-4, 32.0), 32.0);
}

TEST(Friction, transition_is_a_straight_line_between_2300_and_5000)
{
    const double laminar = 64.0 / 2300.0;
    const double turbulent = lcn::swameeJain(5000.0, 1e-4);
    EXPECT_NEAR(lcn::frictionLaw(0, 3650.0, 1e-4, 64.0), (laminar + turbulent) / 2.0, 1e-16);
    EXPECT_NEAR(lcn::frictionLaw(0, 2300.0 + 270.0, 1e-4, 64.0), 0.9 * laminar + 0.1 * turbulent, 1e-16);
}

TEST(Friction, re_5000_is_turbulent_and_meets_the_straight_line)
{
    EXPECT_EQ(lcn::frictionLaw(0, 5000.0, 1e-4, 64.0), lcn::swameeJain(5000.0, 1e-4));
    EXPECT_NEAR(lcn::frictionLaw(0, std::nextafter(5000.0, 0.0), 1e-4, 64.0), lcn::swameeJain(5000.0, 1e-4),
                1e-14);
    EXPECT_NEAR(lcn::frictionLaw(0, std::nextafter(2300.0, 9e3), 1e-4, 64.0), 64.0 / 2300.0, 1e-14);
}

TEST(Friction, a_colebrook_search_that_does_not_settle_counts_as_64_and_as_0_in_the_transition)
{
    const double noNumber = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double relRough : {noNumber, infinite}) {
        EXPECT_FALSE(lcn::colebrookWhite(1e5, relRough).has_value());
        EXPECT_EQ(lcn::frictionLaw(2, 1e5, relRough, 64.0), 64.0);
        EXPECT_NEAR(lcn::frictionLaw(2, 3650.0, relRough, 64.0), 64.0 / 2300.0 / 2.0, 1e-16);
    }
}

TEST(Friction, from_relaxpp_0_4_an_element_takes_the_law_whole)
{
    for (const double relaxpp : {0.4, 0.5, 1.0}) {
        lcnNET_elems elem = pipeAt(1000.0);
        elem.friction = 0.5;
        EXPECT_NEAR(lcn::frictionFactor(elem, settings(relaxpp)), 0.064, 1e-15);
        EXPECT_NEAR(elem.friction, 0.064, 1e-15);
    }
}

TEST(Friction, below_relaxpp_0_4_an_element_moves_that_part_of_the_way_and_the_law_is_returned)
{
    lcnNET_elems elem = pipeAt(1000.0);
    elem.friction = 0.164;
    EXPECT_NEAR(lcn::frictionFactor(elem, settings(0.3)), 0.064, 1e-15);
    EXPECT_NEAR(elem.friction, 0.164 - 0.3 * 0.1, 1e-15);
    elem.friction = 0.164;
    lcn::frictionFactor(elem, settings(0.1));
    EXPECT_NEAR(elem.friction, 0.154, 1e-15);
}

TEST(Friction, an_element_uses_its_roughness_its_method_and_its_laminar_factor)
{
    lcnNET_elems elem = pipeAt(1e5);
    elem.rough = 1e-5;
    EXPECT_NEAR(lcn::frictionFactor(elem, settings(0.5, 3)), lcn::haaland(1e5, 1e-4), 1e-12);
    elem = pipeAt(1000.0);
    elem.LaminarFactor = 96.0;
    EXPECT_NEAR(lcn::frictionFactor(elem, settings(0.5)), 0.096, 1e-15);
}

TEST(Friction, with_the_viscosity_law_an_element_uses_its_temperature)
{
    lcnNET_var var = settings(0.5);
    var.ViscosityLaw = true;
    lcnNET_elems cold = pipeAt(500.0);
    cold.Temperature = 280.0;
    lcnNET_elems warm = pipeAt(500.0);
    warm.Temperature = 350.0;
    EXPECT_GT(lcn::frictionFactor(cold, var), lcn::frictionFactor(warm, var));
}

TEST(Friction, an_element_at_rest_has_64)
{
    lcnNET_elems elem = pipeAt(0.0);
    EXPECT_EQ(lcn::frictionFactor(elem, settings(0.5)), 64.0);
    EXPECT_EQ(elem.friction, 64.0);
}
