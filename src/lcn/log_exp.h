// log_exp.h: natural logarithm and exponential without branches and tables, so that compilers turn a loop
// over them into vector instructions. Within 1e-15 of the exact values (relative; of the logarithm near 1 the
// same). No fused operations: every processor gives the same bits.
#pragma once

#include <cstdint>
#include <cstring>

// Inlined into functions for other instruction sets than the file's own, which takes more than a hint.
#if defined(__GNUC__)
#define TAVELL_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define TAVELL_ALWAYS_INLINE inline
#endif

namespace lcn
{

namespace bits
{

inline constexpr std::uint64_t kExponentBias = 1023;
inline constexpr int kFractionBits = 52;
inline constexpr std::uint64_t kTwoTo52 = 0x4330000000000000;        // bits of 2^52
inline constexpr std::uint64_t kAboveRootHalf = 0x00095f619980c433;  // 1.0 - sqrt(0.5), in bits
inline constexpr double kRound = 6755399441055744.0;      // 1.5 x 2^52: adding it rounds to integers
inline constexpr double kLn2High = 0x1.62e42fee00000p-1;  // ln 2, its first 32 bits
inline constexpr double kLn2Low = 0x1.a39ef35793c76p-33;  // and the rest
inline constexpr double kPerLn2 = 0x1.71547652b82fep+0;   // 1 / ln 2

TAVELL_ALWAYS_INLINE std::uint64_t of(double x)
{
    std::uint64_t u;
    std::memcpy(&u, &x, sizeof u);
    return u;
}

TAVELL_ALWAYS_INLINE double toDouble(std::uint64_t u)
{
    double x;
    std::memcpy(&x, &u, sizeof x);
    return x;
}

}  // namespace bits

/// ln x of a positive, normal and finite x: x = 2^k m with m between sqrt(1/2) and sqrt(2), and the series
/// ln m = 2 (s + s^3/3 + s^5/5 + ...), s = (m - 1) / (m + 1) (Gregory 1668), to s^21.
TAVELL_ALWAYS_INLINE double logOf(double x)
{
    const std::uint64_t u = bits::of(x);
    const std::uint64_t biased = (u + bits::kAboveRootHalf) >> bits::kFractionBits;
    const double k = bits::toDouble(biased | bits::kTwoTo52) - (4503599627370496.0 + 1023.0);
    const double m = bits::toDouble(u - ((biased - bits::kExponentBias) << bits::kFractionBits));
    const double f = m - 1.0;
    const double s = f / (2.0 + f);
    const double z = s * s;
    // the series in even and odd halves: two short chains instead of a long one
    const double w = z * z;
    const double odd = w * (1.0 / 5 + w * (1.0 / 9 + w * (1.0 / 13 + w * (1.0 / 17 + w * (1.0 / 21)))));
    const double even = z * (1.0 / 3 + w * (1.0 / 7 + w * (1.0 / 11 + w * (1.0 / 15 + w * (1.0 / 19)))));
    const double tail = 2.0 * s * (odd + even);
    return k * bits::kLn2High + (2.0 * s + (tail + k * bits::kLn2Low));
}

/// e^x for |x| < 700: x = k ln 2 + r, and the series of e^r (Newton 1669) to r^13.
TAVELL_ALWAYS_INLINE double expOf(double x)
{
    const double shifted = x * bits::kPerLn2 + bits::kRound;
    const double k = shifted - bits::kRound;
    const double r = (x - k * bits::kLn2High) - k * bits::kLn2Low;
    const double q = r * r;
    const double odd =
        1.0 +
        q * (1.0 / 6 +
             q * (1.0 / 120 +
                  q * (1.0 / 5040 + q * (1.0 / 362880 + q * (1.0 / 39916800 + q * (1.0 / 6227020800.0))))));
    const double even =
        q *
        (1.0 / 2 +
         q * (1.0 / 24 + q * (1.0 / 720 + q * (1.0 / 40320 + q * (1.0 / 3628800 + q * (1.0 / 479001600))))));
    const double power = 1.0 + (r * odd + even);
    return bits::toDouble(bits::of(power) + (bits::of(shifted) << bits::kFractionBits));
}

}  // namespace lcn
