// sparse_factor_test.cpp: the direct solution of networks' systems against a dense one and by residuals.
#include "lcn/sparse_factor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "unit/support/graphs.h"

using namespace SolverTest;

namespace
{

struct System {
    int n = 0;
    std::vector<lcn::EquationPair> pairs;
    std::vector<double> outside, conductance, rhs;  // outside and rhs from 1
};

std::size_t at(int i)
{
    return static_cast<std::size_t>(i);
}

long double wide(double value)
{
    return static_cast<long double>(value);
}

std::vector<lcn::EquationPair> pairsOf(const Edges& edges)
{
    std::vector<lcn::EquationPair> pairs;
    for (const auto& [a, b] : edges)
        pairs.push_back({a, b});
    return pairs;
}

/// Conductances 10^-decades .. 10^decades and towards the outside one of 1 at every grounded-th equation.
System makeSystem(int n, const Edges& edges, std::mt19937& random, double decades, int grounded)
{
    std::uniform_real_distribution<double> exponent(-decades, decades);
    System system{n, pairsOf(edges), std::vector<double>(at(n) + 1, 0.0), {}, std::vector<double>(at(n) + 1)};
    for (std::size_t i = 0; i < system.pairs.size(); ++i) {
        system.conductance.push_back(std::pow(10.0, exponent(random)));
    }
    for (int i = 1; i <= n; ++i) {
        if ((i - 1) % grounded == 0) system.outside[at(i)] = 1.0;
        system.rhs[at(i)] = std::uniform_real_distribution<double>(-1.0, 1.0)(random);
    }
    return system;
}

std::vector<long double> diagonalOf(const System& system)
{
    std::vector<long double> diagonal(system.outside.begin(), system.outside.end());
    for (std::size_t i = 0; i < system.pairs.size(); ++i) {
        diagonal[at(system.pairs[i].row)] += wide(system.conductance[i]);
        diagonal[at(system.pairs[i].column)] += wide(system.conductance[i]);
    }
    return diagonal;
}

/// Cholesky's method on the full matrix; empty when it is not positive definite.
std::vector<double> denseSolution(const System& system)
{
    const int n = system.n;
    std::vector<std::vector<long double>> a(at(n) + 1, std::vector<long double>(at(n) + 1, 0.0L));
    const std::vector<long double> diagonal = diagonalOf(system);
    for (int i = 1; i <= n; ++i)
        a[at(i)][at(i)] = diagonal[at(i)];
    for (std::size_t i = 0; i < system.pairs.size(); ++i) {
        const lcn::EquationPair& pair = system.pairs[i];
        a[at(pair.row)][at(pair.column)] -= wide(system.conductance[i]);
        a[at(pair.column)][at(pair.row)] -= wide(system.conductance[i]);
    }
    std::vector<long double> x(system.rhs.begin(), system.rhs.end());
    for (int k = 1; k <= n; ++k) {
        for (int j = 1; j < k; ++j) {
            for (int i = 1; i < j; ++i)
                a[at(k)][at(j)] -= a[at(k)][at(i)] * a[at(j)][at(i)];
            a[at(k)][at(j)] /= a[at(j)][at(j)];
            a[at(k)][at(k)] -= a[at(k)][at(j)] * a[at(k)][at(j)];
            x[at(k)] -= a[at(k)][at(j)] * x[at(j)];
        }
        if (!(a[at(k)][at(k)] > 0.0L)) return {};
        a[at(k)][at(k)] = std::sqrt(a[at(k)][at(k)]);
        x[at(k)] /= a[at(k)][at(k)];
    }
    for (int k = n; k >= 1; --k) {
        x[at(k)] /= a[at(k)][at(k)];
        for (int i = 1; i < k; ++i)
            x[at(i)] -= a[at(k)][at(i)] * x[at(k)];
    }
    return std::vector<double>(x.begin(), x.end());
}

std::vector<double> solution(lcn::SparseFactor& factor, const System& system)
{
    factor.prepare(system.n, system.pairs);
    if (!factor.factorise(system.outside.data(), system.conductance.data())) return {};
    std::vector<double> x = system.rhs;
    factor.solve(x.data());
    return x;
}

double largest(const std::vector<double>& values)
{
    double most = 0.0;
    for (std::size_t i = 1; i < values.size(); ++i)
        most = std::max(most, std::fabs(values[i]));
    return most;
}

/// Largest difference to the dense solution, relative to the largest value.
void expectDenseSolution(const System& system, const char* what)
{
    const std::vector<double> expected = denseSolution(system);
    ASSERT_EQ(expected.size(), at(system.n) + 1) << what;
    for (const bool portable : {false, true}) {
        lcn::SparseFactor factor;
        factor.usePortableKernels(portable);
        std::vector<double> x = solution(factor, system);
        ASSERT_EQ(x.size(), expected.size()) << what;
        for (std::size_t i = 1; i < x.size(); ++i)
            x[i] -= expected[i];
        // rounding of 1e-16 grows with the condition, some 1e5 here
        EXPECT_LT(largest(x), 1e-10 * largest(expected)) << what << " n " << system.n << " " << portable;
    }
}

/// Largest residual, relative to the diagonal times the largest value: a few roundings for a stable method.
double backwardError(const System& system, const std::vector<double>& x)
{
    std::vector<long double> residual(system.rhs.begin(), system.rhs.end());
    for (std::size_t i = 0; i < system.pairs.size(); ++i) {
        const lcn::EquationPair& pair = system.pairs[i];
        residual[at(pair.row)] += wide(system.conductance[i]) * wide(x[at(pair.column)]);
        residual[at(pair.column)] += wide(system.conductance[i]) * wide(x[at(pair.row)]);
    }
    double most = 0.0;
    const std::vector<long double> diagonal = diagonalOf(system);
    for (int i = 1; i <= system.n; ++i) {
        residual[at(i)] -= diagonal[at(i)] * wide(x[at(i)]);
        most = std::max(most, static_cast<double>(std::fabs(residual[at(i)]) / diagonal[at(i)]));
    }
    return most / largest(x);
}

Edges randomTree(int n, std::mt19937& random)
{
    Edges edges;
    for (int row = 2; row <= n; ++row)
        edges.push_back({row, 1 + static_cast<int>(random() % static_cast<unsigned>(row - 1))});
    return edges;
}

Edges star(int n)
{
    Edges edges;
    for (int row = 2; row <= n; ++row)
        edges.push_back({1, row});
    return edges;
}

Edges cycle(int n)
{
    Edges edges = path(n);
    edges.push_back({n, 1});
    return edges;
}

Edges together(Edges a, const Edges& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// A line of pipes of which every second one is doubled.
Edges doubledPath(int n)
{
    Edges edges = path(n);
    for (int row = 1; row < n; row += 2)
        edges.push_back({row + 1, row});
    return edges;
}

}  // namespace

TEST(SparseFactor, solution_agrees_with_a_dense_one_on_every_shape)
{
    std::mt19937 random(1);
    for (int n = 2; n <= 60; n += n < 12 ? 1 : 7) {
        const auto check = [&](const Edges& edges, const char* what) {
            expectDenseSolution(makeSystem(n, shuffled(edges, n, random), random, 1.0, 5), what);
        };
        check(path(n), "line");
        check(randomTree(n, random), "tree");
        check(star(n), "star");
        if (n > 2) check(cycle(n), "cycle");
        check(doubledPath(n), "doubled line");
        check(together(path(n), randomEdges(n, n / 4 + 1, random)), "line with branches");
        check(together(path(n), randomEdges(n, 2 * n, random)), "random");
        check(together(path(n), randomEdges(n, n * n, random)), "nearly full, repeated pairs");
    }
}

TEST(SparseFactor, solution_agrees_with_a_dense_one_on_grids)
{
    std::mt19937 random(2);
    for (const int side : {2, 3, 5, 9, 14})
        expectDenseSolution(
            makeSystem(side * side, shuffled(gridEdges(side, side), side * side, random), random, 1.0, 7),
            "grid");
}

TEST(SparseFactor, one_equation_and_equations_without_neighbours_are_divisions)
{
    lcn::SparseFactor factor;
    factor.prepare(3, {});
    const std::vector<double> outside = {0.0, 2.0, 4.0, 8.0};
    ASSERT_TRUE(factor.factorise(outside.data(), nullptr));
    std::vector<double> x = {0.0, 1.0, 1.0, 1.0};
    factor.solve(x.data());
    EXPECT_EQ(x[1], 0.5);
    EXPECT_EQ(x[2], 0.25);
    EXPECT_EQ(x[3], 0.125);

    factor.prepare(1, {});
    ASSERT_TRUE(factor.factorise(outside.data(), nullptr));
    x[1] = 3.0;
    factor.solve(x.data());
    EXPECT_EQ(x[1], 1.5);
}

TEST(SparseFactor, no_equations_are_solved_too)
{
    lcn::SparseFactor factor;
    factor.prepare(0, {});
    EXPECT_TRUE(factor.factorise(nullptr, nullptr));
    std::vector<double> x(1, 7.0);
    factor.solve(x.data());
    EXPECT_EQ(x[0], 7.0);
}

TEST(SparseFactor, every_component_is_solved_for_itself)
{
    std::mt19937 random(3);
    Edges edges = gridEdges(5, 5);
    for (const auto& [a, b] : path(20))
        edges.push_back({a + 25, b + 25});
    for (const auto& [a, b] : gridEdges(4, 4))
        edges.push_back({a + 45, b + 45});
    expectDenseSolution(makeSystem(64, edges, random, 1.0, 1), "components");  // equations 62 .. 64 are alone
}

TEST(SparseFactor, residual_of_large_systems_is_a_few_roundings)
{
    std::mt19937 random(4);
    const auto check = [&](int n, const Edges& edges, const char* what) {
        const System system = makeSystem(n, shuffled(edges, n, random), random, 3.0, 500);
        for (const bool portable : {false, true}) {
            lcn::SparseFactor factor;
            factor.usePortableKernels(portable);
            const std::vector<double> x = solution(factor, system);
            ASSERT_FALSE(x.empty()) << what;
            EXPECT_LT(backwardError(system, x), 1e-14) << what << " " << portable;
        }
    };
    check(50000, path(50000), "line");
    check(50000, randomTree(50000, random), "tree");
    check(50000, together(randomTree(50000, random), randomEdges(50000, 5000, random)), "tree and loops");
    check(14400, gridEdges(120, 120), "grid");
    check(3000, together(path(3000), randomEdges(3000, 3000, random)), "random, wide panels");
}

TEST(SparseFactor, conductances_over_fifteen_decades_keep_their_accuracy)
{
    std::mt19937 random(5);
    for (int repeat = 0; repeat < 20; ++repeat) {
        Edges edges = shuffled(gridEdges(12, 12), 144, random);
        System system = makeSystem(144, edges, random, 7.5, 1);
        lcn::SparseFactor factor;
        const std::vector<double> x = solution(factor, system);
        ASSERT_FALSE(x.empty());
        EXPECT_LT(backwardError(system, x), 1e-14);
    }
}

TEST(SparseFactor, pairs_without_conductance_change_nothing)
{
    std::mt19937 random(6);
    System with = makeSystem(49, gridEdges(7, 7), random, 1.0, 1);
    for (std::size_t i = 0; i < with.pairs.size(); i += 3)
        with.conductance[i] = 0.0;
    expectDenseSolution(with, "zero conductances");
}

TEST(SparseFactor, component_without_a_way_outside_has_no_factor)
{
    std::mt19937 random(7);
    for (const int n : {2, 3, 9, 40}) {
        for (const Edges& edges : {path(n), together(path(n), randomEdges(n, 2 * n, random))}) {
            System system = makeSystem(n, edges, random, 1.0, 1);
            std::fill(system.outside.begin(), system.outside.end(), 0.0);
            lcn::SparseFactor factor;
            EXPECT_TRUE(solution(factor, system).empty()) << n;
        }
    }
}

TEST(SparseFactor, way_outside_may_be_weak_beyond_the_rounding_of_the_diagonal)
{
    // A tree and a ring whose only way outside is 1e-25 beside conductances of 1: the elimination only adds, so the
    // sum of all inflows leaves there with its full precision, x = 3 / 1e-25 everywhere.
    for (const Edges& edges : {path(50), together(path(50), {{1, 50}})}) {
        System system{50, pairsOf(edges), std::vector<double>(51, 0.0), {}, std::vector<double>(51, 0.0)};
        system.conductance.assign(system.pairs.size(), 1.0);
        system.outside[17] = 1e-25;
        system.rhs[3] = 1.0;
        system.rhs[44] = 2.0;
        lcn::SparseFactor factor;
        const std::vector<double> x = solution(factor, system);
        ASSERT_FALSE(x.empty());
        EXPECT_NEAR(x[17] * 1e-25, 3.0, 1e-13);
        EXPECT_NEAR(x[1] * 1e-25, 3.0, 1e-13);
    }
}

TEST(SparseFactor, dead_end_at_rest_keeps_the_pressure_of_its_neighbour_to_the_last_bit)
{
    // 1 - 2 - 3 - 4 behind a way outside at 1 and an inflow there; nothing flows behind it
    std::mt19937 random(13);
    System system = makeSystem(4, path(4), random, 3.0, 100);
    system.rhs = {0.0, 1.0 / 3.0, 0.0, 0.0, 0.0};
    lcn::SparseFactor factor;
    const std::vector<double> x = solution(factor, system);
    ASSERT_FALSE(x.empty());
    EXPECT_EQ(x[2], x[1]);
    EXPECT_EQ(x[3], x[1]);
    EXPECT_EQ(x[4], x[1]);
}

TEST(SparseFactor, negative_way_outside_or_conductance_has_no_factor_wherever_it_is)
{
    std::mt19937 random(8);
    for (const Edges& edges : {path(64), gridEdges(8, 8)}) {
        for (int weak = 1; weak <= 64; ++weak) {
            System system = makeSystem(64, edges, random, 1.0, 4);
            lcn::SparseFactor factor;
            EXPECT_FALSE(solution(factor, system).empty()) << weak;
            system.outside[at(weak)] = -1e-3;
            EXPECT_TRUE(solution(factor, system).empty()) << weak;
            system.outside[at(weak)] = 1e-3;
            system.conductance[at(weak) % system.conductance.size()] *= -1.0;
            EXPECT_TRUE(solution(factor, system).empty()) << weak;
        }
    }
}

TEST(SparseFactor, way_outside_that_is_negative_or_no_number_has_no_factor)
{
    std::mt19937 random(9);
    const double kBad[] = {-1.0, std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::infinity()};
    for (const Edges& edges : {path(16), gridEdges(4, 4), together(path(16), randomEdges(16, 100, random))}) {
        for (const double bad : kBad) {
            System system = makeSystem(16, edges, random, 1.0, 1);
            system.outside[7] = bad;
            lcn::SparseFactor factor;
            EXPECT_TRUE(solution(factor, system).empty()) << bad;
        }
    }
}

TEST(SparseFactor, conductance_that_is_no_number_has_no_factor)
{
    std::mt19937 random(10);
    for (const Edges& edges : {path(16), gridEdges(4, 4)}) {
        System system = makeSystem(16, edges, random, 1.0, 1);
        system.conductance[3] = std::numeric_limits<double>::quiet_NaN();
        lcn::SparseFactor factor;
        EXPECT_TRUE(solution(factor, system).empty());
    }
}

TEST(SparseFactor, failed_factorisation_does_not_disturb_the_next)
{
    std::mt19937 random(11);
    const System system = makeSystem(400, gridEdges(20, 20), random, 1.0, 9);
    lcn::SparseFactor factor;
    const std::vector<double> expected = solution(factor, system);
    std::vector<double> bad = system.outside;
    bad[201] = -1.0;
    EXPECT_FALSE(factor.factorise(bad.data(), system.conductance.data()));
    ASSERT_TRUE(factor.factorise(system.outside.data(), system.conductance.data()));
    std::vector<double> x = system.rhs;
    factor.solve(x.data());
    EXPECT_EQ(x, expected);
}

TEST(SparseFactor, same_input_gives_the_same_bits_whatever_was_prepared_before)
{
    std::mt19937 random(12);
    const System first = makeSystem(2500, shuffled(gridEdges(50, 50), 2500, random), random, 2.0, 50);
    const System second = makeSystem(
        3000, shuffled(together(path(3000), randomEdges(3000, 900, random)), 3000, random), random, 2.0, 50);
    const System tiny = makeSystem(3, path(3), random, 1.0, 1);
    lcn::SparseFactor used;
    for (const System* system : {&first, &second, &tiny, &first, &tiny, &second}) {
        lcn::SparseFactor fresh;
        EXPECT_EQ(solution(used, *system), solution(fresh, *system));
    }
}

TEST(SparseFactor, both_kernels_agree_to_rounding)
{
    std::mt19937 random(13);
    const System system = makeSystem(10000, gridEdges(100, 100), random, 1.0, 100);
    lcn::SparseFactor fast;
    lcn::SparseFactor portable;
    portable.usePortableKernels(true);
    std::vector<double> x = solution(fast, system);
    const std::vector<double> y = solution(portable, system);
    ASSERT_EQ(x.size(), y.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] -= y[i];
    EXPECT_LT(largest(x), 1e-10 * largest(y));
}

TEST(SparseFactor, factor_of_a_tree_holds_two_or_three_values_per_equation)
{
    std::mt19937 random(14);
    lcn::SparseFactor factor;
    factor.prepare(1000, pairsOf(star(1000)));
    EXPECT_EQ(factor.coreSize(), 0);
    EXPECT_EQ(factor.factorEntries(), 2000U);
    factor.prepare(1000, pairsOf(randomTree(1000, random)));
    EXPECT_EQ(factor.coreSize(), 0);
    EXPECT_GT(factor.factorEntries(), 2000U);
    EXPECT_LT(factor.factorEntries(), 3000U);
}

TEST(SparseFactor, factor_of_a_grid_grows_little_more_than_linearly)
{
    // the factor of a k x k grid has some 31/4 k^2 log2 k entries at best (George 1973)
    lcn::SparseFactor factor;
    for (const int side : {32, 128}) {
        factor.prepare(side * side, pairsOf(gridEdges(side, side)));
        const double best = 7.75 * side * side * std::log2(side);
        EXPECT_LT(static_cast<double>(factor.factorEntries()), best) << side;
    }
}
