// full_disk_test.cpp: everything that the command writes, where files end too early.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "command/run_command.h"

using command_test::Outcome;
using command_test::runCommand;
using command_test::TemporaryDirectory;
using command_test::textOf;

namespace
{

constexpr const char* kOldText = "the file that was there before\n";
constexpr const char* kSmallFiles = "ulimit -f 1; ";  // 512 or 1024 bytes, by the shell

/// A command that writes a file, named behind the others.
struct Writing {
    std::string ending;
    std::vector<std::string> arguments;
};

std::vector<Writing> writings()
{
    const std::string network = std::string(TAVELL_EXAMPLES) + "/networks/two_loops.json";
    const std::string larger = std::string(TAVELL_EXAMPLES) + "/networks/hanoi.tavell.json";
    const std::string inp = std::string(TAVELL_EXAMPLES) + "/networks/village.inp";
    return {
        {".txt", {"solve", network, "-o"}},
        {".result", {"solve", network, "-o", "/dev/null", "--result"}},
        {".csv", {"solve", larger, "-o", "/dev/null", "--csv"}},
        {".html", {"report", network, "-o"}},
        {".json", {"import", inp, "-o"}},
        {".tavell.json", {"convert", network, "-o"}},
        {".vtu", {"convert", network, "-o"}},
        {".geojson", {"convert", network, "-o"}},
        {".graphml", {"convert", network, "-o"}},
    };
}

std::vector<std::string> namesIn(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

Outcome runInto(const Writing& writing, const std::string& path, const std::string& before)
{
    std::vector<std::string> arguments = writing.arguments;
    arguments.push_back(path);
    return runCommand(arguments, before);
}

}  // namespace

TEST(FullDisk, command_says_so_and_leaves_the_old_file_and_nothing_beside_it)
{
    for (const Writing& writing : writings()) {
        SCOPED_TRACE(writing.arguments[0] + ' ' + writing.ending);
        const TemporaryDirectory folder;
        const std::string path = folder.write("out" + writing.ending, kOldText);
        const Outcome failed = runInto(writing, path, kSmallFiles);
        EXPECT_EQ(failed.status, 2) << failed.errors;
        EXPECT_NE(failed.errors.find("cannot-write-file"), std::string::npos) << failed.errors;
        EXPECT_EQ(textOf(path), kOldText);
        EXPECT_EQ(namesIn(folder.path()).size(), 1U);
        std::filesystem::remove(path);
        EXPECT_EQ(runInto(writing, path, kSmallFiles).status, 2);
        EXPECT_TRUE(std::filesystem::is_empty(folder.path()));

        EXPECT_EQ(runInto(writing, path, "").status, 0);
        EXPECT_GT(textOf(path).size(), 1024U) << "it would have fitted";
        EXPECT_EQ(namesIn(folder.path()).size(), 1U);
    }
}

TEST(FullDisk, folder_that_is_a_file_is_refused)
{
    for (const Writing& writing : writings()) {
        SCOPED_TRACE(writing.arguments[0] + ' ' + writing.ending);
        const TemporaryDirectory folder;
        const std::string plain = folder.write("plain", kOldText);
        EXPECT_EQ(runInto(writing, plain + "/out" + writing.ending, "").status, 2);
        EXPECT_EQ(textOf(plain), kOldText);
        EXPECT_EQ(namesIn(folder.path()).size(), 1U);
    }
}
