// tavell sweep: how the Python program is started, and what is said when it cannot be.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "command/run_command.h"

namespace
{

using command_test::Outcome;
using command_test::runCommand;
using command_test::shellQuoted;
using command_test::TemporaryDirectory;

/// A program in the place of the interpreter that prints what it is given behind "-c PROGRAM".
std::string fakePython(const TemporaryDirectory& directory)
{
    std::string path =
        directory.write("python", "#!/bin/sh\nshift 2\nfor word; do echo \"<$word>\"; done\nexit 7\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

TEST(Sweep, becomes_python_with_its_arguments_and_status)
{
    const TemporaryDirectory directory;
    const std::string environment = "TAVELL_PYTHON=" + shellQuoted(fakePython(directory)) + ' ';
    const Outcome outcome = runCommand(
        {"sweep", "run", "--out", "a b", "plan.json", "--shard", "1/2", "-h", "it's"}, environment);
    EXPECT_EQ(7, outcome.status);
    EXPECT_EQ("<run>\n<--out>\n<a b>\n<plan.json>\n<--shard>\n<1/2>\n<-h>\n<it's>\n", outcome.output);
    EXPECT_EQ("", outcome.errors);
    EXPECT_EQ("<status>\n", runCommand({"sweep", "status"}, environment).output);
}

TEST(Sweep, says_in_one_line_that_the_interpreter_is_missing)
{
    const Outcome outcome = runCommand({"sweep", "status"}, "TAVELL_PYTHON=/nowhere/python ");
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("tavell: the interpreter \"/nowhere/python\" is not there; install Python 3 and its package "
              "tavell, or "
              "name another interpreter in TAVELL_PYTHON\n",
              outcome.errors);
}

TEST(Sweep, says_in_one_line_that_the_package_is_missing)
{
    if (std::system("python3 -c '' >/dev/null 2>&1") != 0) GTEST_SKIP() << "no Python on this system";
    // -I and -S: neither the user's packages nor those of the system are looked at.
    const TemporaryDirectory directory;
    const std::string python = directory.write("python", "#!/bin/sh\nexec python3 -I -S \"$@\"\n");
    std::filesystem::permissions(python, std::filesystem::perms::owner_all);
    const Outcome outcome = runCommand({"sweep", "run"}, "TAVELL_PYTHON=" + shellQuoted(python) + ' ');
    EXPECT_EQ(2, outcome.status);
    EXPECT_NE(outcome.errors.find(" cannot use the Python package tavell: "), std::string::npos)
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("TAVELL_PYTHON"), std::string::npos) << outcome.errors;
    EXPECT_EQ(outcome.errors.size() - 1, outcome.errors.find('\n'));
}

TEST(Sweep, knows_its_steps)
{
    EXPECT_EQ(2, runCommand({"sweep"}).status);
    EXPECT_EQ(2, runCommand({"sweep", "fly"}).status);
}

}  // namespace
