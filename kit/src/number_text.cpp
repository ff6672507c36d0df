#include "number_text.h"

#include <array>
#include <charconv>

namespace kit
{

namespace
{

constexpr int kScientificDecimals = 4;

// Numbers of these sizes are written without an exponent.
constexpr double kSmallestPlain = 1e-4;
constexpr double kLargestPlain = 1e15;

std::string written(double value, std::chars_format format, int precision)
{
    std::array<char, 400> text{};  // the largest double has 309 digits before the decimal point
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, format, precision).ptr;
    return {text.data(), end};
}

}  // namespace

std::string shortNumber(double value, int digits)
{
    return written(value, std::chars_format::general, digits);
}

std::string fixedNumber(double value, int decimals)
{
    std::string text = written(value, std::chars_format::fixed, decimals);
    if (text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
    return text;
}

std::string scientificNumber(double value)
{
    return written(value == 0.0 ? 0.0 : value, std::chars_format::scientific, kScientificDecimals);
}

std::string exactNumber(double value)
{
    std::array<char, 32> text{};
    char* const last = text.data() + text.size();
    const double size = value < 0.0 ? -value : value;
    const bool isPlain = value == 0.0 || (size >= kSmallestPlain && size < kLargestPlain);
    const auto end = isPlain ? std::to_chars(text.data(), last, value, std::chars_format::fixed).ptr
                             : std::to_chars(text.data(), last, value).ptr;
    return {text.data(), end};
}

}  // namespace kit
