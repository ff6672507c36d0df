// friction_block_test.cpp: friction factors of many elements at once against those of one.
#include "lcn/friction_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "lcn/friction.h"

using lcn::Instructions;
using lcn::kFrictionBlock;

namespace
{

constexpr double kPromised = 3e-15;  // [-] relative, see friction_block.h
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr int kMethods[] = {0, 1, 2, 3, 4, 5, 6, 7, -1};

/// Elements to evaluate, and the room for what comes out.
struct Batch {
    std::vector<double> Re, relRough, Cl, f, slope;

    void add(double reynolds, double roughness, double laminar = 64.0)
    {
        Re.push_back(reynolds);
        relRough.push_back(roughness);
        Cl.push_back(laminar);
        f.push_back(-1.0);
        slope.push_back(-1.0);
    }

    std::size_t size() const { return Re.size(); }

    void evaluate(int method)
    {
        for (std::size_t first = 0; first < size(); first += kFrictionBlock) {
            const auto count = std::min<std::size_t>(kFrictionBlock, size() - first);
            lcn::frictionLawBlock(method, &Re[first], &relRough[first], &Cl[first], &f[first], &slope[first],
                                  static_cast<int>(count));
        }
    }
};

/// count elements with Re and relative roughness spread over powers of ten.
Batch spread(unsigned seed, int count, double fromPower, double toPower)
{
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> power(fromPower, toPower);
    std::uniform_real_distribution<double> roughPower(-8.0, -1.0);
    std::uniform_real_distribution<double> laminar(40.0, 100.0);
    Batch batch;
    for (int i = 0; i < count; ++i)
        batch.add(std::pow(10.0, power(random)), i % 10 == 0 ? 0.0 : std::pow(10.0, roughPower(random)),
                  laminar(random));
    return batch;
}

bool haveSameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// f of the batch against frictionLaw, within what is promised; where one is not finite the other is the same.
void expectLaw(const Batch& batch, int method)
{
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const double law = lcn::frictionLaw(method, batch.Re[i], batch.relRough[i], batch.Cl[i]);
        const auto where = [&] {
            return "method " + std::to_string(method) + " Re " + std::to_string(batch.Re[i]) + " t " +
                   std::to_string(batch.relRough[i]);
        };
        if (std::isnan(law)) {
            EXPECT_TRUE(std::isnan(batch.f[i])) << where();
        } else if (std::isinf(law)) {
            EXPECT_EQ(batch.f[i], law) << where();
        } else {
            EXPECT_NEAR(batch.f[i], law, kPromised * std::fabs(law)) << where();
        }
    }
}

}  // namespace

TEST(FrictionBlock, turbulent_factors_are_those_of_one_element)
{
    for (const int method : kMethods) {
        // Colebrook and White's is searched for in up to 51 steps: fewer of them
        Batch batch = spread(1, method == 2 ? 2000 : 30000, 3.7, 9.0);
        batch.evaluate(method);
        expectLaw(batch, method);
    }
}

TEST(FrictionBlock, laminar_and_transition_factors_are_those_of_one_element)
{
    for (const int method : kMethods) {
        Batch batch = spread(2, 3000, -3.0, 3.7);
        for (const double Re : {2300.0, 5000.0})
            for (const double next : {std::nextafter(Re, 0.0), Re, std::nextafter(Re, 1e9)})
                batch.add(next, 1e-4);
        batch.evaluate(method);
        expectLaw(batch, method);
    }
}

TEST(FrictionBlock, fluid_at_rest_has_the_factor_of_rest_and_no_slope)
{
    for (const int method : kMethods) {
        Batch batch;
        for (const double Re : {0.0, -0.0, 1e-300, 1e-39, 3e-38, 1e-20, 0.9})
            batch.add(Re, 1e-4);
        batch.evaluate(method);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            EXPECT_EQ(batch.f[i], lcn::kFrictionAtRest) << batch.Re[i];
            EXPECT_EQ(batch.slope[i], 0.0) << batch.Re[i];
        }
    }
}

TEST(FrictionBlock, numbers_that_are_none_show_as_in_the_law_of_one_element)
{
    for (const int method : kMethods) {
        Batch batch;
        for (const double Re :
             {kInfinity, -kInfinity, kNotANumber, 1e300, 1e305, -1e5, 1e5, 3000.0, 100.0, 0.0})
            for (const double roughness :
                 {1e-4, 0.0, -0.0, -1e-4, -10.0, kNotANumber, kInfinity, 1e300, 1e305})
                for (const double laminar : {64.0, 0.0, kNotANumber, kInfinity})
                    batch.add(Re, roughness, laminar);
        batch.evaluate(method);
        expectLaw(batch, method);
    }
}

TEST(FrictionBlock, one_odd_element_leaves_its_neighbours_alone)
{
    for (const double odd : {kInfinity, kNotANumber, -1.0, 0.0, 100.0, 3000.0}) {
        Batch plain = spread(3, kFrictionBlock, 3.7, 8.0);
        Batch disturbed = plain;
        disturbed.Re[17] = odd;
        disturbed.relRough[18] = odd;
        plain.evaluate(1);
        disturbed.evaluate(1);
        for (std::size_t i = 0; i < plain.size(); ++i) {
            if (i == 17 || i == 18) continue;
            EXPECT_TRUE(haveSameBits(plain.f[i], disturbed.f[i])) << i;
            EXPECT_TRUE(haveSameBits(plain.slope[i], disturbed.slope[i])) << i;
        }
    }
}

TEST(FrictionBlock, slope_of_swamee_and_jain_is_that_of_central_differences)
{
    Batch batch = spread(4, 2000, 3.71, 9.0);
    batch.evaluate(1);
    constexpr double kStep = 1e-5;  // of ln Re: the difference is good to about 1e-10
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const double up = lcn::swameeJain(batch.Re[i] * std::exp(kStep), batch.relRough[i]);
        const double down = lcn::swameeJain(batch.Re[i] * std::exp(-kStep), batch.relRough[i]);
        EXPECT_NEAR(batch.slope[i], std::log(up / down) / (2.0 * kStep), 1e-9) << batch.Re[i];
    }
}

TEST(FrictionBlock, slope_below_the_turbulent_range_is_that_of_central_differences)
{
    for (const int method : kMethods) {
        Batch batch;
        for (const double Re : {1.5, 10.0, 500.0, 2000.0, 2299.0, 2302.0, 2500.0, 3500.0, 4990.0})
            for (const double roughness : {0.0, 1e-4, 1e-2})
                for (const double laminar : {64.0, 96.0})
                    batch.add(Re, roughness, laminar);
        batch.evaluate(method);
        constexpr double kStep = 1e-5;
        for (std::size_t i = 0; i < batch.size(); ++i) {
            const auto law = [&](double factor) {
                return lcn::frictionLaw(method, batch.Re[i] * factor, batch.relRough[i], batch.Cl[i]);
            };
            const double expected =
                batch.Re[i] <= batch.Cl[i] / lcn::kFrictionAtRest
                    ? 0.0
                    : std::log(law(std::exp(kStep)) / law(std::exp(-kStep))) / (2.0 * kStep);
            EXPECT_NEAR(batch.slope[i], expected, 1e-8) << "method " << method << " Re " << batch.Re[i];
        }
    }
}

TEST(FrictionBlock, every_turbulent_correlation_has_about_the_slope_of_swamee_and_jain)
{
    for (const int method : {2, 3, 4, 5, 6}) {
        Batch batch = spread(5, 200, 4.0, 7.0);
        batch.evaluate(method);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            if (batch.relRough[i] < 1e-6 || batch.relRough[i] > 1e-2) continue;
            constexpr double kStep = 1e-3;  // Colebrook and White's search stops at 1e-6
            const auto law = [&](double factor) {
                return lcn::frictionLaw(method, batch.Re[i] * factor, batch.relRough[i], batch.Cl[i]);
            };
            const double slope = std::log(law(1.0 + kStep) / law(1.0 - kStep)) / (2.0 * kStep);
            // of loss = f m |m|: d ln loss / d ln m is 2 + slope, and a Newton step needs that
            EXPECT_NEAR((2.0 + batch.slope[i]) / (2.0 + slope), 1.0, 0.06)
                << "method " << method << " Re " << batch.Re[i] << " t " << batch.relRough[i];
        }
    }
}

TEST(FrictionBlock, both_sets_of_instructions_give_the_same_bits)
{
    Batch batch = spread(6, 64 * 500, 2.0, 12.0);
    for (int i = 0; i < kFrictionBlock; ++i)
        batch.add(i % 2 == 0 ? 5000.0 : 1e299, i % 3 == 0 ? 0.0 : 1e-5);
    std::array<double, kFrictionBlock> best{}, bestSlope{}, portable{}, portableSlope{};
    for (std::size_t first = 0; first < batch.size(); first += kFrictionBlock)
        for (const int count : {kFrictionBlock, 63, 5, 1}) {
            lcn::swameeJainBlock(&batch.Re[first], &batch.relRough[first], best.data(), bestSlope.data(),
                                 count, Instructions::kBest);
            lcn::swameeJainBlock(&batch.Re[first], &batch.relRough[first], portable.data(),
                                 portableSlope.data(), count, Instructions::kPortable);
            const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(double);
            ASSERT_EQ(std::memcmp(best.data(), portable.data(), bytes), 0) << first << " " << count;
            ASSERT_EQ(std::memcmp(bestSlope.data(), portableSlope.data(), bytes), 0) << first << " " << count;
        }
}

TEST(FrictionBlock, any_count_gives_the_bits_of_one_at_a_time)
{
    for (const int method : {1, 3}) {
        Batch alone = spread(7, kFrictionBlock, -1.0, 9.0);
        for (std::size_t i = 0; i < alone.size(); ++i)
            lcn::frictionLawBlock(method, &alone.Re[i], &alone.relRough[i], &alone.Cl[i], &alone.f[i],
                                  &alone.slope[i], 1);
        for (int count = 1; count <= kFrictionBlock; ++count) {
            Batch together = spread(7, kFrictionBlock, -1.0, 9.0);
            lcn::frictionLawBlock(method, together.Re.data(), together.relRough.data(), together.Cl.data(),
                                  together.f.data(), together.slope.data(), count);
            for (std::size_t i = 0; i < together.size(); ++i) {
                const bool isEvaluated = i < static_cast<std::size_t>(count);
                ASSERT_TRUE(haveSameBits(together.f[i], isEvaluated ? alone.f[i] : -1.0))
                    << count << " " << i;
                ASSERT_TRUE(haveSameBits(together.slope[i], isEvaluated ? alone.slope[i] : -1.0))
                    << count << " " << i;
            }
        }
    }
}

TEST(FrictionBlock, no_elements_are_no_work)
{
    double untouched = 7.0;
    lcn::frictionLawBlock(1, nullptr, nullptr, nullptr, &untouched, &untouched, 0);
    lcn::swameeJainBlock(nullptr, nullptr, &untouched, &untouched, 0);
    EXPECT_EQ(untouched, 7.0);
}
