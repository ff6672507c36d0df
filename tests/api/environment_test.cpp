// environment_test.cpp: the library in hosts whose surroundings are not the usual ones: variables that
// change between calls, a working directory that is gone, closed streams, small stacks, very long texts.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "golden/scratch_directory.h"
#include "host.h"
#include "tavell/IPropertySet.h"
#include "unit/analysis/sanitized.h"

using Host::Answer;
using support::Built;
using support::Description;
using support::ElementData;

namespace
{

constexpr const char* kDetailCheck = "TAVELL_DETAIL_CHECK";
constexpr const char* kNoConnectivity = "TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY";
constexpr const char* kDebugFile = "TAVELL_DEBUG_FILE";

/// The variables as the tests left them; taken away before and after each test.
class Environment : public testing::Test
{
protected:
    Environment() { clear(); }
    ~Environment() override { clear(); }

    static void set(const char* name, const char* value) { setenv(name, value, 1); }

private:
    static void clear()
    {
        for (const char* name : {kDetailCheck, kNoConnectivity, kDebugFile})
            unsetenv(name);
    }
};

using Streams = Environment;
using SmallStack = Environment;

/// Three pipes in a row.
Description row()
{
    Description description;
    description.nodes.resize(4);
    for (int i = 0; i < 4; ++i)
        description.nodes[static_cast<std::size_t>(i)].at = {10.0 * i, 0.0, 0.0};
    description.nodes[0].type = TAVELL_NODE_INLET;
    description.nodes[0].value = 3e5;
    description.nodes[3].type = TAVELL_NODE_OUTLET;
    description.nodes[3].value = 2e5;
    for (int i = 0; i < 3; ++i) {
        ElementData pipe;
        pipe.start = i;
        pipe.end = i + 1;
        description.elements.push_back(pipe);
    }
    return description;
}

/// The same, and a pipe between two nodes of its own.
Description rowWithAPartApart()
{
    Description description = row();
    for (int i = 0; i < 2; ++i) {
        description.nodes.emplace_back();
        description.nodes.back().at = {10.0 * i, 50.0, 0.0};
    }
    ElementData pipe;
    pipe.start = 4;
    pipe.end = 5;
    description.elements.push_back(pipe);
    return description;
}

int disconnectedElements(const Built& built)
{
    int count = -1;
    built.circuit().GetDisconnectedElements(nullptr, 0, &count);
    return count;
}

Answer solved(const Built& built)
{
    return Host::read(built.circuit(), built.solve());
}

/// Runs work in a process of its own; what it returns is whether all was well there.
bool inAnotherProcess(const std::function<bool()>& work)
{
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The sanitizers put guards around every local variable.
#ifdef TAVELL_IS_SANITIZED
constexpr std::size_t kSmallStack = 524288;
#else
constexpr std::size_t kSmallStack = 65536;
#endif

/// Runs work on a thread with a small stack.
void onSmallStack(std::function<void()> work)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kSmallStack), 0);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// Pipes of 0.2 m, each from the node that parentOf gives to the next node; water enters at the first node
/// and leaves at the last one.
Description tree(int count, const std::function<int(int)>& parentOf)
{
    Description description;
    for (int i = 0; i < count; ++i) {
        support::NodeData node;
        node.at = {10.0 * i, static_cast<double>(i % 7), 0.0};
        description.nodes.push_back(node);
        if (i == 0) continue;
        ElementData pipe;
        pipe.start = parentOf(i);
        pipe.end = i;
        pipe.diameter = 0.2;
        description.elements.push_back(pipe);
    }
    description.nodes.front().type = TAVELL_NODE_INLET;
    description.nodes.front().value = 1e7;
    description.nodes.back().type = TAVELL_NODE_OUTLET;
    description.nodes.back().value = 1e5;
    return description;
}

/// Builds, checks, solves, reads and releases a network on a small stack.
void expectSolvedOnSmallStack(const Description& description)
{
    bool isSuitable = false;
    bool isSolved = false;
    std::size_t exported = 0;
    onSmallStack([&] {
        const Built built(description);
        isSuitable = built.circuit().Validate();
        isSolved = built.solve();
        exported = std::string(built.circuit().ExportResults()).size();
    });
    EXPECT_TRUE(isSuitable);
    EXPECT_TRUE(isSolved);
    EXPECT_GT(exported, description.nodes.size());
}

}  // namespace

TEST_F(Environment, the_detail_check_holds_for_the_calls_that_are_made_while_it_is_asked_for)
{
    const Built built(rowWithAPartApart());
    for (const char* off : {"", "0", "2"}) {
        SCOPED_TRACE(off);
        set(kDetailCheck, "1");
        EXPECT_EQ(built.circuit().IsValid(), TAVELL_INVALID_DISCONNECTED);
        EXPECT_FALSE(built.solve());
        set(kDetailCheck, off);
        EXPECT_EQ(built.circuit().IsValid(), TAVELL_VALID_INNER_BOUNDARY_VALUES);
        EXPECT_TRUE(built.solve());
        // a change drops the results: a circuit that has some counts as valid
        built.node(1)->SetLocation(10.0, 1.0, 0.0);
        built.node(1)->SetLocation(10.0, 0.0, 0.0);
    }
    set(kDetailCheck, "1");
    EXPECT_EQ(built.circuit().IsValid(), TAVELL_INVALID_DISCONNECTED);
    unsetenv(kDetailCheck);
    EXPECT_EQ(built.circuit().IsValid(), TAVELL_VALID_INNER_BOUNDARY_VALUES);
    EXPECT_TRUE(built.solve());
}

TEST_F(Environment, connectivity_is_looked_at_by_the_calls_that_are_made_while_it_is_not_switched_off)
{
    const Built built(rowWithAPartApart());
    set(kDetailCheck, "1");
    for (const char* value : {"", "0", "1"}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(built.circuit().IsValid(), TAVELL_INVALID_DISCONNECTED);
        EXPECT_EQ(disconnectedElements(built), 1);
        set(kNoConnectivity, value);
        EXPECT_EQ(built.circuit().IsValid(), TAVELL_VALID_INNER_BOUNDARY_VALUES);
        EXPECT_EQ(disconnectedElements(built), 0);
        unsetenv(kNoConnectivity);
    }
    EXPECT_EQ(disconnectedElements(built), 1);
}

TEST_F(Environment, debug_files_are_written_by_the_solves_that_begin_while_they_are_asked_for)
{
    const std::set<std::string> all = {"Initial_debug_file.dat", "forcedbc.dat", "network_results.dat",
                                       "Results_c.dat"};
    const Built built(row());
    const GoldenTest::ScratchDirectory scratch;
    const auto filesOfASolve = [&] {
        testing::internal::CaptureStdout();
        EXPECT_TRUE(built.solve());
        testing::internal::GetCapturedStdout();
        std::set<std::string> names = scratch.names();
        for (const std::string& name : names)
            std::filesystem::remove(name);
        return names;
    };
    EXPECT_EQ(filesOfASolve(), std::set<std::string>());
    set(kDebugFile, "1");
    EXPECT_EQ(filesOfASolve(), all);
    set(kDebugFile, "0");
    EXPECT_EQ(filesOfASolve(), std::set<std::string>());
    set(kDebugFile, "1");
    EXPECT_EQ(filesOfASolve(), all);
    unsetenv(kDebugFile);
    EXPECT_EQ(filesOfASolve(), std::set<std::string>());
}

TEST_F(Environment, a_process_without_any_variable_is_one_without_these)
{
    const Answer usual = solved(Built(row()));
    EXPECT_TRUE(inAnotherProcess([&] { return clearenv() == 0 && solved(Built(row())) == usual; }));
}

TEST_F(Environment, a_working_directory_that_was_removed_changes_no_answer)
{
    const Answer usual = solved(Built(row()));
    const auto solvedNowhere = [&] {
        const std::filesystem::path here = std::filesystem::current_path();
        const GoldenTest::ScratchDirectory scratch;
        std::filesystem::remove(std::filesystem::current_path());
        Answer answer = solved(Built(row()));
        std::filesystem::current_path(here);
        return answer;
    };
    EXPECT_TRUE(solvedNowhere() == usual);
    set(kDebugFile, "1");  // the files have nowhere to go
    testing::internal::CaptureStdout();
    const Answer answer = solvedNowhere();
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(answer == usual);
}

TEST_F(Streams, closed_ones_change_no_answer_and_nothing_is_written_to_files_that_have_their_numbers)
{
    const Answer usual = solved(Built(row()));
    const GoldenTest::ScratchDirectory scratch;
    EXPECT_TRUE(inAnotherProcess([&] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            close(stream);
        // files of the host take the numbers 0 to 2
        for (const char* name : {"zero", "one", "two"})
            if (std::fopen(name, "w") == nullptr) return false;
        return solved(Built(row())) == usual && solved(Built(row())) == usual && std::fflush(nullptr) == 0;
    }));
    for (const char* name : {"zero", "one", "two"})
        EXPECT_EQ(scratch.read(name), "") << name;
}

TEST_F(Streams, closed_ones_do_not_keep_debug_files_from_being_written)
{
    const GoldenTest::ScratchDirectory scratch;
    set(kDebugFile, "1");
    testing::internal::CaptureStdout();
    const Answer usual = solved(Built(row()));
    testing::internal::GetCapturedStdout();
    const std::string results = scratch.read("Results_c.dat");
    std::filesystem::remove("Results_c.dat");
    EXPECT_TRUE(inAnotherProcess([&] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            close(stream);
        return solved(Built(row())) == usual;
    }));
    EXPECT_EQ(scratch.read("Results_c.dat"), results);
}

TEST_F(SmallStack, a_line_of_a_hundred_thousand_nodes_is_solved)
{
    expectSolvedOnSmallStack(tree(100000, [](int i) { return i - 1; }));
}

TEST_F(SmallStack, a_tree_of_a_hundred_thousand_nodes_is_solved)
{
    expectSolvedOnSmallStack(tree(100000, [](int i) { return (i - 1) / 2; }));
}

TEST_F(SmallStack, a_star_of_a_hundred_thousand_nodes_is_solved)
{
    expectSolvedOnSmallStack(tree(100000, [](int i) { return i == 1 ? 0 : 1; }));
}

TEST_F(SmallStack, a_grid_of_ten_thousand_nodes_is_solved)
{
    expectSolvedOnSmallStack(support::grid(100, 100, 5.0));
}

TEST_F(SmallStack, connectivity_is_walked_from_end_to_end_of_a_line)
{
    set(kDetailCheck, "1");
    Description description = tree(100000, [](int i) { return i - 1; });
    description.elements.erase(description.elements.begin() + 500);
    int state = -1;
    int disconnected = -1;
    onSmallStack([&] {
        const Built built(description);
        state = built.circuit().IsValid();
        disconnected = disconnectedElements(built);
    });
    EXPECT_EQ(state, TAVELL_INVALID_DISCONNECTED);
    EXPECT_EQ(disconnected, 99999 - 501);
}

TEST_F(SmallStack, circuits_of_ten_thousand_nodes_are_merged_and_released)
{
    std::size_t circuits = 0;
    std::size_t elements = 0;
    onSmallStack([&] {
        Velcor::Tavell::ITavell* const system = Velcor::Tavell::CreateTavell(false);
        for (int c = 0; c < 10; ++c) {
            Velcor::Tavell::ICircuit* const circuit = system->CreateCircuit();
            Velcor::Tavell::INode* previous = nullptr;
            for (int i = 0; i <= 1000; ++i) {
                Velcor::Tavell::INode* const node = circuit->CreateNode();
                node->SetLocation(1000.0 * c + i, 0.25, 0.5);
                if (previous != nullptr)
                    circuit->CreateElement(previous, node, 0.1, 0.008, 0.0, TAVELL_ENERGY_FLUX, 0.0);
                previous = node;
            }
        }
        system->MergeCircuits();
        circuits = system->GetNoCircuits();
        elements = system->GetCircuit(0)->GetNoElements();
        system->Release();
    });
    EXPECT_EQ(circuits, 1u);
    EXPECT_EQ(elements, 10000u);
}

TEST_F(SmallStack, names_of_a_million_characters_are_kept_or_refused)
{
    const std::string name(1000000, 'n');
    bool isKept = false;
    bool isTaken = true;
    bool isSolved = false;
    onSmallStack([&] {
        const Built built(row());
        Velcor::Tavell::IEntity* const entity = built.node(1)->GetEntity();
        entity->SetMeta(name.c_str());
        isKept = entity->GetMeta() == name;
        isTaken = entity->SetPropertyByName(name.c_str(), 1.0) ||
                  entity->GetProperties()->SetStringPropertyByName(name.c_str(), "1");
        built.circuit().SetSolveLogFile(name.c_str());
        isSolved = built.solve();
    });
    EXPECT_TRUE(isKept);
    EXPECT_FALSE(isTaken);
    EXPECT_TRUE(isSolved);
}

TEST_F(SmallStack, a_number_of_a_million_digits_is_read)
{
    // the pressure of the inlet as text: 300000.00...0
    const std::string text = "300000." + std::string(1000000, '0');
    double value = 0.0;
    bool isSolved = false;
    onSmallStack([&] {
        const Built built(row());
        Velcor::Tavell::IEntity* const entity = built.node(0)->GetEntity();
        entity->GetWriteableProperties()->SetStringPropertyByName("node_pressure", text.c_str());
        entity->GetProperty(TAVELL_NODE_PRESSURE, &value);
        isSolved = built.solve();
    });
    EXPECT_EQ(value, 300000.0);
    EXPECT_TRUE(isSolved);
}
