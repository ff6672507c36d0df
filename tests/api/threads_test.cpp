// threads_test.cpp: what ITavell.h promises to hosts with several threads, sentence by sentence; run under
// the thread sanitizer too.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <functional>
#include <iterator>
#include <locale>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "golden/scratch_directory.h"
#include "host.h"
#include "support/on_threads.h"

using Host::Answer;
using support::Built;
using support::onThreads;
using support::processors;
using Velcor::Tavell::ICircuit;
using Velcor::Tavell::ITavell;

namespace
{

constexpr int kSystems = 200;

/// The answers of the networks 0 to count - 1, each network on whichever thread is free.
std::vector<Answer> answersOnAllProcessors(int count)
{
    std::vector<Answer> answers(static_cast<std::size_t>(count));
    std::atomic<int> next{0};
    onThreads(processors(), [&](int) {
        for (int number = next++; number < count; number = next++)
            answers[static_cast<std::size_t>(number)] = Host::answerOf(number);
    });
    return answers;
}

std::vector<Answer> answersOnOneThread(int count)
{
    std::vector<Answer> answers;
    answers.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number)
        answers.push_back(Host::answerOf(number));
    return answers;
}

void expectSame(const std::vector<Answer>& answers, const std::vector<Answer>& alone)
{
    ASSERT_EQ(answers.size(), alone.size());
    for (std::size_t i = 0; i < alone.size(); ++i)
        EXPECT_TRUE(answers[i] == alone[i]) << "network " << i;
}

/// A system on its way from one thread to the next.
struct Parcel {
    int number = 0;
    std::unique_ptr<Built> built;
    bool isSolved = false;
};

/// Hands parcels from threads to threads.
class Belt
{
public:
    void put(Parcel parcel)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_parcels.push_back(std::move(parcel));
        m_changed.notify_one();
    }
    /// Waits for the next parcel; false when count of them have been taken.
    bool take(Parcel& parcel, int count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_taken == count) return false;
        ++m_taken;
        m_changed.wait(lock, [this] { return !m_parcels.empty(); });
        parcel = std::move(m_parcels.front());
        m_parcels.pop_front();
        return true;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Parcel> m_parcels;
    int m_taken = 0;
};

/// Of the solve that runs on this thread.
thread_local bool isSolving = false;
thread_local int callsOfCancel = 0;
thread_local int callToStopAt = 0;
std::atomic<int> callsOnOtherThreads{0};

bool stopAtTheCallOfThisThread()
{
    if (!isSolving) ++callsOnOtherThreads;
    return ++callsOfCancel == callToStopAt;
}

#if defined(__linux__)
int threadsOfTheProcess()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<int>(std::distance(begin(tasks), end(tasks)));
}

int mostThreadsInCancel = 0;
bool countThreads()
{
    mostThreadsInCancel = std::max(mostThreadsInCancel, threadsOfTheProcess());
    return false;
}
#endif

/// An environment variable for as long as the object lives; made and destroyed while no other thread runs.
class Variable
{
public:
    Variable(const char* name, const char* value) : m_name(name) { setenv(name, value, 1); }
    ~Variable() { unsetenv(m_name); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
};

struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

}  // namespace

TEST(Threads, systems_are_made_used_and_released_on_all_threads_at_once_with_the_answers_of_one_thread)
{
    // all threads first, so that whatever the library prepares at its first use is prepared among them
    const std::vector<Answer> answers = answersOnAllProcessors(kSystems);
    const std::vector<Answer> alone = answersOnOneThread(kSystems);
    expectSame(answers, alone);

    const auto solved = std::count_if(alone.begin(), alone.end(), [](const Answer& a) { return a.isSolved; });
    EXPECT_GE(solved, kSystems * 9 / 10);
}

TEST(Threads, systems_are_merged_validated_and_released_on_all_threads_at_once)
{
    // three circuits in a row that share the locations at which they meet
    const auto nodesAfterMerge = [] {
        ITavell* const system = Velcor::Tavell::CreateTavell(false);
        for (int c = 0; c < 3; ++c) {
            ICircuit* const circuit = system->CreateCircuit();
            for (int i = 0; i < 4; ++i) {
                circuit->CreateNode()->SetLocation(3.0 * c + i, 1.0, 2.0);
                if (i > 0)
                    circuit->CreateElement(circuit->GetNode(static_cast<std::size_t>(i) - 1),
                                           circuit->GetNode(static_cast<std::size_t>(i)), 0.1, 0.008, 0.0,
                                           TAVELL_ENERGY_FLUX, 0.0);
            }
        }
        system->MergeCircuits();
        system->ValidateCircuits();
        const std::size_t circuits = system->GetNoCircuits();
        const std::size_t elements = system->GetCircuit(0)->GetNoElements();
        system->Release();
        return std::pair(circuits, elements);
    };
    std::vector<std::pair<std::size_t, std::size_t>> counts(static_cast<std::size_t>(processors()) * 4);
    onThreads(static_cast<int>(counts.size()),
              [&](int thread) { counts[static_cast<std::size_t>(thread)] = nodesAfterMerge(); });
    for (const auto& count : counts)
        EXPECT_EQ(count, std::pair(std::size_t{1}, std::size_t{9}));
}

TEST(Threads, a_system_is_built_on_one_thread_solved_on_a_second_and_read_and_released_on_a_third)
{
    Belt built;
    Belt solved;
    std::vector<Answer> answers(kSystems);
    std::atomic<int> next{0};
    onThreads(3 * processors(), [&](int thread) {
        Parcel parcel;
        if (thread % 3 == 0) {
            for (int number = next++; number < kSystems; number = next++) {
                auto network = std::make_unique<Built>(Host::network(number));
                Host::touchByName(*network);
                network->circuit().Validate();
                built.put({number, std::move(network), false});
            }
        } else if (thread % 3 == 1) {
            while (built.take(parcel, kSystems)) {
                parcel.isSolved = Host::solve(*parcel.built, parcel.number);
                solved.put(std::move(parcel));
            }
        } else {
            while (solved.take(parcel, kSystems)) {
                answers[static_cast<std::size_t>(parcel.number)] =
                    Host::read(parcel.built->circuit(), parcel.isSolved);
                parcel.built.reset();
            }
        }
    });
    expectSame(answers, answersOnOneThread(kSystems));
}

TEST(Threads, values_and_texts_that_were_handed_out_are_read_by_several_threads_at_once)
{
    const Built built(Host::network(24));
    ASSERT_TRUE(built.solve());
    Velcor::Tavell::IResultsSet* const pressures = built.circuit().GetResults(TAVELL_RESULT_PRESSURE);
    const std::vector<double> expected = built.results(TAVELL_RESULT_PRESSURE);
    const int* const ids = pressures->GetIds();
    const double* const values = pressures->GetValues();
    const char* const exported = built.circuit().ExportResults();
    const std::string text = exported;
    std::atomic<int> same{0};
    onThreads(4, [&](int) {
        bool isSame = text == exported;
        for (std::size_t i = 0; i < expected.size(); ++i)
            isSame = isSame && values[i] == expected[i] && ids[i] == static_cast<int>(i) + 1;
        if (isSame) ++same;
    });
    EXPECT_EQ(same, 4);
}

TEST(Threads, cancel_is_called_on_the_thread_of_its_solve_and_stops_no_other_solve)
{
    constexpr int kThreads = 6;
    constexpr int kNever = 1000000;
    callsOnOtherThreads = 0;
    std::vector<int> calls(kThreads);
    std::vector<char> isSolved(kThreads);
    std::vector<char> isStopped(kThreads);
    onThreads(kThreads, [&](int thread) {
        const Built built(Host::network(24));
        callsOfCancel = 0;
        callToStopAt = thread % 2 == 0 ? kNever : thread + 1;
        isSolving = true;
        isSolved[static_cast<std::size_t>(thread)] =
            built.circuit().Solve(false, stopAtTheCallOfThisThread) ? 1 : 0;
        isSolving = false;
        calls[static_cast<std::size_t>(thread)] = callsOfCancel;
        const std::vector<int> ids = built.feedbackIds();
        isStopped[static_cast<std::size_t>(thread)] =
            std::count(ids.begin(), ids.end(), TAVELL_FEEDBACK_CANCELLED) > 0 ? 1 : 0;
    });
    EXPECT_EQ(callsOnOtherThreads, 0);
    for (int thread = 0; thread < kThreads; ++thread) {
        SCOPED_TRACE(thread);
        const auto t = static_cast<std::size_t>(thread);
        const bool isAsked = thread % 2 != 0;
        EXPECT_EQ(isSolved[t] != 0, !isAsked);
        EXPECT_EQ(isStopped[t] != 0, isAsked);
        EXPECT_GT(calls[t], thread);
        if (isAsked) {
            EXPECT_EQ(calls[t], thread + 1);
        }
    }
}

#if defined(__linux__)
TEST(Threads, a_solve_starts_none)
{
    const Built built(Host::network(24));
    const int before = threadsOfTheProcess();
    ASSERT_GT(before, 0);
    mostThreadsInCancel = 0;
    ASSERT_TRUE(built.circuit().Solve(true, countThreads));
    EXPECT_EQ(mostThreadsInCancel, before);
}
#endif

TEST(Threads, environment_variables_changed_while_no_thread_is_in_the_library_hold_for_the_calls_after_that)
{
    // two pipes: enough to be solved, too few for the detailed check
    support::Description description;
    description.nodes.resize(3);
    description.nodes[0] = {{0.0, 0.0, 0.0}, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 2e5};
    description.nodes[1].at = {10.0, 0.0, 0.0};
    description.nodes[2] = {{20.0, 0.0, 0.0}, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 1e5};
    description.elements.resize(2);
    description.elements[0].end = 1;
    description.elements[1].start = 1;
    description.elements[1].end = 2;
    const Built first(description);
    const Built second(description);
    const auto solvedOfTwo = [&] {
        std::atomic<int> solved{0};
        onThreads(2, [&](int thread) {
            const Built& built = thread == 0 ? first : second;
            // a change drops the results: a circuit that has some counts as valid
            built.circuit().SetGravity(0.0, 0.0, 0.0);
            built.circuit().SetGravity(0.0, 0.0, -1.0);
            if (built.solve()) ++solved;
        });
        return solved.load();
    };
    EXPECT_EQ(solvedOfTwo(), 2);
    {
        const Variable detailed("TAVELL_DETAIL_CHECK", "1");
        EXPECT_EQ(solvedOfTwo(), 0);
    }
    EXPECT_EQ(solvedOfTwo(), 2);
}

TEST(Threads, answers_do_not_depend_on_debug_files_that_several_solves_write_at_once)
{
    const std::vector<Answer> alone = answersOnOneThread(20);
    const GoldenTest::ScratchDirectory scratch;
    const Variable debug("TAVELL_DEBUG_FILE", "1");
    testing::internal::CaptureStdout();  // the trace of the iterations
    const std::vector<Answer> answers = answersOnAllProcessors(20);
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
    expectSame(answers, alone);
    EXPECT_EQ(scratch.names().count("Results_c.dat"), 1u);
}

TEST(Threads, a_locale_that_another_thread_sets_meanwhile_changes_no_answer)
{
    const std::vector<Answer> alone = answersOnOneThread(40);
    const std::locale before;
    const std::string cBefore = std::setlocale(LC_ALL, nullptr);
    const std::locale comma(before, new DecimalComma);
    std::atomic<bool> isDone{false};
    std::thread changer([&] {
        while (!isDone) {
            std::locale::global(comma);
            std::setlocale(LC_NUMERIC, "de_DE.UTF-8");  // where it is installed
            std::locale::global(before);
            std::setlocale(LC_NUMERIC, "C");
            std::this_thread::yield();
        }
    });
    const std::vector<Answer> answers = answersOnAllProcessors(40);
    isDone = true;
    changer.join();
    std::locale::global(before);
    std::setlocale(LC_ALL, cBefore.c_str());
    expectSame(answers, alone);
}
