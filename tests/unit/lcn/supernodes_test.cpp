// supernodes_test.cpp: the panels of the factor and their dense kernels.
#include "lcn/supernodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "unit/support/graphs.h"

using namespace SolverTest;

namespace
{

long double wide(double value)
{
    return static_cast<long double>(value);
}

std::vector<lcn::EquationPair> distinctPairs(const Edges& edges)
{
    Edges sorted = edges;
    for (auto& edge : sorted)
        if (edge[0] > edge[1]) std::swap(edge[0], edge[1]);
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    std::vector<lcn::EquationPair> pairs;
    for (const auto& [a, b] : sorted)
        pairs.push_back({a - 1, b - 1});
    return pairs;
}

std::vector<double> randomValues(std::size_t count, std::mt19937& random)
{
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::vector<double> values(count);
    for (double& v : values)
        v = value(random);
    return values;
}

/// A solution chosen first, its right-hand side computed in long double; the largest error of the solve.
double errorOfSolve(int n, const Edges& edges, bool portable, std::mt19937& random)
{
    const std::vector<lcn::EquationPair> pairs = distinctPairs(edges);
    lcn::SupernodalFactor factor;
    factor.usePortableKernels(portable);
    factor.prepare(n, pairs);
    const std::vector<int>& place = factor.place();
    const auto at = [&](int equation) {
        return static_cast<std::size_t>(place[static_cast<std::size_t>(equation)]);
    };
    std::vector<double> conductance(pairs.size());
    std::vector<double> diagonal(static_cast<std::size_t>(n), 0.1);
    const std::vector<double> expected = randomValues(diagonal.size(), random);
    std::vector<long double> rhs(diagonal.size(), 0.0L);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        conductance[i] = 0.5 + static_cast<double>(random() % 1000) / 1000.0;
        diagonal[at(pairs[i].row)] += conductance[i];
        diagonal[at(pairs[i].column)] += conductance[i];
        rhs[at(pairs[i].row)] -= wide(conductance[i]) * wide(expected[at(pairs[i].column)]);
        rhs[at(pairs[i].column)] -= wide(conductance[i]) * wide(expected[at(pairs[i].row)]);
    }
    std::vector<double> x(diagonal.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<double>(rhs[i] + wide(diagonal[i]) * wide(expected[i]));
    if (!factor.factorise(diagonal.data(), conductance.data())) return HUGE_VAL;
    factor.solve(x.data());
    double most = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
        most = std::max(most, std::fabs(x[i] - expected[i]));
    return most;
}

/// c - a w by the definition, every entry.
std::vector<double> plainProduct(const std::vector<double>& c, const std::vector<double>& a,
                                 const std::vector<double>& w, int m, int n, int k)
{
    std::vector<double> result(c);
    const auto entry = [](int i, int j, int rows) {
        return static_cast<std::size_t>(j) * static_cast<std::size_t>(rows) + static_cast<std::size_t>(i);
    };
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)
            for (int s = 0; s < k; ++s)
                result[entry(i, j, m)] -= a[entry(i, s, m)] * w[entry(4 * s + j % 4, j / 4, 4 * k)];
    return result;
}

void expectProduct(const lcn::SupernodeKernels& kernels, int m, int n, int k, std::mt19937& random)
{
    const auto size = [](int x, int y) { return static_cast<std::size_t>(x) * static_cast<std::size_t>(y); };
    const std::vector<double> a = randomValues(size(m, k), random);
    const std::vector<double> w = randomValues(size((n + 3) / 4 * 4, k), random);
    const std::vector<double> before = randomValues(size(m, n) + 8, random);
    const std::vector<double> expected = plainProduct(before, a, w, m, n, k);
    std::vector<double> c = before;
    kernels.subtractProduct(c.data(), m, a.data(), m, w.data(), m, n, k);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            const std::size_t at = size(m, j) + static_cast<std::size_t>(i);
            if (i >= j) {
                EXPECT_NEAR(c[at], expected[at], 1e-13) << m << " " << n << " " << k;
            } else if (i < j - j % 4) {
                EXPECT_EQ(c[at], before[at]) << m << " " << n << " " << k;
            }
        }
    for (std::size_t at = size(m, n); at < c.size(); ++at)
        EXPECT_EQ(c[at], before[at]) << "behind the end";
}

}  // namespace

TEST(SupernodeKernels, products_agree_with_the_definition_for_every_remainder)
{
    std::mt19937 random(1);
    for (const lcn::SupernodeKernels* kernels : {&lcn::portableKernels(), &lcn::fastestKernels()})
        for (int n = 1; n <= 9; ++n)
            for (int m = n; m <= 27; ++m)
                for (const int k : {1, 2, 7, 20})
                    expectProduct(*kernels, m, n, k, random);
}

TEST(SupernodeKernels, scaling_reaches_every_entry_and_no_more)
{
    for (const lcn::SupernodeKernels* kernels : {&lcn::portableKernels(), &lcn::fastestKernels()})
        for (int m = 0; m <= 11; ++m) {
            std::vector<double> c(12, 3.0);
            kernels->scale(c.data(), 0.5, m);
            for (int i = 0; i < 12; ++i)
                EXPECT_EQ(c[static_cast<std::size_t>(i)], i < m ? 1.5 : 3.0);
        }
}

TEST(Supernodes, every_position_is_given_once)
{
    lcn::SupernodalFactor factor;
    factor.prepare(400, distinctPairs(gridEdges(20, 20)));
    std::vector<int> place = factor.place();
    std::sort(place.begin(), place.end());
    for (int i = 0; i < 400; ++i)
        EXPECT_EQ(place[static_cast<std::size_t>(i)], i);
}

TEST(Supernodes, solution_of_random_structures_is_exact_to_rounding)
{
    std::mt19937 random(2);
    for (int repeat = 0; repeat < 200; ++repeat) {
        const int n = 2 + static_cast<int>(random() % 150U);
        const int count = static_cast<int>(random() % static_cast<unsigned>(4 * n));
        const Edges edges = randomEdges(n, count, random);
        // condition below 1e3: diagonals up to 1e2 above a least eigenvalue of 0.1
        for (const bool portable : {false, true})
            EXPECT_LT(errorOfSolve(n, edges, portable, random), 1e-12) << n << " " << count;
    }
}

TEST(Supernodes, wide_supernodes_are_cut_into_panels)
{
    // a full matrix of 300 is one supernode
    Edges edges;
    for (int a = 1; a <= 300; ++a)
        for (int b = a + 1; b <= 300; ++b)
            edges.push_back({a, b});
    lcn::SupernodalFactor factor;
    factor.prepare(300, distinctPairs(edges));
    EXPECT_EQ(factor.panels(), 4U);
    std::mt19937 random(3);
    EXPECT_LT(errorOfSolve(300, edges, false, random), 1e-11);
    EXPECT_LT(errorOfSolve(300, edges, true, random), 1e-11);
}

TEST(Supernodes, grids_are_solved_by_large_panels_and_small_ones)
{
    std::mt19937 random(4);
    const Edges edges = shuffled(gridEdges(70, 70), 4900, random);
    EXPECT_LT(errorOfSolve(4900, edges, false, random), 1e-12);
    EXPECT_LT(errorOfSolve(4900, edges, true, random), 1e-12);
}

TEST(Supernodes, structures_of_hubs_are_solved)
{
    std::mt19937 random(5);
    Edges edges = path(900);
    for (int i = 1; i <= 900; ++i)
        for (int hub = 901; hub <= 903; ++hub)
            if ((i + hub) % 2 == 0) edges.push_back({i, hub});
    EXPECT_LT(errorOfSolve(903, edges, false, random), 1e-11);
    EXPECT_LT(errorOfSolve(903, edges, true, random), 1e-11);
}

TEST(Supernodes, shuffled_numbering_costs_little_fill)
{
    std::mt19937 random(6);
    lcn::SupernodalFactor ordered;
    lcn::SupernodalFactor scattered;
    ordered.prepare(90000, distinctPairs(gridEdges(300, 300)));
    scattered.prepare(90000, distinctPairs(shuffled(gridEdges(300, 300), 90000, random)));
    // without a numbering of its own the second would have a fifth more
    EXPECT_LT(static_cast<double>(scattered.entries()), 1.1 * static_cast<double>(ordered.entries()));
}

TEST(Supernodes, number_of_panels_of_a_grid_is_well_below_its_equations)
{
    lcn::SupernodalFactor factor;
    factor.prepare(2500, distinctPairs(gridEdges(50, 50)));
    EXPECT_LT(factor.panels(), 2500U / 2U);
}
