#include "xml_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace kit
{
namespace
{

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// One character of a text: its code point and how many bytes it has; isValid is false for a byte that starts
/// none.
struct Character {
    std::uint32_t code = 0;
    std::size_t bytes = 1;
    bool isValid = false;
};

/// How many bytes a character has by its first byte; 0 for a byte that starts none.
std::size_t sequenceLength(unsigned char first)
{
    if (first < 0x80U) return 1;
    if (first >= 0xC2U && first <= 0xDFU) return 2;
    if (first >= 0xE0U && first <= 0xEFU) return 3;
    if (first >= 0xF0U && first <= 0xF4U) return 4;
    return 0;
}

/// The smallest code point that needs so many bytes; shorter ones in a longer form are no UTF-8 (RFC 3629).
std::uint32_t smallestCode(std::size_t bytes)
{
    constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    return kSmallest[bytes];
}

Character characterAt(std::string_view text, std::size_t position)
{
    const auto first = static_cast<unsigned char>(text[position]);
    const std::size_t bytes = sequenceLength(first);
    if (bytes == 0 || position + bytes > text.size()) return {};
    if (bytes == 1) return {first, 1, true};

    std::uint32_t code = first & (0xFFU >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i) {
        const auto next = static_cast<unsigned char>(text[position + i]);
        if ((next & 0xC0U) != 0x80U) return {};
        code = (code << 6U) | (next & 0x3FU);
    }
    if (code < smallestCode(bytes)) return {};
    return {code, bytes, true};
}

/// Char of XML 1.0: tab, line feed, carriage return and everything from the blank on but surrogates, U+FFFE
/// and U+FFFF.
bool isXmlCharacter(std::uint32_t code)
{
    if (code < 0x20U) return code == 0x9U || code == 0xAU || code == 0xDU;
    return code <= 0xD7FFU || (code >= 0xE000U && code <= 0xFFFDU) || (code >= 0x10000U && code <= 0x10FFFFU);
}

/// The reference for a character that must not stand for itself; "" for all others. Tabs and line ends are
/// written as references because a reader turns them into blanks in attributes.
std::string_view reference(std::uint32_t code)
{
    switch (code) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    default:
        return "";
    }
}

std::string converted(std::string_view text, bool isEscaped)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const Character character = characterAt(text, i);
        const std::string_view escape = isEscaped ? reference(character.code) : std::string_view{};
        if (!character.isValid || !isXmlCharacter(character.code))
            out += kReplacement;
        else if (!escape.empty())
            out += escape;
        else
            out += text.substr(i, character.bytes);
        i += character.bytes;
    }
    return out;
}

}  // namespace

std::string xmlText(std::string_view text)
{
    return converted(text, true);
}

std::string xmlCharacters(std::string_view text)
{
    return converted(text, false);
}

void appendNumber(std::string& out, double value)
{
    if (!std::isfinite(value)) {
        out += "nan";
        return;
    }
    std::array<char, 32> digits{};  // the longest shortest form has 24 characters
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), end);
}

}  // namespace kit
