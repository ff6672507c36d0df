// number_text.h: numbers to and from stored text, the same in every locale of the host.
#pragma once

#include <limits>
#include <string>
#include <string_view>

namespace Velcor::Tavell
{

/// Significant digits of a stored number: more than the 17 that bring every double back unchanged.
constexpr int kPropertyDigits = 20;
/// Significant digits of a curve point.
constexpr int kCurveDigits = 6;

/// What a text is when it is read as a number.
enum class Readability : unsigned char { kNumber, kInvalid, kOutOfRange };

struct ParsedNumber {
    double value = 0.0;  // 0.0 unless readability is kNumber
    Readability readability = Readability::kInvalid;
};

/// Text of value in general notation with that many significant digits, as an output stream with this
/// precision writes it in the "C" locale.
std::string formatNumber(double value, int digits);
/// Whether text is what formatNumber makes of value. Needs no memory.
bool isTextOf(std::string_view text, double value, int digits);

/// The number at the start of text, read as std::strtod reads it in the "C" locale: leading blanks, a sign,
/// decimal or hexadecimal digits, "inf" and "nan" in any letter case; what follows the number is ignored. A
/// subnormal number is in range; a number that overflows, or vanishes although its digits are not zero, is
/// out of range.
ParsedNumber parseNumber(std::string_view text);

/// The same, for callers that need a number. Throws as requireReadable.
double readNumber(std::string_view text);

/// Returns when readability is kNumber. Throws std::invalid_argument("invalid stod argument") for kInvalid
/// and std::out_of_range("stod argument out of range") for kOutOfRange.
void requireReadable(Readability readability);

/// value without its fraction; the nearest int when it is beyond the range of int, 0 when it is no number.
inline int truncateToInt(double value)
{
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    if (value > kLowest && value < kHighest) return static_cast<int>(value);
    if (value <= kLowest) return kLowest;
    return value >= kHighest ? kHighest : 0;
}

/// Whether both numbers have the same text: equal bits, or not-a-numbers of equal sign. 0.0 and -0.0 differ.
bool haveSameText(double a, double b);

}  // namespace Velcor::Tavell
