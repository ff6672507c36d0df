// fuzz_input.h: choices out of the bytes of an input, for targets that build something instead of reading a text.
#ifndef TAVELL_TESTS_FUZZ_INPUT_H
#define TAVELL_TESTS_FUZZ_INPUT_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace fuzz
{

inline void require(bool isTrue, const char* fact)
{
    if (isTrue) return;
    std::fprintf(stderr, "does not hold: %s\n", fact);
    std::abort();
}

/// A number in full, for what a failing check prints.
inline std::string shown(double value)
{
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

/// Equal and of one sign; not-a-numbers are told apart by their sign alone.
inline bool isSameNumber(double a, double b)
{
    const bool isEqual = std::isnan(a) ? std::isnan(b) : a == b;
    return isEqual && std::signbit(a) == std::signbit(b);
}

/// Reads choices from the start of an input; a used up one goes on with zeros.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_left(size) {}

    bool isEmpty() const { return m_left == 0; }

    unsigned byte()
    {
        if (m_left == 0) return 0;
        --m_left;
        return *m_next++;
    }

    /// 0 .. limit - 1, limit at most 256; 0 for a limit of 0.
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : byte() % limit; }

    bool flag() { return byte() % 2 == 1; }

    /// Whether a choice falls that falls once in `times`; not in an input that is used up.
    bool rarely(unsigned times) { return byte() % times == times - 1; }

    /// Mostly small, at times any.
    int whole()
    {
        const unsigned kind = byte();
        if (kind < 240) return static_cast<int>(kind % 48) - 8;
        std::uint32_t bits = 0;
        for (int i = 0; i < 4; ++i)
            bits = bits << 8 | byte();
        return static_cast<int>(bits);
    }

    /// Whole and round numbers, those at the edges of double, and any bits at all.
    double number()
    {
        const unsigned kind = byte();
        if (kind < 96) return static_cast<double>(kind) - 16.0;
        if (kind < 160) return kEdges[kind % kEdges.size()];
        if (kind < 240) return std::copysign((1.0 + byte() / 64.0) * std::pow(10.0, exponent()), sign(kind));
        std::uint64_t bits = 0;
        for (int i = 0; i < 8; ++i)
            bits = bits << 8 | byte();
        double any = 0.0;
        std::memcpy(&any, &bits, sizeof any);
        // one not-a-number of each sign: their texts do not tell more of them apart
        return std::isnan(any) ? std::copysign(kNotANumber, std::signbit(any) ? -1.0 : 1.0) : any;
    }

    /// Evenly spread between the logarithms of two positive numbers; now and then any number.
    double between(double lowest, double highest)
    {
        const unsigned step = byte();
        if (step >= 252) return number();
        return lowest * std::pow(highest / lowest, step / 251.0);
    }

    std::string text(const std::string& letters, std::size_t longest)
    {
        std::string result(below(longest + 1), ' ');
        for (char& letter : result)
            letter = letters[below(letters.size())];
        return result;
    }

private:
    using Limits = std::numeric_limits<double>;
    static constexpr double kNotANumber = Limits::quiet_NaN();
    static constexpr std::array<double, 24> kEdges{0.0,
                                                   -0.0,
                                                   kNotANumber,
                                                   -kNotANumber,
                                                   Limits::infinity(),
                                                   -Limits::infinity(),
                                                   5e-324,
                                                   1e-310,
                                                   Limits::min(),
                                                   -Limits::max(),
                                                   Limits::max(),
                                                   1e-160,
                                                   1e160,
                                                   3e-38,
                                                   1e-13,
                                                   -1e-13,
                                                   2147483647.0,
                                                   2147483648.0,
                                                   0.5,
                                                   0.1,
                                                   -0.1,
                                                   1e5,
                                                   4294967296.0,
                                                   1e15};

    double exponent() { return static_cast<double>(byte() % 48) - 24.0; }
    static double sign(unsigned kind) { return kind % 4 == 3 ? -1.0 : 1.0; }

    const std::uint8_t* m_next;
    std::size_t m_left;
};

}  // namespace fuzz

#endif
