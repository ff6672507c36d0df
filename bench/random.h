// random.h: pseudo-random numbers that are the same with every compiler and library.
#ifndef TAVELL_BENCH_RANDOM_H
#define TAVELL_BENCH_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace bench
{

/// SplitMix64 (Steele, Lea and Flood 2014). The distributions of the standard library differ between its makers, so
/// none is used.
class Random
{
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next()
    {
        m_state += 0x9e3779b97f4a7c15U;
        std::uint64_t x = m_state;
        x = (x ^ (x >> 30U)) * 0xbf58476d1ce4e5b9U;
        x = (x ^ (x >> 27U)) * 0x94d049bb133111ebU;
        return x ^ (x >> 31U);
    }

    /// In [from, to), with 53 random bits.
    double between(double from, double to)
    {
        constexpr double kStep = 1.0 / 9007199254740992.0;  // 2^-53
        return from + (to - from) * static_cast<double>(next() >> 11U) * kStep;
    }

    /// In 0..count-1; the bias of the remainder is below 1e-12 for the counts met here.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }

    /// Fisher and Yates.
    template <typename T> void shuffle(std::vector<T>& values)
    {
        for (std::size_t i = values.size(); i > 1; --i)
            std::swap(values[i - 1], values[below(i)]);
    }

private:
    std::uint64_t m_state;
};

}  // namespace bench

#endif
