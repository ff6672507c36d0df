#include "terminal.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace
{

constexpr std::chrono::milliseconds kSilence(500);  // before the first line
constexpr std::chrono::milliseconds kPause(100);    // between two lines

volatile std::sig_atomic_t isStopWanted = 0;

extern "C" void onInterrupt(int signal)
{
    isStopWanted = 1;
    std::signal(signal, SIG_DFL);
}

bool isErrorTerminal()
{
#ifdef _WIN32
    return _isatty(2) != 0;
#else
    return isatty(2) != 0;
#endif
}

#ifndef _WIN32
/// A stream that the caller closed gets a file to which nothing can be written, so that no file that is
/// opened later takes its place.
void openClosedStreams()
{
    for (int stream = 0; stream <= 2; ++stream) {
        if (fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        if (open("/dev/null", O_RDONLY) != stream) return;
    }
}
#endif

/// "1.2 s", "2 min 5 s".
std::string durationText(std::chrono::milliseconds elapsed)
{
    const auto tenths = elapsed.count() / 100;
    if (tenths < 600) return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " s";
    return std::to_string(tenths / 600) + " min " + std::to_string(tenths % 600 / 10) + " s";
}

}  // namespace

void prepareTerminal()
{
    std::signal(SIGINT, onInterrupt);
#ifndef _WIN32
    openClosedStreams();
    // A closed pipe is an error of the write, not the silent end of the program.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that grows beyond the limit of its size.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

bool isInterrupted()
{
    return isStopWanted != 0;
}

std::string writeOutput(std::string_view text)
{
    errno = 0;
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) == 0 && isWritten) return "";
    return std::generic_category().message(errno);
}

void writeErrors(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

ProgressLine::ProgressLine() : m_isTerminal(isErrorTerminal()) {}

void ProgressLine::show(int step)
{
    if (!m_isTerminal) return;
    const auto now = Clock::now();
    if (now - m_start < kSilence || now - m_last < kPause) return;
    m_last = now;
    m_isShown = true;
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_start);
    writeErrors("\r\033[Ksolving: step " + std::to_string(step) + ", " + durationText(elapsed) +
                " (Ctrl-C stops)");
}

void ProgressLine::clear()
{
    if (m_isShown) writeErrors("\r\033[K");
    m_isShown = false;
}
