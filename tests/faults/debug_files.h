// debug_files.h: debug files and trace of a solve switched on, and standard output sent elsewhere.
#pragma once

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace faults
{

/// Standard output goes nowhere while it lives: a trace is long.
class SilentOutput
{
public:
    SilentOutput() : SilentOutput("/dev/null") {}
    explicit SilentOutput(const char* path)
    {
        std::fflush(stdout);
        m_before = dup(STDOUT_FILENO);
        const int target = open(path, O_WRONLY);
        if (target < 0) return;
        dup2(target, STDOUT_FILENO);
        close(target);
    }
    ~SilentOutput()
    {
        std::fflush(stdout);
        std::clearerr(stdout);
        dup2(m_before, STDOUT_FILENO);
        close(m_before);
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

private:
    int m_before = -1;
};

/// Debug files and trace are on while it lives.
class DebugFiles
{
public:
    DebugFiles() { setenv("TAVELL_DEBUG_FILE", "1", 1); }
    ~DebugFiles() { unsetenv("TAVELL_DEBUG_FILE"); }
    DebugFiles(const DebugFiles&) = delete;
    DebugFiles& operator=(const DebugFiles&) = delete;
};

}  // namespace faults
