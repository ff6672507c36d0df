// kit_floating_point_test.cpp: the kit in programs with floating-point settings of their own.
#include <gtest/gtest.h>

#include <array>
#include <cfenv>
#include <csignal>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "kit_host.h"

using namespace KitHost;

namespace
{

/// Gives the program's floating-point settings back at the end of each test.
class KitFloatingPoint : public testing::Test
{
protected:
    KitFloatingPoint() { std::fegetenv(&m_before); }
    ~KitFloatingPoint() override { std::fesetenv(&m_before); }

private:
    std::fenv_t m_before{};
};

}  // namespace

TEST_F(KitFloatingPoint, the_rounding_mode_of_the_program_is_as_before_and_changes_no_letter_of_what_is_said)
{
    constexpr std::array<int, 3> kModes = {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
    for (const std::string& path : examples()) {
        SCOPED_TRACE(path);
        const std::string usual = answerOf(path);
        for (const int mode : kModes) {
            ASSERT_EQ(std::fesetround(mode), 0);
            const std::string told = answerOf(path);
            EXPECT_EQ(std::fegetround(), mode);
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(told, usual);
        }
    }
}

TEST_F(KitFloatingPoint, the_exception_flags_of_the_program_are_as_before)
{
    for (const std::string& path : examples()) {
        SCOPED_TRACE(path);
        for (const int flags : {0, FE_DIVBYZERO | FE_INVALID}) {
            std::feclearexcept(FE_ALL_EXCEPT);
            std::feraiseexcept(flags);
            const Network network = readNetwork(path);
            const Result result = solve(network.get());
            EXPECT_NE(tvkElementResults(result.get(), "friction"), nullptr);
            EXPECT_EQ(tvkVerify(result.get(), nullptr), TVK_OK);
            EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), flags);
        }
    }
}

#if defined(__GLIBC__)
TEST_F(KitFloatingPoint, traps_of_the_program_do_not_end_it)
{
    for (const std::string& path : examples()) {
        SCOPED_TRACE(path);
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGFPE, SIG_DFL);
            feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
            _exit(answerOf(path).empty() ? 1 : 0);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}
#endif
