// terminal.h: standard streams, progress and Ctrl-C.
#ifndef TAVELL_TOOLS_TERMINAL_H
#define TAVELL_TOOLS_TERMINAL_H

#include <chrono>
#include <string>
#include <string_view>

/// Prepares the streams and Ctrl-C: the first one asks the work to stop, the second one ends the program at
/// once.
void prepareTerminal();

/// Whether Ctrl-C was pressed.
bool isInterrupted();

/// Writes to standard output; "" or what the system says when that fails.
std::string writeOutput(std::string_view text);

/// Writes to standard error.
void writeErrors(std::string_view text);

/// One line on a terminal with the state of a solve, from half a second on; nothing when standard error is
/// none.
class ProgressLine
{
public:
    ProgressLine();
    void show(int step);
    /// Takes the line away.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    bool m_isTerminal;
    bool m_isShown = false;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_last = m_start;
};

#endif
