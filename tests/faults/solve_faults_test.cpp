// solve_faults_test.cpp: solves that run out of memory at any allocation, and solves that the host stops at any step.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "debug_files.h"
#include "failing_allocations.h"
#include "flat_world.h"
#include "scratch_folder.h"
#include "solve_networks.h"
#include "support/networks.h"

using namespace faults;
using support::Built;

namespace
{

constexpr std::size_t kGrowth = 20;          // steps grow by a twentieth
constexpr std::size_t kFewestFailures = 50;  // of a solve that is worth the name
constexpr std::size_t kEachFailures = 100;   // an undisturbed solve after so many
constexpr int kEachStop = 25;                // likewise after so many stopped ones

/// What a solve leaves that no one disturbed.
struct Solved {
    int answer = 0;
    std::string results, feedback;

    Solved(vcICircuit* circuit, bool energy)
        : answer(vcICircuitSolve(circuit, energy ? 1 : 0, nullptr)), results(observedResults(circuit)),
          feedback(observedFeedback(circuit))
    {
    }
};

/// The circuit solves as ever.
void expectUndisturbed(vcICircuit* circuit, bool energy, const Solved& expected, const std::string& when)
{
    const Solved again(circuit, energy);
    EXPECT_EQ(again.answer, expected.answer) << when;
    EXPECT_EQ(firstDifference(again.results, expected.results), "") << when;
    EXPECT_EQ(firstDifference(again.feedback, expected.feedback), "") << when;
}

/// Without results: dropped like those of a circuit that changed.
void expectNoResults(vcICircuit* circuit, const std::string& when)
{
    for (int key = TAVELL_RESULT_REYNOLDS; key <= TAVELL_RESULT_EXTERNAL_MASS_FLOW; ++key)
        EXPECT_EQ(vcICircuitGetResults(circuit, key), nullptr) << when;
}

/// Fails one allocation of a solve after the other. Each failure reaches the caller, leaves the model as it was, no results
/// that are those of another solve, and no block; now and then, and in the end, the solve does what it did undisturbed.
void failSolves(const SolveCase& tested)
{
    SCOPED_TRACE(tested.name);
    const Built built = tested.build();
    vcICircuit* const circuit = &built.circuit();
    const std::string model = observedModel(circuit);
    const Solved expected(circuit, tested.energy);
    const auto solve = [&] { return long{vcICircuitSolve(circuit, tested.energy ? 1 : 0, nullptr)}; };

    ASSERT_TRUE(attempt(1, Mode::kForGood, solve).isOut);
    EXPECT_EQ(firstDifference(observedResults(circuit), expected.results), "") << "nothing was begun";
    for (const Mode mode : kModes) {
        std::size_t failures = 0;
        std::size_t live = 0;
        for (std::size_t nth = 2; !testing::Test::HasFailure();
             nth = stepAfter(nth, tested.eachUpTo, kGrowth)) {
            const std::string when = "allocation " + std::to_string(nth) + ", " + nameOf(mode);
            const Attempt made = attempt(nth, mode, solve);
            if (!made.isHit) {
                EXPECT_EQ(made.answer, expected.answer);
                EXPECT_EQ(firstDifference(observedResults(circuit), expected.results), "") << when;
                break;
            }
            if (!made.isOut) continue;
            ++failures;
            const std::string results = observedResults(circuit);
            EXPECT_TRUE(results.empty() || results == expected.results) << when;
            const std::string feedback = observedFeedback(circuit);
            // of the messages those that there was memory for
            EXPECT_EQ(expected.feedback.rfind(feedback, 0), 0U) << when << ": " << feedback;
            const std::size_t now = liveBlocks();
            if (live != 0 && results.empty()) {
                EXPECT_EQ(now, live) << when;
            }
            live = results.empty() ? now : 0;
            if (failures % kEachFailures == 0) {
                EXPECT_EQ(firstDifference(observedModel(circuit), model), "") << when;
                expectUndisturbed(circuit, tested.energy, expected, when);
                live = 0;
            }
        }
        EXPECT_GT(failures, kFewestFailures);
        EXPECT_EQ(firstDifference(observedModel(circuit), model), "");
        expectUndisturbed(circuit, tested.energy, expected, "in the end");
    }
}

int stopAt = 0;
int calls = 0;

bool stopsAtOneCall()
{
    return ++calls == stopAt;
}

bool hasFeedback(vcICircuit* circuit, int id)
{
    vcIFeedbackCollection* const feedback = vcICircuitGetFeedback(circuit);
    for (int i = 0; i < static_cast<int>(vcIFeedbackCollectionGetSize(feedback)); ++i)
        if (vcIFeedbackGetId(vcIFeedbackCollectionGetFeedback(feedback, i)) == id) return true;
    return false;
}

}  // namespace

TEST(SolveFaults, any_allocation_of_a_large_solve_may_fail)
{
    failSolves(largeGrid());
}

TEST(SolveFaults, any_allocation_of_a_solve_with_temperatures_may_fail)
{
    failSolves(warmGrid());
}

TEST(SolveFaults, any_allocation_of_a_solve_with_junction_losses_may_fail)
{
    failSolves(gridWithJunctionLosses());
}

TEST(SolveFaults, any_allocation_of_a_solve_of_every_kind_of_element_may_fail)
{
    failSolves(everyKind());
}

TEST(SolveFaults, any_allocation_of_a_solve_that_ends_with_messages_may_fail)
{
    failSolves(insoluble());
}

TEST(SolveFaults, any_allocation_of_a_traced_solve_may_fail)
{
    const ScratchFolder folder;
    const DebugFiles debugFiles;
    const SilentOutput silent;
    SolveCase tested = everyKind();
    tested.name = "traced";
    failSolves(tested);
}

/// Those that were solved before memory ran out keep their results.
TEST(SolveFaults, any_allocation_of_a_solve_of_all_circuits_may_fail)
{
    const auto setUp = [](const World& world) {
        addRow(world, 0.0, 0.0);
        addRow(world, 0.0, 50.0);
    };
    const auto solve = [](const World& world) {
        vcITavellSolve(world.system(), 0, 1, nullptr);
        return 1L;
    };
    std::string models[2], results[2];
    {
        const World world;
        setUp(world);
        solve(world);
        for (const int c : {0, 1}) {
            models[c] = observedModel(world.circuit(c));
            results[c] = observedResults(world.circuit(c));
            ASSERT_NE(results[c], "");
        }
    }
    for (const Mode mode : kModes) {
        bool isHit = true;
        for (std::size_t nth = 1; isHit && !testing::Test::HasFailure(); ++nth) {
            const std::string when = "allocation " + std::to_string(nth) + ", " + nameOf(mode);
            const std::size_t live = liveBlocks();
            {
                const World world;
                setUp(world);
                const Attempt made = attempt(nth, mode, [&] { return solve(world); });
                isHit = made.isHit;
                const std::string first = observedResults(world.circuit(0));
                const std::string second = observedResults(world.circuit(1));
                EXPECT_TRUE(first == results[0] || (first.empty() && second.empty())) << when;
                EXPECT_TRUE(second == results[1] || (second.empty() && made.isHit)) << when;
                solve(world);
                for (const int c : {0, 1}) {
                    EXPECT_EQ(firstDifference(observedModel(world.circuit(c)), models[c]), "") << when;
                    EXPECT_EQ(firstDifference(observedResults(world.circuit(c)), results[c]), "") << when;
                }
            }
            EXPECT_EQ(liveBlocks(), live) << when;
        }
    }
}

TEST(SolveFaults, solve_that_is_stopped_at_any_call_leaves_a_message_no_results_and_the_circuit_as_it_was)
{
    for (const SolveCase& tested : allSolveCases()) {
        SCOPED_TRACE(tested.name);
        const Built built = tested.build();
        vcICircuit* const circuit = &built.circuit();
        const std::string model = observedModel(circuit);
        const Solved expected(circuit, tested.energy);
        calls = 0;
        stopAt = -1;
        ASSERT_EQ(vcICircuitSolve(circuit, tested.energy ? 1 : 0, stopsAtOneCall), expected.answer);
        const int all = calls;
        ASSERT_GT(all + (expected.answer == 0 ? 1 : 0), 0);
        for (int k = 1; k <= all && !testing::Test::HasFailure(); k += kIsSanitized ? 1 + k / 4 : 1) {
            const std::string when = "call " + std::to_string(k) + " of " + std::to_string(all);
            calls = 0;
            stopAt = k;
            EXPECT_EQ(vcICircuitSolve(circuit, tested.energy ? 1 : 0, stopsAtOneCall), 0) << when;
            EXPECT_TRUE(hasFeedback(circuit, TAVELL_FEEDBACK_CANCELLED)) << when;
            expectNoResults(circuit, when);
            EXPECT_EQ(firstDifference(observedModel(circuit), model), "") << when;
            if (k <= 2 || k == all || k % kEachStop == 0)
                expectUndisturbed(circuit, tested.energy, expected, when);
        }
    }
}

TEST(SolveFaults, stopped_system_leaves_every_circuit_whole)
{
    const World world;
    addRow(world, 0.0, 0.0);
    addRow(world, 0.0, 50.0);
    vcITavellSolve(world.system(), 0, 1, nullptr);
    const std::string first = observedResults(world.circuit(0));
    const std::string second = observedResults(world.circuit(1));
    calls = 0;
    stopAt = -1;
    vcITavellSolve(world.system(), 0, 0, stopsAtOneCall);
    const int all = calls;
    ASSERT_GE(all, 2);
    for (int k = 1; k <= all; ++k) {
        calls = 0;
        stopAt = k;
        vcITavellSolve(world.system(), 0, 0, stopsAtOneCall);
        // one was stopped, the other one was not
        const bool firstIsThere = observedResults(world.circuit(0)) == first;
        const bool secondIsThere = observedResults(world.circuit(1)) == second;
        EXPECT_NE(firstIsThere, secondIsThere) << k;
        const int stopped = firstIsThere ? 1 : 0;
        EXPECT_TRUE(hasFeedback(world.circuit(stopped), TAVELL_FEEDBACK_CANCELLED)) << k;
        EXPECT_EQ(observedResults(world.circuit(stopped)), "") << k;
    }
    vcITavellSolve(world.system(), 0, 0, nullptr);
    EXPECT_EQ(observedResults(world.circuit(0)), first);
    EXPECT_EQ(observedResults(world.circuit(1)), second);
}
