// number_text.cpp: numbers to and from stored text. The <charconv> functions know no locale.
#include "number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace Velcor::Tavell
{

namespace
{

/// What isspace answers in the "C" locale.
bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Whether text starts as a hexadecimal number: "0x", then a digit, perhaps after a point.
bool startsAsHexadecimal(std::string_view text)
{
    if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return false;
    if (isHexDigit(text[2])) return true;
    return text[2] == '.' && text.size() > 3 && isHexDigit(text[3]);
}

/// text without leading blanks and sign; negative tells the sign.
std::string_view skipBlanksAndSign(std::string_view text, bool& negative)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    return text;
}

std::uint64_t bitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// Room for a sign, a point, an exponent and the zeros of 0.0001 beside the digits.
using NumberBuffer = std::array<char, 64>;

std::string_view formatInto(NumberBuffer& buffer, double value, int digits)
{
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                       std::chars_format::general, digits);
    return {buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data())};
}

}  // namespace

std::string formatNumber(double value, int digits)
{
    NumberBuffer buffer;
    return std::string(formatInto(buffer, value, digits));
}

bool isTextOf(std::string_view text, double value, int digits)
{
    NumberBuffer buffer;
    return text == formatInto(buffer, value, digits);
}

ParsedNumber parseNumber(std::string_view text)
{
    bool negative = false;
    text = skipBlanksAndSign(text, negative);
    // from_chars takes a minus sign of its own; a second sign makes the text no number.
    if (text.empty() || text.front() == '-') return {};

    auto format = std::chars_format::general;
    if (startsAsHexadecimal(text)) {
        format = std::chars_format::hex;
        text.remove_prefix(2);
        // No exponent has two signs, but some standard libraries read this one as negative.
        text = text.substr(0, text.find("+-"));
    }
    double value = 0.0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value, format);
    if (read.ec == std::errc::invalid_argument) return {};
    if (read.ec == std::errc::result_out_of_range) return {0.0, Readability::kOutOfRange};
    return {negative ? -value : value, Readability::kNumber};
}

double readNumber(std::string_view text)
{
    const ParsedNumber parsed = parseNumber(text);
    requireReadable(parsed.readability);
    return parsed.value;
}

void requireReadable(Readability readability)
{
    if (readability == Readability::kInvalid) throw std::invalid_argument("invalid stod argument");
    if (readability == Readability::kOutOfRange) throw std::out_of_range("stod argument out of range");
}

bool haveSameText(double a, double b)
{
    if (std::isnan(a) && std::isnan(b)) return std::signbit(a) == std::signbit(b);
    return bitsOf(a) == bitsOf(b);
}

}  // namespace Velcor::Tavell
