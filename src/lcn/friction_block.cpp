// One logarithm and one power are nearly the whole cost of a friction factor: 22 ns an element with the C
// library's, 6 to 8 ns in blocks of 64 with AVX2, about 12 ns with the instructions that every x86-64 has.
#include "friction_block.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "constants.h"
#include "friction.h"
#include "log_exp.h"

#if defined(__GNUC__) && defined(__x86_64__)
#define TAVELL_HAS_AVX2 1
#endif

namespace lcn
{

namespace
{

constexpr double kPerLn10 = 0.43429448190325182765;  // 1 / ln 10
constexpr double kLargest = 1e300;                   // of what the block's logarithm takes

/// Elements of one loop: GCC 12 at -O2 makes vector instructions of loops whose count is known and a whole
/// number of vectors, and of no others; a loop over any count took three times as long.
constexpr int kChunk = 16;

/// f = 0.25 / x^2 with x = log10(y), y = t/3.7 + z, z = 5.74 / Re^0.9:
/// d ln f / d ln Re = -2 / x dx/d ln Re = 1.8 z / (x y ln 10).
TAVELL_ALWAYS_INLINE void swameeJainChunk(const double* __restrict Re, const double* __restrict relRough,
                                          double* __restrict f, double* __restrict slope)
{
    for (int i = 0; i < kChunk; ++i) {
        const double z = 5.74 * expOf(-0.9 * logOf(Re[i]));
        const double y = relRough[i] / 3.7 + z;
        const double x = kPerLn10 * logOf(y);
        f[i] = 0.25 / (x * x);
        slope[i] = 1.8 * kPerLn10 * z / (x * y);
    }
}

/// Whole chunks, and what is left filled up with its last element.
TAVELL_ALWAYS_INLINE void swameeJainLoop(const double* Re, const double* relRough, double* f, double* slope,
                                         int count)
{
    int first = 0;
    for (; first + kChunk <= count; first += kChunk)
        swameeJainChunk(Re + first, relRough + first, f + first, slope + first);
    const int left = count - first;
    if (left <= 0) return;

    double Res[kChunk], relRoughs[kChunk], fs[kChunk], slopes[kChunk];
    for (int i = 0; i < kChunk; ++i) {
        const int element = first + std::min(i, left - 1);
        Res[i] = Re[element];
        relRoughs[i] = relRough[element];
    }
    swameeJainChunk(Res, relRoughs, fs, slopes);
    std::copy_n(fs, left, f + first);
    std::copy_n(slopes, left, slope + first);
}

#ifdef TAVELL_HAS_AVX2
__attribute__((target("avx2"))) void swameeJainAvx2(const double* Re, const double* relRough, double* f,
                                                    double* slope, int count)
{
    swameeJainLoop(Re, relRough, f, slope, count);
}

bool hasAvx2()
{
    static const bool has = __builtin_cpu_supports("avx2") != 0;
    return has;
}
#endif

void swameeJainPortable(const double* Re, const double* relRough, double* f, double* slope, int count)
{
    swameeJainLoop(Re, relRough, f, slope, count);
}

}  // namespace

void swameeJainBlock(const double* Re, const double* relRough, double* f, double* slope, int count,
                     Instructions instructions)
{
#ifdef TAVELL_HAS_AVX2
    if (instructions == Instructions::kBest && hasAvx2()) {
        swameeJainAvx2(Re, relRough, f, slope, count);
        return;
    }
#else
    (void)instructions;
#endif
    swameeJainPortable(Re, relRough, f, slope, count);
}

void frictionLawBlock(int method, const double* Re, const double* relRough, const double* Cl, double* f,
                      double* slope, int count)
{
    std::array<double, kFrictionBlock> turbulentRe{};
    for (int i = 0; i < count; ++i)
        turbulentRe[static_cast<std::size_t>(i)] = std::max(Re[i], kReTurbulentStart);
    swameeJainBlock(turbulentRe.data(), relRough, f, slope, count);

    const bool isSwameeJain = method < 2 || method > 6;
    for (int i = 0; i < count; ++i) {
        // false for numbers that are none: the law for one element lets them show
        const bool isOfBlock = isSwameeJain && Re[i] > kReLaminarEnd && Re[i] < kLargest &&
                               relRough[i] >= 0.0 && relRough[i] < kLargest;
        if (isOfBlock && Re[i] >= kReTurbulentStart) continue;
        f[i] = isOfBlock ? transitionFriction(Re[i], Cl[i], f[i])
                         : frictionLaw(method, Re[i], relRough[i], Cl[i]);
        if (Re[i] <= kReLaminarEnd) {
            slope[i] = f[i] < kFrictionAtRest ? -1.0 : 0.0;
        } else if (Re[i] < kReTurbulentStart) {
            const double fLaminar = Cl[i] / kReLaminarEnd;
            slope[i] = (f[i] - fLaminar) / (Re[i] - kReLaminarEnd) * Re[i] / f[i];
        }
    }
}

}  // namespace lcn
