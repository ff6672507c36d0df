// debug_files_test.cpp: the files and the trace of a solve where they cannot be written. They are for developers and never a
// reason to fail.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "debug_files.h"
#include "flat_world.h"
#include "scratch_folder.h"
#include "small_files.h"
#include "solve_networks.h"

using namespace faults;
using support::Built;

namespace
{

const std::vector<std::string> kFiles = {"Initial_debug_file.dat", "Results_c.dat", "forcedbc.dat",
                                         "network_results.dat"};

/// Answer, results and messages of a traced solve.
std::string tracedSolve(const SolveCase& tested)
{
    const DebugFiles debugFiles;
    const Built built = tested.build();
    const int answer = vcICircuitSolve(&built.circuit(), tested.energy ? 1 : 0, nullptr);
    return std::to_string(answer) + '\n' + observedResults(&built.circuit()) +
           observedFeedback(&built.circuit());
}

/// What it is where everything can be written.
std::string undisturbed(const SolveCase& tested)
{
    const ScratchFolder folder;
    const SilentOutput silent;
    std::string solved = tracedSolve(tested);
    EXPECT_EQ(folder.names(), kFiles);
    return solved;
}

std::vector<SolveCase> tracedCases()
{
    return {everyKind(), gridWithJunctionLosses(), insoluble()};
}

}  // namespace

TEST(DebugFiles, folders_in_the_place_of_the_files_change_no_solve)
{
    for (const SolveCase& tested : tracedCases()) {
        const std::string expected = undisturbed(tested);
        const ScratchFolder folder;
        const SilentOutput silent;
        for (const std::string& name : kFiles)
            std::filesystem::create_directory(name);
        EXPECT_EQ(firstDifference(tracedSolve(tested), expected), "") << tested.name;
        for (const std::string& name : kFiles)
            EXPECT_TRUE(std::filesystem::is_empty(name)) << name;
    }
}

TEST(DebugFiles, folder_that_is_gone_changes_no_solve)
{
    for (const SolveCase& tested : tracedCases()) {
        const std::string expected = undisturbed(tested);
        const ScratchFolder folder;
        const SilentOutput silent;
        std::filesystem::remove(folder.path());
        EXPECT_EQ(firstDifference(tracedSolve(tested), expected), "") << tested.name;
    }
}

TEST(DebugFiles, full_disk_changes_no_solve)
{
    for (const SolveCase& tested : tracedCases()) {
        const std::string expected = undisturbed(tested);
        for (const rlim_t room : {rlim_t{0}, rlim_t{100}, rlim_t{5000}}) {
            const ScratchFolder folder;
            const SilentOutput silent;
            const SmallFiles small(room);
            EXPECT_EQ(firstDifference(tracedSolve(tested), expected), "") << tested.name;
        }
    }
}

TEST(DebugFiles, output_that_takes_no_trace_changes_no_solve)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    for (const SolveCase& tested : tracedCases()) {
        const std::string expected = undisturbed(tested);
        const ScratchFolder folder;
        std::string solved;
        {
            const SilentOutput full("/dev/full");
            solved = tracedSolve(tested);
        }
        EXPECT_EQ(firstDifference(solved, expected), "") << tested.name;
    }
}
