// pressure_solve_test.cpp: corrections from given equations, and what is reported when there are none.
#include "lcn/pressure_solve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "lcn/errors.h"
#include "unit/support/solver_network.h"

using lcn::NodeEquations;
using lcn::PressureSystem;
using SolverTest::SolverNetwork;

namespace
{

/// Fixed node 1, then free nodes 2 and 3 in a row, all joined by elements 1 and 2.
struct TwoFree : SolverNetwork {
    TwoFree() : SolverNetwork(3)
    {
        add(lcn::kPipe, 1, 2);
        add(lcn::kPipe, 2, 3);
        connect();
        fixPressure(1, 1e5);
        equations.size(var);
        equations.diag[1] = 1.0;
        system.prepare(nodes, elements, var);
        corrections.assign(4, 77.0);
    }

    void set(double diag2, double diag3, double coef, double rhs2, double rhs3)
    {
        equations.diag[2] = diag2;
        equations.diag[3] = diag3;
        equations.coef[2] = coef;
        equations.rhs[2] = rhs2;
        equations.rhs[3] = rhs3;
    }

    int solve() { return system.solvePressures(var, equations, corrections); }

    NodeEquations equations;
    PressureSystem system;
    std::vector<double> corrections;
};

}  // namespace

TEST(PressureSolve, one_free_node_gets_its_balance_over_its_conductance)
{
    SolverNetwork network(2);
    network.add(lcn::kPipe, 1, 2);
    network.connect();
    network.fixPressure(1, 1e5);
    NodeEquations equations;
    equations.size(network.var);
    equations.diag = {0.0, 1.0, 4.0};
    equations.rhs = {0.0, 0.0, 10.0};
    equations.coef[1] = 4.0;
    PressureSystem system;
    system.prepare(network.nodes, network.elements, network.var);
    std::vector<double> corrections(3, 5.0);
    EXPECT_EQ(system.solvePressures(network.var, equations, corrections), 0);
    EXPECT_EQ(corrections, (std::vector<double>{0.0, 0.0, 2.5}));
    EXPECT_TRUE(network.var.Messages.empty());
    EXPECT_TRUE(system.matrix().isSymmetric());
}

TEST(PressureSolve, two_free_nodes_are_coupled_by_their_element)
{
    TwoFree network;
    // ((3, -1), (-1, 1)) x = (1, 2): x = (1.5, 3.5)
    network.set(3.0, 1.0, 1.0, 1.0, 2.0);
    EXPECT_EQ(network.solve(), 0);
    EXPECT_EQ(network.corrections[1], 0.0);
    EXPECT_NEAR(network.corrections[2], 1.5, 1e-14);
    EXPECT_NEAR(network.corrections[3], 3.5, 1e-14);
}

TEST(PressureSolve, parallel_elements_add_to_one_entry)
{
    TwoFree network;
    network.add(lcn::kPipe, 3, 2);
    network.connect();
    network.equations.size(network.var);
    network.system.prepare(network.nodes, network.elements, network.var);
    // coefficients 1 and 2: ((5, -3), (-3, 3)) x = (1, 2): x = (1.5, 13/6)
    network.set(5.0, 3.0, 1.0, 1.0, 2.0);
    network.equations.coef[3] = 2.0;
    EXPECT_EQ(network.solve(), 0);
    EXPECT_NEAR(network.corrections[2], 1.5, 1e-14);
    EXPECT_NEAR(network.corrections[3], 13.0 / 6.0, 1e-14);
}

TEST(PressureSolve, a_loop_from_a_node_to_itself_is_no_entry)
{
    TwoFree network;
    network.add(lcn::kPipe, 2, 2);
    network.connect();
    network.equations.size(network.var);
    network.system.prepare(network.nodes, network.elements, network.var);
    network.set(3.0, 1.0, 1.0, 1.0, 2.0);
    network.equations.coef[3] = 50.0;
    EXPECT_EQ(network.solve(), 0);
    EXPECT_NEAR(network.corrections[2], 1.5, 1e-14);
}

TEST(PressureSolve, a_matrix_that_is_not_positive_definite_gives_one_common_correction)
{
    TwoFree network;
    // ((1, -2), (-2, 2)): sum of balances 8, sum of (diagonal - coupling) = (1 - 2) + (2 - 2) = -1
    network.set(1.0, 2.0, 2.0, 3.0, 5.0);
    EXPECT_EQ(network.solve(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(network.corrections, (std::vector<double>{0.0, 0.0, -8.0, -8.0}));
    ASSERT_EQ(network.var.Messages.size(), 1U);
    EXPECT_EQ(network.var.Messages[0].id, 701200U);
    EXPECT_EQ(network.var.Messages[0].parameters, std::vector<double>{2.0});
}

TEST(PressureSolve, the_common_correction_is_zero_without_a_conductance_to_fixed_nodes)
{
    TwoFree network;
    network.set(4.0, 4.0, 4.0, 3.0, 5.0);
    EXPECT_EQ(network.solve(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(network.corrections, (std::vector<double>(4, 0.0)));
}

TEST(PressureSolve, a_reason_is_recorded_once_per_solve)
{
    TwoFree network;
    network.set(1.0, 2.0, 2.0, 3.0, 5.0);
    for (int i = 0; i < 3; ++i)
        network.solve();
    network.system.prepare(network.nodes, network.elements, network.var);
    network.solve();
    EXPECT_EQ(network.var.Messages.size(), 1U);
}

TEST(PressureSolve, after_a_failure_a_sound_matrix_is_solved_again)
{
    TwoFree network;
    network.set(1.0, 2.0, 2.0, 3.0, 5.0);
    network.solve();
    network.set(3.0, 1.0, 1.0, 1.0, 2.0);
    EXPECT_EQ(network.solve(), 0);
    EXPECT_NEAR(network.corrections[3], 3.5, 1e-14);
}

TEST(PressureSolve, numbers_that_are_none_give_no_correction_and_no_exception)
{
    TwoFree network;
    network.set(std::nan(""), 1.0, 1.0, 1.0, 2.0);
    EXPECT_EQ(network.solve(), lcnSparseMat::kNotPositiveDefinite);
    EXPECT_EQ(network.corrections[1], 0.0);
}

TEST(PressureSolve, a_network_without_a_free_node_raises_code_33)
{
    SolverNetwork network(2);
    network.add(lcn::kPipe, 1, 2);
    network.connect();
    network.fixPressure(1, 1e5);
    network.nodes[2].flag = lcn::kFlowBoundary;
    PressureSystem system;
    try {
        system.prepare(network.nodes, network.elements, network.var);
        FAIL();
    } catch (const lcn::FatalException& error) {
        EXPECT_STREQ(error.what(), "There are no internal nodes in the circuit definition");
    }
    ASSERT_EQ(network.var.Messages.size(), 1U);
    EXPECT_EQ(network.var.Messages[0].id, 701201U);
}

TEST(PressureSolve, preparing_again_follows_a_changed_set_of_free_nodes)
{
    TwoFree network;
    network.nodes[3].flag = lcn::kPressureBoundary;
    network.system.prepare(network.nodes, network.elements, network.var);
    EXPECT_EQ(network.system.matrix().order(), 1);
    network.set(3.0, 1.0, 1.0, 6.0, 0.0);
    EXPECT_EQ(network.solve(), 0);
    EXPECT_NEAR(network.corrections[2], 2.0, 1e-15);
    EXPECT_EQ(network.corrections[3], 0.0);
}

TEST(PressureSolve, preparing_again_follows_a_changed_set_in_networks_for_the_fast_factorisation)
{
    // a row of unit conductances from the fixed node 1; what enters at the last free node leaves through 1 or, once
    // node 30 is fixed too, 1/29 there and 28/29 through 30
    constexpr int kNodes = 30;
    SolverNetwork network(kNodes);
    for (int i = 1; i < kNodes; ++i)
        network.add(lcn::kPipe, i, i + 1);
    network.connect();
    network.fixPressure(1, 1e5);
    NodeEquations equations;
    equations.size(network.var);
    std::fill(equations.coef.begin(), equations.coef.end(), 1.0);
    std::fill(equations.diag.begin(), equations.diag.end(), 2.0);
    std::vector<double> corrections(kNodes + 1, 0.0);
    PressureSystem system;

    equations.diag[kNodes] = 1.0;
    equations.rhs[kNodes] = 1.0;
    system.prepare(network.nodes, network.elements, network.var);
    ASSERT_EQ(system.solvePressures(network.var, equations, corrections), 0);
    for (int i = 1; i <= kNodes; ++i)
        EXPECT_NEAR(corrections[static_cast<std::size_t>(i)], i - 1.0, 1e-12) << i;

    network.fixPressure(kNodes, 1e5);
    equations.rhs[kNodes] = 0.0;
    equations.rhs[kNodes - 1] = 1.0;
    system.prepare(network.nodes, network.elements, network.var);
    ASSERT_EQ(system.solvePressures(network.var, equations, corrections), 0);
    for (int i = 1; i < kNodes; ++i)
        EXPECT_NEAR(corrections[static_cast<std::size_t>(i)], (i - 1.0) / 29.0, 1e-14) << i;
    EXPECT_EQ(corrections[kNodes], 0.0);
}
