// log_exp_test.cpp: logarithm and exponential against the C library's in long double.
#include "lcn/log_exp.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>

namespace
{

constexpr double kPromised = 1e-15;  // [-] relative, see log_exp.h
constexpr int kSamples = 100000;

/// Distance from the exact logarithm, relative to it.
double logMiss(double x)
{
    const long double exact = std::log(static_cast<long double>(x));
    const double found = lcn::logOf(x);
    if (exact == 0.0L) return std::fabs(found);
    return static_cast<double>(std::fabs((static_cast<long double>(found) - exact) / exact));
}

double expMiss(double x)
{
    const long double exact = std::exp(static_cast<long double>(x));
    return static_cast<double>(std::fabs((static_cast<long double>(lcn::expOf(x)) - exact) / exact));
}

/// Largest of misses; a miss that is no number stays.
class Largest
{
public:
    void take(double miss, double at)
    {
        if (miss <= m_miss || std::isnan(m_miss)) return;
        m_miss = miss;
        m_at = at;
    }
    double miss() const { return m_miss; }
    double at() const { return m_at; }

private:
    double m_miss = 0.0;
    double m_at = 0.0;
};

}  // namespace

TEST(LogExp, logarithm_is_exact_to_1e_15_over_all_normal_numbers)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> exponent(-307.0, 308.0);
    Largest largest;
    for (int i = 0; i < kSamples; ++i) {
        const double x = std::pow(10.0, exponent(random));
        largest.take(logMiss(x), x);
    }
    largest.take(logMiss(DBL_MIN), DBL_MIN);
    largest.take(logMiss(DBL_MAX), DBL_MAX);
    EXPECT_LT(largest.miss(), kPromised) << "at " << largest.at();
}

TEST(LogExp, logarithm_is_exact_to_1e_15_where_friction_factors_need_it)
{
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> exponent(-9.0, 12.0);  // of y of a smooth pipe up to Re
    Largest largest;
    for (int i = 0; i < kSamples; ++i) {
        const double x = std::pow(10.0, exponent(random));
        largest.take(logMiss(x), x);
    }
    EXPECT_LT(largest.miss(), kPromised) << "at " << largest.at();
}

TEST(LogExp, logarithm_near_1_keeps_its_relative_accuracy)
{
    Largest largest;
    for (int power = 1; power <= 52; ++power)
        for (int part = 1; part <= 15; part += 2) {
            const double distance = std::ldexp(part / 16.0, 1 - power);
            largest.take(logMiss(1.0 + distance), distance);
            if (distance < 1.0) largest.take(logMiss(1.0 - distance), -distance);
        }
    EXPECT_LT(largest.miss(), kPromised) << "at 1 + " << largest.at();
    EXPECT_EQ(lcn::logOf(1.0), 0.0);
    EXPECT_EQ(lcn::logOf(std::nextafter(1.0, 2.0)), DBL_EPSILON);  // the quadratic term is below half a unit
}

TEST(LogExp, logarithm_of_every_power_of_two_and_of_its_neighbours)
{
    Largest largest;
    for (int k = -1021; k <= 1023; ++k) {
        const double x = std::ldexp(1.0, k);
        largest.take(logMiss(x), x);
        largest.take(logMiss(std::nextafter(x, 0.0)), x);
        largest.take(logMiss(std::nextafter(x, DBL_MAX)), x);
    }
    EXPECT_LT(largest.miss(), kPromised) << "at " << largest.at();
}

TEST(LogExp, logarithm_on_both_sides_of_the_end_of_its_series)
{
    // the series runs over m from sqrt(1/2) to sqrt(2): here k changes by one
    Largest largest;
    for (int k = -1020; k <= 1022; k += 3) {
        double below = std::ldexp(std::sqrt(0.5), k);
        double above = below;
        for (int step = 0; step < 20; ++step) {
            largest.take(logMiss(below), below);
            largest.take(logMiss(above), above);
            below = std::nextafter(below, 0.0);
            above = std::nextafter(above, DBL_MAX);
        }
    }
    EXPECT_LT(largest.miss(), kPromised) << "at " << largest.at();
}

TEST(LogExp, exponential_is_exact_to_1e_15_up_to_700)
{
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> anywhere(-700.0, 700.0);
    std::uniform_real_distribution<double> nearZero(-2.0, 2.0);
    Largest largest;
    for (int i = 0; i < kSamples; ++i) {
        for (const double x : {anywhere(random), nearZero(random)})
            largest.take(expMiss(x), x);
    }
    for (const double x : {-699.999, 699.999})
        largest.take(expMiss(x), x);
    EXPECT_LT(largest.miss(), kPromised) << "at " << largest.at();
    EXPECT_EQ(lcn::expOf(0.0), 1.0);
    EXPECT_EQ(lcn::expOf(-0.0), 1.0);
}

TEST(LogExp, exponential_on_both_sides_of_the_end_of_its_series)
{
    // k changes by one at the odd multiples of ln 2 / 2
    Largest largest;
    for (int k = -2017; k <= 2017; k += 2) {
        const double x = k * 0.34657359027997264;
        largest.take(expMiss(std::nextafter(x, -800.0)), x);
        largest.take(expMiss(x), x);
        largest.take(expMiss(std::nextafter(x, 800.0)), x);
    }
    EXPECT_LT(largest.miss(), kPromised) << "at " << largest.at();
}

TEST(LogExp, tiny_arguments_of_the_exponential_give_1)
{
    double x = 1e-17;
    for (int step = 0; step < 30; ++step, x *= 1e-10) {
        EXPECT_EQ(lcn::expOf(x), 1.0);
        EXPECT_EQ(lcn::expOf(-x), 1.0);
    }
}

TEST(LogExp, exponential_of_the_logarithm_gives_a_power_back)
{
    // x^-0.9 by both, as friction factors take it; the exponent's rounding, |ln x| 2^-53, comes on top
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> exponent(3.6, 12.0);
    for (int i = 0; i < kSamples; ++i) {
        const double Re = std::pow(10.0, exponent(random));
        const double exact = std::pow(Re, -0.9);
        const double room = (3.0 + 0.9 * std::log(Re) * 2.0) * DBL_EPSILON;
        ASSERT_NEAR(lcn::expOf(-0.9 * lcn::logOf(Re)) / exact, 1.0, room) << Re;
    }
}
