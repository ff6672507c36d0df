// measure.h: time and memory.
#ifndef TAVELL_BENCH_MEASURE_H
#define TAVELL_BENCH_MEASURE_H

#include <chrono>

namespace bench
{

/// Time since it was made.
class Stopwatch
{
public:
    double milliseconds() const
    {
        return std::chrono::duration<double, std::milli>(Clock::now() - m_start).count();
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_start = Clock::now();
};

/// Mean time of a call [ms]: as many calls as fill 20 ms, at least one.
template <typename Call> double meanMilliseconds(Call call)
{
    constexpr double kSample = 20.0;  // [ms]
    int calls = 0;
    const Stopwatch stopwatch;
    do {
        call();
        ++calls;
    } while (stopwatch.milliseconds() < kSample);
    return stopwatch.milliseconds() / calls;
}

/// The highest resident memory of the process, above what it had when the meter was made. Linux only; 0 elsewhere.
class MemoryMeter
{
public:
    /// Gives memory that is not in use back to the system first, so that it is not taken for a part of what follows.
    MemoryMeter();

    /// Forgets the peak so far.
    static void restart();

    double peakMiB() const;

private:
    double m_base;  // [MiB]
};

}  // namespace bench

#endif
