// allocation_failure_test.cpp: a solve for which there is not enough memory.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "circuits.h"
#include "counted_allocations.h"
#include "support/networks.h"

using namespace AnalysisTest;
using support::Built;

namespace
{

/// 400 nodes, valves among the pipes: all of the solver's paths are taken.
support::Description network()
{
    support::Description d = support::grid(20, 20, 3.0);
    for (std::size_t e = 5; e < 700; e += 50) {
        d.elements[e].type = TAVELL_KV_VALVE;
        d.elements[e].properties.push_back({TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 100.0});
    }
    return d;
}

/// Fails the allocations of one solve as told; whether the host got std::bad_alloc.
bool runsOutOfMemory(const Built& built, bool energy, std::size_t failAfter, std::size_t failFromSize)
{
    allocations().failAfter = failAfter;
    allocations().failFromSize = failFromSize;
    bool isOut = false;
    try {
        built.circuit().Solve(energy, nullptr);
    } catch (const std::bad_alloc&) {
        isOut = true;
    }
    allocations().failAfter = allocations().failFromSize = 0;
    return isOut;
}

}  // namespace

TEST(AllocationFailure, any_allocation_of_a_solve_may_fail)
{
    const PlainEnvironment environment;
    const support::Description description = network();
    const Built reference(description);
    ASSERT_TRUE(reference.solve());
    const std::vector<double> pressures = reference.results(TAVELL_RESULT_PRESSURE);
    const std::vector<double> flows = reference.results(TAVELL_RESULT_MASS_FLOW);

    const Built built(description);
    Circuit& circuit = static_cast<Circuit&>(built.circuit());
    const std::string stored = dump(circuit);
    ASSERT_TRUE(runsOutOfMemory(built, false, 1, 0));
    const std::size_t live = allocations().live;

    std::size_t failures = 0;
    for (std::size_t k = 1; runsOutOfMemory(built, false, k, 0); k += 1 + k / 50) {
        ++failures;
        ASSERT_EQ(allocations().live, live) << "allocation " << k;
        ASSERT_EQ(circuit.GetFeedback()->GetSize(), 0U) << "allocation " << k;
    }
    EXPECT_GT(failures, 100U);
    // the last one had enough
    EXPECT_EQ(built.results(TAVELL_RESULT_PRESSURE), pressures);
    EXPECT_EQ(built.results(TAVELL_RESULT_MASS_FLOW), flows);
    EXPECT_EQ(dump(circuit), stored);
}

TEST(AllocationFailure, any_allocation_of_a_solve_with_temperatures_may_fail)
{
    const PlainEnvironment environment;
    const Built built(network());
    ASSERT_TRUE(runsOutOfMemory(built, true, 1, 0));
    const std::size_t live = allocations().live;
    for (std::size_t k = 1; runsOutOfMemory(built, true, k, 0); k += 1 + k / 10)
        ASSERT_EQ(allocations().live, live) << "allocation " << k;
    EXPECT_FALSE(built.results(TAVELL_RESULT_NODE_TEMPERATURE).empty());
}

TEST(AllocationFailure, matrix_that_does_not_fit_ends_the_solve_and_a_later_one_succeeds)
{
    const PlainEnvironment environment;
    const Built built(network());
    Circuit& circuit = static_cast<Circuit&>(built.circuit());
    const std::string stored = dump(circuit);
    allocations().largest = 0;
    ASSERT_TRUE(built.solve());
    const std::vector<double> pressures = built.results(TAVELL_RESULT_PRESSURE);
    const std::size_t largest = allocations().largest;
    // of everything from a tenth of the largest block on
    for (std::size_t size = largest; size > largest / 10; size -= size / 8) {
        EXPECT_TRUE(runsOutOfMemory(built, false, 0, size)) << size;
        EXPECT_EQ(dump(circuit), stored);
    }
    EXPECT_TRUE(built.solve());
    EXPECT_EQ(built.results(TAVELL_RESULT_PRESSURE), pressures);
}

TEST(AllocationFailure, results_of_the_solve_before_are_not_taken_for_those_of_one_that_failed)
{
    const PlainEnvironment environment;
    const Built built(network());
    ASSERT_TRUE(built.solve());
    const std::vector<double> before = built.results(TAVELL_RESULT_PRESSURE);
    for (std::size_t k = 1; runsOutOfMemory(built, false, k, 0); k += 1 + k / 5) {
        const std::vector<double> after = built.results(TAVELL_RESULT_PRESSURE);
        // untouched when nothing was begun, else gone
        EXPECT_TRUE(after.empty() || after == before);
        built.solve();
    }
}
