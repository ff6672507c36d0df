// lcnSparseMat_test.cpp: envelope storage, both factorisations, against a dense solution.
#include "lcn/lcnSparseMat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "unit/support/graphs.h"

using namespace SolverTest;

namespace
{

using Dense = std::vector<std::vector<double>>;  // rows and columns from 1

std::size_t at(int i)
{
    return static_cast<std::size_t>(i);
}

Dense denseZero(int n)
{
    return Dense(at(n) + 1, std::vector<double>(at(n) + 1, 0.0));
}

/// Gauss elimination with partial pivoting.
std::vector<double> denseSolve(Dense a, std::vector<double> b)
{
    const std::size_t n = b.size() - 1;
    for (std::size_t k = 1; k <= n; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k + 1; i <= n; ++i)
            if (std::fabs(a[i][k]) > std::fabs(a[pivot][k])) pivot = i;
        std::swap(a[k], a[pivot]);
        std::swap(b[k], b[pivot]);
        for (std::size_t i = k + 1; i <= n; ++i) {
            const double factor = a[i][k] / a[k][k];
            for (std::size_t j = k; j <= n; ++j)
                a[i][j] -= factor * a[k][j];
            b[i] -= factor * b[k];
        }
    }
    for (std::size_t k = n; k >= 1; --k) {
        for (std::size_t j = k + 1; j <= n; ++j)
            b[k] -= a[k][j] * b[j];
        b[k] /= a[k][k];
    }
    return b;
}

/// A random matrix of a random structure that is diagonally dominant, with its right-hand side.
struct RandomSystem {
    lcn::Graph graph;
    Edges edges;
    Dense dense;
    std::vector<double> rhs;
    int n;

    RandomSystem(std::mt19937& random, bool symmetric) : n(1 + static_cast<int>(random() % 40))
    {
        std::uniform_real_distribution<double> value(-1.0, 1.0);
        if (n > 1) edges = randomEdges(n, static_cast<int>(random() % static_cast<unsigned>(3 * n)), random);
        graph = makeGraph(n, edges);
        dense = denseZero(n);
        for (const auto& [i, j] : edges) {
            const double v = value(random);
            dense[at(i)][at(j)] += v;
            dense[at(j)][at(i)] += symmetric ? v : value(random);
        }
        for (int i = 1; i <= n; ++i) {
            double sum = 0.5;
            for (int j = 1; j <= n; ++j)
                sum += std::fabs(dense[at(i)][at(j)]) + std::fabs(dense[at(j)][at(i)]);
            dense[at(i)][at(i)] = sum;
        }
        rhs = newRhs(random);
    }

    std::vector<double> newRhs(std::mt19937& random) const
    {
        std::uniform_real_distribution<double> value(-5.0, 5.0);
        std::vector<double> b(at(n) + 1, 0.0);
        for (int i = 1; i <= n; ++i)
            b[at(i)] = value(random);
        return b;
    }

    void fill(lcnSparseMat& matrix, bool symmetric) const
    {
        for (int i = 1; i <= n; ++i)
            for (int j = 1; j <= n; ++j) {
                if (dense[at(i)][at(j)] == 0.0 || (symmetric && j > i)) continue;
                matrix.add(i, j, dense[at(i)][at(j)]);
            }
    }
};

void setRhs(lcnSparseMat& matrix, const std::vector<double>& b)
{
    for (int i = 1; i < static_cast<int>(b.size()); ++i)
        matrix.rightHandSide(i) = b[at(i)];
}

void expectSolution(lcnSparseMat& matrix, const std::vector<double>& x)
{
    for (int i = 1; i < static_cast<int>(x.size()); ++i)
        EXPECT_NEAR(matrix.rightHandSide(i), x[at(i)], 1e-12 * (1.0 + std::fabs(x[at(i)]))) << i;
}

/// Matrix of order n without couplings.
lcnSparseMat diagonalMatrix(const std::vector<double>& diagonal, bool symmetric)
{
    lcnSparseMat matrix;
    matrix.setUp(makeGraph(static_cast<int>(diagonal.size()), {}), symmetric);
    for (std::size_t i = 0; i < diagonal.size(); ++i)
        matrix.add(static_cast<int>(i) + 1, static_cast<int>(i) + 1, diagonal[i]);
    return matrix;
}

/// 2 x 2 matrix ((a, b), (b, d)).
lcnSparseMat twoByTwo(double a, double b, double d, bool symmetric)
{
    lcnSparseMat matrix;
    matrix.setUp(makeGraph(2, {{1, 2}}), symmetric);
    matrix.add(1, 1, a);
    matrix.add(2, 2, d);
    matrix.add(1, 2, b);
    if (!symmetric) matrix.add(2, 1, b);
    return matrix;
}

}  // namespace

TEST(SparseMat, pointers_are_running_sums_of_the_column_heights)
{
    std::mt19937 random(11);
    for (int round = 0; round < 50; ++round) {
        const int n = 2 + static_cast<int>(random() % 30);
        const Edges edges = randomEdges(n, 2 * n, random);
        lcnSparseMat matrix;
        matrix.setUp(makeGraph(n, edges), true);
        std::vector<int> first(at(n) + 1);
        for (int k = 1; k <= n; ++k)
            first[at(k)] = k;
        for (const auto& [i, j] : edges) {
            const int hi = std::max(matrix.position[i], matrix.position[j]);
            first[at(hi)] = std::min(first[at(hi)], std::min(matrix.position[i], matrix.position[j]));
        }
        EXPECT_EQ(matrix.pointer[0], 1);
        for (int k = 1; k <= n; ++k)
            EXPECT_EQ(matrix.pointer[k] - matrix.pointer[k - 1], k - first[at(k)]);
        EXPECT_EQ(matrix.envelopeSize(), matrix.pointer[n] - 1);
        EXPECT_EQ(matrix.order(), n);
    }
}

TEST(SparseMat, permutation_and_position_are_inverse_to_each_other)
{
    std::mt19937 random(12);
    lcnSparseMat matrix;
    matrix.setUp(makeGraph(25, randomEdges(25, 60, random)), true);
    for (int p = 1; p <= 25; ++p)
        EXPECT_EQ(matrix.position[matrix.permutation[p]], p);
}

TEST(SparseMat, the_slot_of_a_pair_is_the_same_from_either_side)
{
    std::mt19937 random(13);
    const Edges edges = randomEdges(20, 40, random);
    lcnSparseMat matrix;
    matrix.setUp(makeGraph(20, edges), true);
    for (const auto& [i, j] : edges) {
        const int slot = matrix.slot(i, j);
        const int hi = std::max(matrix.position[i], matrix.position[j]);
        const int lo = std::min(matrix.position[i], matrix.position[j]);
        EXPECT_EQ(slot, matrix.pointer[hi] - hi + lo);
        EXPECT_EQ(matrix.slot(j, i), slot);
    }
    EXPECT_EQ(matrix.status(), lcnSparseMat::kOk);
}

TEST(SparseMat, adding_to_a_pair_twice_adds_up)
{
    lcnSparseMat matrix;
    matrix.setUp(makeGraph(2, {{1, 2}}), true);
    matrix.add(1, 2, 1.5);
    matrix.add(2, 1, 2.0);
    EXPECT_EQ(matrix.lower[matrix.slot(1, 2)], 3.5);
}

TEST(SparseMat, an_unsymmetric_matrix_keeps_the_two_entries_of_a_pair_apart)
{
    lcnSparseMat matrix;
    matrix.setUp(makeGraph(2, {{1, 2}}), false);
    matrix.add(1, 2, 1.5);
    matrix.add(2, 1, 2.0);
    const int slot = matrix.slot(1, 2);
    const bool firstIsAbove = matrix.position[2] > matrix.position[1];
    EXPECT_EQ(matrix.upper[slot], firstIsAbove ? 1.5 : 2.0);
    EXPECT_EQ(matrix.lower[slot], firstIsAbove ? 2.0 : 1.5);
}

TEST(SparseMat, symmetric_positive_definite_systems_agree_with_a_dense_solution)
{
    std::mt19937 random(14);
    for (int round = 0; round < 200; ++round) {
        const RandomSystem system(random, true);
        lcnSparseMat matrix;
        matrix.setUp(system.graph, true);
        system.fill(matrix, true);
        setRhs(matrix, system.rhs);
        ASSERT_EQ(matrix.solve(), lcnSparseMat::kOk);
        expectSolution(matrix, denseSolve(system.dense, system.rhs));
    }
}

TEST(SparseMat, unsymmetric_systems_of_symmetric_structure_agree_with_a_dense_solution)
{
    std::mt19937 random(15);
    for (int round = 0; round < 200; ++round) {
        const RandomSystem system(random, false);
        lcnSparseMat matrix;
        matrix.setUp(system.graph, false);
        system.fill(matrix, false);
        setRhs(matrix, system.rhs);
        ASSERT_EQ(matrix.solve(), lcnSparseMat::kOk);
        expectSolution(matrix, denseSolve(system.dense, system.rhs));
    }
}

TEST(SparseMat, long_columns_agree_too)
{
    // columns longer than the four entries that are multiplied at a time, with every remainder
    std::mt19937 random(16);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int n = 2; n <= 14; ++n)
        for (const bool symmetric : {true, false}) {
            Edges edges;
            for (int i = 1; i <= n; ++i)
                for (int j = 1; j < i; ++j)
                    edges.push_back({i, j});
            Dense dense = denseZero(n);
            lcnSparseMat matrix;
            matrix.setUp(makeGraph(n, edges), symmetric);
            for (const auto& [i, j] : edges) {
                dense[at(i)][at(j)] = dense[at(j)][at(i)] = value(random);
                if (!symmetric) dense[at(j)][at(i)] = value(random);
                matrix.add(i, j, dense[at(i)][at(j)]);
                if (!symmetric) matrix.add(j, i, dense[at(j)][at(i)]);
            }
            std::vector<double> b(at(n) + 1, 0.0);
            for (int i = 1; i <= n; ++i) {
                dense[at(i)][at(i)] = 2.0 * n;
                matrix.add(i, i, 2.0 * n);
                b[at(i)] = value(random);
            }
            setRhs(matrix, b);
            ASSERT_EQ(matrix.solve(), lcnSparseMat::kOk);
            expectSolution(matrix, denseSolve(dense, b));
        }
}

TEST(SparseMat, it_factorises_once_and_solves_for_any_number_of_right_hand_sides)
{
    std::mt19937 random(17);
    for (const bool symmetric : {true, false}) {
        const RandomSystem system(random, symmetric);
        lcnSparseMat matrix;
        matrix.setUp(system.graph, symmetric);
        system.fill(matrix, symmetric);
        ASSERT_EQ(matrix.factorise(), lcnSparseMat::kOk);
        const double pivot = matrix.diagonal[system.n];
        ASSERT_EQ(matrix.factorise(), lcnSparseMat::kOk);
        EXPECT_EQ(matrix.diagonal[system.n], pivot);
        for (int round = 0; round < 3; ++round) {
            const std::vector<double> b = system.newRhs(random);
            setRhs(matrix, b);
            ASSERT_EQ(matrix.solve(), lcnSparseMat::kOk);
            expectSolution(matrix, denseSolve(system.dense, b));
        }
    }
}

TEST(SparseMat, a_cleared_matrix_keeps_its_structure_and_takes_new_values)
{
    std::mt19937 random(18);
    const RandomSystem system(random, true);
    lcnSparseMat matrix;
    matrix.setUp(system.graph, true);
    for (int round = 0; round < 2; ++round) {
        system.fill(matrix, true);
        setRhs(matrix, system.rhs);
        ASSERT_EQ(matrix.solve(), lcnSparseMat::kOk);
        expectSolution(matrix, denseSolve(system.dense, system.rhs));
        matrix.clear();
        for (int i = 1; i <= system.n; ++i) {
            EXPECT_EQ(matrix.rightHandSide(i), 0.0);
            EXPECT_EQ(matrix.diagonal[i], 0.0);
        }
    }
}

TEST(SparseMat, solving_leaves_the_permutations_as_they_were)
{
    std::mt19937 random(19);
    for (int round = 0; round < 20; ++round) {
        const RandomSystem system(random, true);
        lcnSparseMat matrix;
        matrix.setUp(system.graph, true);
        system.fill(matrix, true);
        setRhs(matrix, system.rhs);
        matrix.solve();
        for (int p = 1; p <= system.n; ++p) {
            ASSERT_GT(matrix.permutation[p], 0);
            EXPECT_EQ(matrix.position[matrix.permutation[p]], p);
        }
    }
}

TEST(SparseMat, a_system_of_one_equation_is_a_division)
{
    for (const bool symmetric : {true, false}) {
        lcnSparseMat matrix = diagonalMatrix({4.0}, symmetric);
        matrix.rightHandSide(1) = 10.0;
        EXPECT_EQ(matrix.solve(), lcnSparseMat::kOk);
        EXPECT_NEAR(matrix.rightHandSide(1), 2.5, 1e-15);
    }
}

TEST(SparseMat, a_pivot_that_is_not_positive_is_not_positive_definite)
{
    EXPECT_EQ(diagonalMatrix({0.0}, true).factorise(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(diagonalMatrix({1.0, -1.0}, true).factorise(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(twoByTwo(4.0, -4.0, 4.0, true).factorise(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(diagonalMatrix({std::nan("")}, true).factorise(), lcnSparseMat::kNotPositiveDefinite);
}

TEST(SparseMat, a_pivot_below_3e_minus_38_of_an_unsymmetric_matrix_is_singular)
{
    EXPECT_EQ(diagonalMatrix({0.0}, false).factorise(), lcnSparseMat::kSingular);
    EXPECT_EQ(diagonalMatrix({2.9e-38}, false).factorise(), lcnSparseMat::kSingular);
    EXPECT_EQ(diagonalMatrix({3e-38}, false).factorise(), lcnSparseMat::kOk);
    EXPECT_EQ(twoByTwo(2.0, 2.0, 2.0, false).factorise(), lcnSparseMat::kSingular);
}

TEST(SparseMat, a_negative_pivot_of_an_unsymmetric_matrix_is_a_warning_and_the_solution_is_right)
{
    // ((1, 2), (2, 1)): pivots 1 and -3; solution of right-hand side (4, 5) is (2, 1)
    lcnSparseMat matrix = twoByTwo(1.0, 2.0, 1.0, false);
    matrix.rightHandSide(1) = 4.0;
    matrix.rightHandSide(2) = 5.0;
    EXPECT_EQ(matrix.solve(), lcnSparseMat::kNegativePivot);
    EXPECT_NEAR(matrix.rightHandSide(1), 2.0, 1e-14);
    EXPECT_NEAR(matrix.rightHandSide(2), 1.0, 1e-14);
    EXPECT_EQ(diagonalMatrix({-1.0}, false).factorise(), lcnSparseMat::kNegativePivot);
}

TEST(SparseMat, a_zero_pivot_after_a_negative_one_is_singular)
{
    EXPECT_EQ(diagonalMatrix({-1.0, 0.0}, false).factorise(), lcnSparseMat::kSingular);
}

TEST(SparseMat, a_failed_factorisation_leaves_the_right_hand_side_alone)
{
    lcnSparseMat matrix = twoByTwo(4.0, -4.0, 4.0, true);
    matrix.rightHandSide(1) = 3.0;
    matrix.rightHandSide(2) = 4.0;
    EXPECT_EQ(matrix.solve(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(matrix.rightHandSide(1), 3.0);
    EXPECT_EQ(matrix.rightHandSide(2), 4.0);
}

TEST(SparseMat, an_entry_outside_the_envelope_sets_status_5_and_nothing_else)
{
    for (const bool symmetric : {true, false}) {
        lcnSparseMat matrix;
        matrix.setUp(makeGraph(3, path(3)), symmetric);
        for (int i = 1; i <= 3; ++i)
            matrix.add(i, i, 1.0);
        matrix.add(1, 3, 9.0);
        EXPECT_EQ(matrix.status(), lcnSparseMat::kOutsideEnvelope);
        EXPECT_EQ(matrix.slot(3, 1), 0);
        for (int at = 1; at <= matrix.envelopeSize(); ++at)
            EXPECT_EQ(matrix.lower[at], 0.0);
        EXPECT_EQ(matrix.factorise(), lcnSparseMat::kOutsideEnvelope);
        EXPECT_EQ(matrix.solve(), lcnSparseMat::kOutsideEnvelope);
    }
}

TEST(SparseMat, a_matrix_that_was_not_set_up_has_empty_storage)
{
    lcnSparseMat matrix;
    EXPECT_EQ(matrix.order(), 0);
    EXPECT_EQ(matrix.envelopeSize(), 0);
    matrix.add(1, 2, 1.0);
    EXPECT_EQ(matrix.status(), lcnSparseMat::kEmptyStorage);
    EXPECT_EQ(matrix.solve(), lcnSparseMat::kEmptyStorage);

    lcnSparseMat other;
    other.add(1, 1, 1.0);
    EXPECT_EQ(other.factorise(), lcnSparseMat::kEmptyStorage);
    lcnSparseMat third;
    EXPECT_EQ(third.slot(1, 2), 0);
    EXPECT_EQ(third.status(), lcnSparseMat::kEmptyStorage);
}

TEST(SparseMat, clearing_forgets_a_status)
{
    lcnSparseMat matrix = diagonalMatrix({0.0}, true);
    matrix.factorise();
    matrix.clear();
    EXPECT_EQ(matrix.status(), lcnSparseMat::kOk);
    matrix.add(1, 1, 2.0);
    matrix.rightHandSide(1) = 4.0;
    EXPECT_EQ(matrix.solve(), lcnSparseMat::kOk);
    EXPECT_NEAR(matrix.rightHandSide(1), 2.0, 1e-15);
}

TEST(SparseMat, only_a_symmetric_matrix_does_without_its_upper_triangle)
{
    lcnSparseMat symmetric;
    symmetric.setUp(makeGraph(3, path(3)), true);
    EXPECT_TRUE(symmetric.isSymmetric());
    EXPECT_TRUE(symmetric.upper.isEmpty());
    lcnSparseMat general;
    general.setUp(makeGraph(3, path(3)), false);
    EXPECT_FALSE(general.isSymmetric());
    EXPECT_EQ(general.upper.size(), general.lower.size());
}
