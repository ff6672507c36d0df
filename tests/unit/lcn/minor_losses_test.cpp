// minor_losses_test.cpp: modes and relaxation of the minor loss coefficients. The elements here stand apart, so that no
// junction adds a loss.
#include "lcn/minor_losses.h"

#include <gtest/gtest.h>

#include <cmath>

#include "unit/support/solver_network.h"

using lcn::MinorLosses;
using SolverTest::SolverNetwork;

namespace
{

/// Two separate pipes with specified K 3 and 0.
struct Pipes : SolverNetwork {
    explicit Pipes(int mode) : SolverNetwork(4)
    {
        add(lcn::kPipe, 1, 2);
        add(lcn::kPipe, 3, 4);
        connect();
        for (int i = 1; i <= 4; ++i)
            nodes[i].flag = lcn::kFlowBoundary;
        elem(1).k = elem(1).kSpecified = 3.0;
        var.Minor = mode;
    }

    void start() { losses.start(elements, var); }
    bool update() { return losses.update(nodes, elements, var); }

    MinorLosses losses;
};

}  // namespace

TEST(MinorLosses, mode_0_is_the_specified_coefficient)
{
    Pipes pipes(0);
    pipes.elem(2).k = 9.0;
    pipes.start();
    EXPECT_EQ(pipes.elem(1).k, 3.0);
    EXPECT_EQ(pipes.elem(2).k, 0.0);
    EXPECT_TRUE(pipes.update());
    EXPECT_EQ(pipes.elem(1).k, 3.0);
    EXPECT_EQ(pipes.losses.error(), 0.0);
    EXPECT_EQ(pipes.losses.updates(), 1);
}

TEST(MinorLosses, mode_1_is_the_specified_coefficient_where_there_is_one)
{
    Pipes pipes(1);
    pipes.elem(2).kSpecified = 3e-38;  // counts as none
    pipes.start();
    EXPECT_EQ(pipes.elem(1).k, 3.0);
    EXPECT_EQ(pipes.elem(2).k, 0.0);
    EXPECT_TRUE(pipes.update());
    EXPECT_EQ(pipes.elem(1).k, 3.0);
}

TEST(MinorLosses, mode_2_and_others_ignore_the_specified_coefficient)
{
    for (const int mode : {2, 3, 5}) {
        Pipes pipes(mode);
        pipes.start();
        EXPECT_EQ(pipes.elem(1).k, 0.0);
        EXPECT_TRUE(pipes.update());
        EXPECT_EQ(pipes.elem(1).k, 0.0);
    }
}

TEST(MinorLosses, mode_4_never_updates)
{
    Pipes pipes(4);
    pipes.start();
    EXPECT_TRUE(pipes.update());
    EXPECT_EQ(pipes.losses.updates(), 0);
    EXPECT_EQ(pipes.losses.error(), 0.0);
}

TEST(MinorLosses, mode_4_has_no_minor_losses)
{
    Pipes pipes(4);
    pipes.start();
    EXPECT_EQ(pipes.elem(1).k, 0.0);
}

TEST(MinorLosses, a_warm_solve_keeps_its_coefficients_at_the_start)
{
    Pipes pipes(2);
    pipes.var.warmStart() = 1;
    pipes.elem(1).k = 5.0;
    pipes.start();
    EXPECT_EQ(pipes.elem(1).k, 5.0);
}

TEST(MinorLosses, a_change_is_relaxed_and_the_error_is_the_relative_change_of_the_sum)
{
    Pipes pipes(0);
    pipes.elem(2).kSpecified = 1.0;
    pipes.start();
    pipes.elem(1).kSpecified = 5.0;
    EXPECT_FALSE(pipes.update());
    EXPECT_EQ(pipes.elem(1).k, 4.0);  // half way with relaxpp 0.5
    EXPECT_NEAR(pipes.losses.error(), 1.0 / 4.0, 1e-15);
    EXPECT_FALSE(pipes.update());
    EXPECT_EQ(pipes.elem(1).k, 4.5);
    EXPECT_NEAR(pipes.losses.error(), 0.5 / 5.0, 1e-15);
}

TEST(MinorLosses, a_vanishing_sum_counts_as_one)
{
    Pipes pipes(0);
    pipes.elem(1).kSpecified = 0.0;
    pipes.start();
    pipes.elem(1).kSpecified = 0.5;
    EXPECT_FALSE(pipes.update());
    EXPECT_NEAR(pipes.losses.error(), std::fabs((0.25 - 1.0) / 1.0), 1e-15);
}

TEST(MinorLosses, a_specified_coefficient_is_not_capped)
{
    Pipes pipes(0);
    pipes.elem(1).kSpecified = 500.0;
    pipes.start();
    pipes.update();
    EXPECT_EQ(pipes.elem(1).k, 500.0);
}

TEST(MinorLosses, relaxation_falls_after_300_500_and_700_updates)
{
    // weight of update n (from 1): relaxpp up to 301, 0.1 from 302, 0.05 from 502, 0 from 702
    Pipes pipes(0);
    pipes.start();
    for (int n = 1; n <= 710; ++n) {
        const double before = pipes.elem(1).k;
        const double target = n % 2 == 0 ? before + 1.0 : before - 1.0;
        pipes.elem(1).kSpecified = target;
        const double weight = n > 701 ? 0.0 : n > 501 ? 0.05 : n > 301 ? 0.1 : 0.5;
        pipes.update();
        ASSERT_NEAR(pipes.elem(1).k - before, weight * (target - before), 1e-12) << n;
    }
}
