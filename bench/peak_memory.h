// peak_memory.h: resident memory as a benchmark counter.
#ifndef TAVELL_BENCH_PEAK_MEMORY_H
#define TAVELL_BENCH_PEAK_MEMORY_H

#include <sys/resource.h>

#include <benchmark/benchmark.h>

/// Sets the counter "peakMiB": the highest resident memory of the process so far [MiB]. It never falls, so a size is
/// judged by a run of its own.
inline void countPeakMemory(benchmark::State& state)
{
    constexpr double kKibibytesPerMebibyte = 1024.0;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peakMiB"] = static_cast<double>(usage.ru_maxrss) / kKibibytesPerMebibyte;
}

#endif
