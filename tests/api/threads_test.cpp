// threads_test.cpp: two system objects on two threads; run under the thread sanitizer too.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "flat_api.h"

namespace
{

/// Builds and solves circuits of a system object of the calling thread's own; returns every node pressure [Pa].
std::vector<double> solveRepeatedly(int times)
{
    std::vector<double> pressures;
    const System system = createSystem();
    for (int i = 0; i < times; ++i) {
        vcICircuit* const circuit = addSampleCircuit(system.get());
        // By name, so that the table of names, which all threads share, is built while others ask for it.
        flat().vcIEntitySetPropertyByName(flat().vcICircuitGetEntity(circuit), "circuit_minor_loss", 0.0);
        if (flat().vcICircuitSolve(circuit, 0, nullptr) == 0) return {};
        vcIResultsSet* const results = flat().vcICircuitGetResults(circuit, TAVELL_RESULT_PRESSURE);
        const double* const values = flat().vcIResultsSetGetValues(results);
        pressures.insert(pressures.end(), values, values + flat().vcIResultsSetGetSize(results));
    }
    return pressures;
}

}  // namespace

TEST(Threads, systems_on_different_threads_do_not_disturb_each_other)
{
    constexpr int kTimes = 20;
    flat();
    std::vector<std::vector<double>> answers(4);
    std::vector<std::thread> threads;
    threads.reserve(answers.size());
    for (std::vector<double>& answer : answers)
        threads.emplace_back([&answer] { answer = solveRepeatedly(kTimes); });
    for (std::thread& thread : threads)
        thread.join();

    const std::vector<double> alone = solveRepeatedly(kTimes);
    EXPECT_EQ(alone.size(), 4u * kTimes);
    for (const std::vector<double>& answer : answers)
        EXPECT_EQ(answer, alone);
}
