#include "text_format.h"

#include <charconv>
#include <cmath>

namespace lcn
{

namespace
{

constexpr int kDefaultPrecision = 6;  // digits behind the point where a form gives none
constexpr int kLongestReal = 320;     // sign, 309 digits before the point, point, exponent

/// One conversion of a form.
struct Conversion {
    bool leftJustified = false;
    std::size_t width = 0;
    int precision = -1;  // none given
    char letter = '\0';
    std::size_t length = 0;  // of its text in the form
};

/// The whole number at text[at]; moves at behind it.
int readDigits(std::string_view text, std::size_t& at)
{
    int number = 0;
    const auto read = std::from_chars(text.data() + at, text.data() + text.size(), number);
    at = static_cast<std::size_t>(read.ptr - text.data());
    return number;
}

bool isDigit(std::string_view text, std::size_t at)
{
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

bool isAt(std::string_view text, std::size_t at, char c)
{
    return at < text.size() && text[at] == c;
}

/// The conversion that starts with the % at text[0].
Conversion readConversion(std::string_view text)
{
    Conversion conversion;
    std::size_t at = 1;
    if (isAt(text, at, '-')) {
        conversion.leftJustified = true;
        ++at;
    }
    if (isDigit(text, at)) conversion.width = static_cast<std::size_t>(readDigits(text, at));
    if (isAt(text, at, '.')) {
        ++at;
        conversion.precision = isDigit(text, at) ? readDigits(text, at) : 0;
    }
    if (isAt(text, at, 'l') || isAt(text, at, 'z')) ++at;
    if (at < text.size()) conversion.letter = text[at++];
    conversion.length = at;
    return conversion;
}

template <typename Whole> void appendWhole(std::string& out, Whole value)
{
    char digits[24];
    const auto written = std::to_chars(digits, digits + sizeof digits, value);
    out.append(digits, written.ptr);
}

void makeUpperCase(std::string& text, std::size_t from)
{
    for (std::size_t i = from; i < text.size(); ++i)
        if (text[i] >= 'a' && text[i] <= 'z') text[i] = static_cast<char>(text[i] - 'a' + 'A');
}

void appendReal(std::string& out, double value, char letter, int precision)
{
    const std::size_t before = out.size();
    if (!std::isfinite(value)) {
        if (std::signbit(value)) out += '-';
        out += std::isnan(value) ? "nan" : "inf";
    } else {
        const int digits = precision < 0 ? kDefaultPrecision : precision;
        const auto notation = letter == 'f' ? std::chars_format::fixed : std::chars_format::scientific;
        out.resize(before + static_cast<std::size_t>(kLongestReal) + static_cast<std::size_t>(digits));
        char* const end = out.data() + out.size();
        const auto written = std::to_chars(out.data() + before, end, value, notation, digits);
        out.resize(static_cast<std::size_t>(written.ptr - out.data()));
    }
    if (letter == 'E') makeUpperCase(out, before);
}

void appendConverted(std::string& out, const Conversion& conversion, const FormatValue& value)
{
    const std::size_t before = out.size();
    value.append(out, conversion.letter, conversion.precision);
    const std::size_t length = out.size() - before;
    if (length < conversion.width)
        out.insert(conversion.leftJustified ? out.size() : before, conversion.width - length, ' ');
}

}  // namespace

bool FormatValue::fits(char conversion) const
{
    switch (conversion) {
    case 'd':
        return m_kind == Kind::kInteger;
    case 'u':
        return m_kind == Kind::kCount;
    case 's':
        return m_kind == Kind::kText;
    case 'f':
    case 'e':
    case 'E':
        return m_kind == Kind::kReal;
    default:
        return false;
    }
}

void FormatValue::append(std::string& out, char conversion, int precision) const
{
    switch (m_kind) {
    case Kind::kInteger:
        appendWhole(out, m_integer);
        break;
    case Kind::kCount:
        appendWhole(out, m_count);
        break;
    case Kind::kReal:
        appendReal(out, m_real, conversion, precision);
        break;
    case Kind::kText:
        out += m_text;
        break;
    }
}

void appendFormatted(std::string& out, std::string_view form, std::initializer_list<FormatValue> values)
{
    const FormatValue* next = values.begin();
    while (!form.empty()) {
        const std::size_t percent = form.find('%');
        out += form.substr(0, percent);
        if (percent == std::string_view::npos) return;
        form.remove_prefix(percent);

        const Conversion conversion = readConversion(form);
        if (next != values.end() && next->fits(conversion.letter))
            appendConverted(out, conversion, *next++);
        else
            out += form.substr(0, conversion.length);
        form.remove_prefix(conversion.length);
    }
}

TextFile::TextFile(const std::string& fileName) : m_file(std::fopen(fileName.c_str(), "w")) {}

TextFile::~TextFile()
{
    if (!isOpen()) return;
    flush();
    std::fclose(m_file);
}

void TextFile::flush()
{
    std::fwrite(m_pending.data(), 1, m_pending.size(), m_file);
    m_pending.clear();
}

}  // namespace lcn
