// curves_test.cpp: the fits of pump and loss curves.
#include "lcn/curves.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "lcn/errors.h"
#include "unit/support/solver_network.h"

using SolverTest::makeCurve;

namespace
{

using Cubic = std::array<double, 4>;

double valueAt(const Cubic& c, double x)
{
    return c[0] + c[1] * x + c[2] * x * x + c[3] * x * x * x;
}

/// A curve through these flows on p/rho = c0 + c1 q + c2 q^2 + c3 q^3, density 1000.
lcnNET_pumps curveOn(const Cubic& c, const std::vector<double>& flows)
{
    std::vector<double> pressures;
    pressures.reserve(flows.size());
    for (const double q : flows)
        pressures.push_back(1000.0 * valueAt(c, q));
    return makeCurve(flows, pressures);
}

/// Least-squares cubic from the normal equations in long double, flows scaled to 0..1.
Cubic normalEquations(const std::vector<double>& x, const std::vector<double>& y)
{
    const long double scale = static_cast<long double>(x.back());
    std::array<std::array<long double, 5>, 4> a{};
    for (std::size_t p = 0; p < x.size(); ++p) {
        std::array<long double, 4> powers{1.0L};
        for (std::size_t j = 1; j < 4; ++j)
            powers[j] = powers[j - 1] * (static_cast<long double>(x[p]) / scale);
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t j = 0; j < 4; ++j)
                a[i][j] += powers[i] * powers[j];
            a[i][4] += powers[i] * static_cast<long double>(y[p]);
        }
    }
    for (std::size_t k = 0; k < 4; ++k)  // Gauss-Jordan
        for (std::size_t i = 0; i < 4; ++i) {
            if (i == k) continue;
            const long double factor = a[i][k] / a[k][k];
            for (std::size_t j = k; j < 5; ++j)
                a[i][j] -= factor * a[k][j];
        }
    Cubic c{};
    long double power = 1.0L;
    for (std::size_t k = 0; k < 4; ++k, power *= scale)
        c[k] = static_cast<double>(a[k][4] / a[k][k] / power);
    return c;
}

void expectNoFit(lcnNET_pumps curve)
{
    lcnNET_var var;
    EXPECT_FALSE(lcn::fitCubic(curve).has_value());
    EXPECT_FALSE(lcn::preparePump(curve, var));
    EXPECT_FALSE(lcn::prepareLoss(curve));
    EXPECT_TRUE(var.Messages.empty());
}

const std::vector<double> kFlows{0.0, 0.002, 0.004, 0.006, 0.008, 0.01};

}  // namespace

TEST(Curves, points_on_a_cubic_give_that_cubic)
{
    const Cubic c{50.0, -100.0, -2.0e5, -1.0e7};
    const auto fit = lcn::fitCubic(curveOn(c, kFlows));
    ASSERT_TRUE(fit.has_value());
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR((*fit)[i], c[i], 1e-9 * std::fabs(c[i])) << i;
}

TEST(Curves, four_points_are_interpolated)
{
    const std::vector<double> flows{0.001, 0.003, 0.007, 0.008};
    const std::vector<double> pressures{400000.0, 390000.0, 250000.0, 10000.0};
    const auto fit = lcn::fitCubic(makeCurve(flows, pressures));
    ASSERT_TRUE(fit.has_value());
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(valueAt(*fit, flows[i]), pressures[i] / 1000.0, 1e-7);
}

TEST(Curves, more_points_give_the_least_squares_cubic)
{
    const std::vector<double> flows{0.0005, 0.0013, 0.0024, 0.0041, 0.0052, 0.0077, 0.0091};
    const std::vector<double> y{51.0, 49.5, 48.9, 43.0, 40.2, 27.5, 15.0};
    std::vector<double> pressures;
    pressures.reserve(y.size());
    for (const double value : y)
        pressures.push_back(value * 800.0);
    const auto fit = lcn::fitCubic(makeCurve(flows, pressures, 800.0));
    ASSERT_TRUE(fit.has_value());
    const Cubic expected = normalEquations(flows, y);
    for (std::size_t i = 0; i < 4; ++i)  // condition of the Vandermonde matrix times the rounding of a double
        EXPECT_NEAR((*fit)[i], expected[i], 1e-8 * std::fabs(expected[i])) << i;
}

TEST(Curves, pressures_are_divided_by_the_reference_density)
{
    const std::vector<double> pressures{4000.0, 3000.0, 2000.0, 1000.0};
    const auto light = lcn::fitCubic(makeCurve({0.0, 1.0, 2.0, 3.0}, pressures, 500.0));
    const auto heavy = lcn::fitCubic(makeCurve({0.0, 1.0, 2.0, 3.0}, pressures, 1000.0));
    ASSERT_TRUE(light && heavy);
    EXPECT_NEAR((*light)[0], 8.0, 1e-12);
    EXPECT_NEAR((*heavy)[0], 4.0, 1e-12);
    EXPECT_NEAR((*light)[1], -2.0, 1e-12);
}

TEST(Curves, points_are_counted_from_the_offsets_of_both_lists)
{
    const Cubic c{50.0, -100.0, -2.0e5, -1.0e7};
    lcnNET_pumps whole = curveOn(c, {0.001, 0.002, 0.004, 0.006, 0.008, 0.01});
    lcnNET_pumps tail = whole;
    tail.FlowRate = whole.FlowRate.shiftedBy(1);
    tail.PressurePoints = whole.PressurePoints.shiftedBy(1);
    const auto fit = lcn::fitCubic(tail);
    ASSERT_TRUE(fit.has_value());
    EXPECT_NEAR((*fit)[0], 50.0, 1e-8);
    EXPECT_EQ(tail.points(), 5);
}

TEST(Curves, fewer_than_four_points_fail)
{
    expectNoFit(makeCurve({}, {}));
    expectNoFit(makeCurve({0.001, 0.002}, {2000.0, 1000.0}));
    expectNoFit(makeCurve({0.001, 0.002, 0.003}, {3000.0, 2000.0, 1000.0}));
}

TEST(Curves, equal_or_falling_flows_fail)
{
    expectNoFit(makeCurve({0.001, 0.002, 0.002, 0.003}, {4.0, 3.0, 2.0, 1.0}));
    expectNoFit(makeCurve({0.001, 0.001}, {2000.0, 1000.0}));
    expectNoFit(makeCurve({0.001, 0.003, 0.002, 0.004}, {4.0, 3.0, 2.0, 1.0}));
}

TEST(Curves, counts_that_differ_fail)
{
    expectNoFit(makeCurve({0.001, 0.002, 0.003, 0.004}, {5.0, 4.0, 3.0, 2.0, 1.0}));
    expectNoFit(makeCurve({0.001, 0.002, 0.003, 0.004, 0.005}, {4.0, 3.0, 2.0, 1.0}));
}

TEST(Curves, a_number_that_is_not_finite_fails)
{
    const double infinite = std::numeric_limits<double>::infinity();
    const double noNumber = std::numeric_limits<double>::quiet_NaN();
    for (const double bad : {infinite, noNumber}) {
        expectNoFit(makeCurve({0.001, 0.002, 0.003, bad}, {4.0, 3.0, 2.0, 1.0}));
        expectNoFit(makeCurve({0.001, 0.002, 0.003, 0.004}, {4.0, bad, 2.0, 1.0}));
        expectNoFit(makeCurve({0.001, 0.002, 0.003, 0.004}, {4.0, 3.0, 2.0, 1.0}, bad));
    }
}

TEST(Curves, a_pump_stores_minus_the_pressure_rise_and_the_flow_where_it_ends)
{
    // rise 50 - 100 q - 4.9e5 q^2 = 0 at q = 0.01: 50 - 1 - 49
    lcnNET_pumps pump = curveOn({50.0, -100.0, -4.9e5, 0.0}, {0.0, 0.002, 0.004, 0.006, 0.009});
    lcnNET_var var;
    ASSERT_TRUE(lcn::preparePump(pump, var));
    EXPECT_NEAR(pump.a, -50.0, 1e-9);
    EXPECT_NEAR(pump.b, 100.0, 1e-6);
    EXPECT_NEAR(pump.c, 4.9e5, 1e-2);
    EXPECT_NEAR(pump.d, 0.0, 1.0);
    EXPECT_NEAR(pump.qmax, 0.01, 1e-9);
    EXPECT_NEAR(pump.qmax * pump.RefDensity, 10.0, 1e-6);
}

TEST(Curves, a_pump_with_a_flat_shut_off_finds_its_end)
{
    // rise 50 - 1e6 q^2: the slope at rest is zero but for rounding; the end is sqrt(5e-5)
    lcnNET_pumps pump = curveOn({50.0, 0.0, -1e6, 0.0}, {0.0, 0.002, 0.004, 0.006});
    lcnNET_var var;
    ASSERT_TRUE(lcn::preparePump(pump, var));
    EXPECT_NEAR(pump.qmax, std::sqrt(5e-5), 1e-9);
}

TEST(Curves, a_negative_zero_is_rejected_and_the_search_starts_again_at_half_the_largest_flow)
{
    // minus rise -50 - 5000 q + 4e6 q^2 falls at rest: Newton from 0 goes to -0.01 and ends at the negative zero
    // (5000 - sqrt(25e6 + 8e8)) / 8e6; from 0.0025 it ends at the positive one
    lcnNET_pumps pump = curveOn({50.0, 5000.0, -4e6, 0.0}, {0.0, 0.001, 0.002, 0.003, 0.005});
    lcnNET_var var;
    ASSERT_TRUE(lcn::preparePump(pump, var));
    EXPECT_NEAR(pump.qmax, (5000.0 + std::sqrt(25e6 + 8e8)) / 8e6, 1e-9);
}

TEST(Curves, a_zero_at_which_the_rise_grows_is_rejected)
{
    // rise (q - 1)(q - 2)(q - 3) grows through 1 and 3 and falls through 2; Newton from 0 ends at 1, from 4.4 / 2 at 2
    lcnNET_pumps pump = curveOn({-6.0, 11.0, -6.0, 1.0}, {0.5, 1.5, 2.5, 3.5, 4.4});
    lcnNET_var var;
    ASSERT_TRUE(lcn::preparePump(pump, var));
    EXPECT_NEAR(pump.qmax, 2.0, 1e-8);
}

TEST(Curves, a_restart_at_the_rejected_zero_ends_the_search_there)
{
    // the same rise with 2 as largest flow: the zero 1 is rejected and the search would start again at 2 / 2
    lcnNET_pumps pump = curveOn({-6.0, 11.0, -6.0, 1.0}, {0.5, 1.0, 1.5, 1.75, 2.0});
    lcnNET_var var;
    ASSERT_TRUE(lcn::preparePump(pump, var));
    EXPECT_NEAR(pump.qmax, 1.0, 1e-8);
}

TEST(Curves, a_rise_that_never_falls_to_zero_raises_the_curve_error_with_zeros)
{
    // rise 50 + 100 q: its only zero is -0.5, rejected from every start
    lcnNET_pumps pump = curveOn({50.0, 100.0, 0.0, 0.0}, kFlows);
    lcnNET_var var;
    var.InletNode = 17;
    try {
        lcn::preparePump(pump, var);
        FAIL() << pump.qmax;
    } catch (const lcn::FatalException& error) {
        EXPECT_STREQ(
            error.what(),
            "Error in curve, element 0 upstream node 0, downstream node 0 in Circuit with inlet node 17");
    }
    ASSERT_EQ(var.Messages.size(), 1U);
    EXPECT_EQ(var.Messages[0].id, 700820U);
    EXPECT_EQ(var.Messages[0].parameters, (std::vector<double>{0.0, 0.0, 0.0, 17.0}));
}

TEST(Curves, a_pump_without_any_rise_raises_the_curve_error)
{
    lcnNET_pumps pump = makeCurve({0.0, 0.001, 0.002, 0.003}, {0.0, 0.0, 0.0, 0.0});
    lcnNET_var var;
    EXPECT_THROW(lcn::preparePump(pump, var), lcn::FatalException);  // every slope vanishes: all rejected
}

TEST(Curves, a_loss_keeps_the_signs_drops_its_constant_and_ends_at_its_last_flow)
{
    lcnNET_pumps loss = curveOn({5.0, 30.0, 2.0e5, 1.0e6}, kFlows);
    ASSERT_TRUE(lcn::prepareLoss(loss));
    EXPECT_EQ(loss.a, 0.0);
    EXPECT_NEAR(loss.b, 30.0, 1e-7);
    EXPECT_NEAR(loss.c, 2.0e5, 1e-3);
    EXPECT_NEAR(loss.d, 1.0e6, 1.0);
    EXPECT_EQ(loss.qmax, 0.01);
}

TEST(Curves, a_loss_is_read_straight_between_its_points)
{
    const lcnNET_pumps loss = makeCurve({1.0, 2.0, 4.0, 5.0}, {100.0, 300.0, 500.0, 1000.0});
    EXPECT_EQ(lcn::lossCurvePressure(loss, 1.5), 200.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 2.0), 300.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 3.0), 400.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 4.0), 500.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 4.5), 750.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 5.0), 1000.0);
}

TEST(Curves, a_loss_up_to_its_first_flow_has_its_first_pressure)
{
    const lcnNET_pumps loss = makeCurve({1.0, 2.0, 4.0, 5.0}, {100.0, 300.0, 500.0, 1000.0});
    EXPECT_EQ(lcn::lossCurvePressure(loss, 1.0), 100.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 0.5), 100.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 1e-300), 100.0);
}

TEST(Curves, a_loss_beyond_its_last_flow_or_without_forward_flow_has_its_last_pressure)
{
    const lcnNET_pumps loss = makeCurve({1.0, 2.0, 4.0, 5.0}, {100.0, 300.0, 500.0, 1000.0});
    EXPECT_EQ(lcn::lossCurvePressure(loss, 5.1), 1000.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, 0.0), 1000.0);
    EXPECT_EQ(lcn::lossCurvePressure(loss, -3.0), 1000.0);
}

TEST(Curves, a_loss_without_points_has_no_pressure_drop)
{
    EXPECT_EQ(lcn::lossCurvePressure(lcnNET_pumps(), 1.0), 0.0);
}
