// text_format.h: rows of reports and traces from the conversions of C's formatted output, the same in every
// locale of the host: the decimal point is a point even where the host has asked C or C++ for a comma.
#pragma once

#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

namespace lcn
{

/// One value of a row.
class FormatValue
{
public:
    FormatValue(int value) : m_kind(Kind::kInteger), m_integer(value) {}
    FormatValue(std::size_t count) : m_kind(Kind::kCount), m_count(count) {}
    FormatValue(double value) : m_kind(Kind::kReal), m_real(value) {}
    FormatValue(std::string_view text) : m_kind(Kind::kText), m_text(text) {}
    FormatValue(const char* text) : m_kind(Kind::kText), m_text(text) {}

    /// Whether a conversion with this letter prints this kind of value.
    bool fits(char conversion) const;

    /// Appends the value as the conversion with this letter prints it, without padding. precision < 0: none
    /// was given.
    void append(std::string& out, char conversion, int precision) const;

private:
    enum class Kind : unsigned char { kInteger, kCount, kReal, kText };

    Kind m_kind;
    union {
        int m_integer;
        std::size_t m_count;
        double m_real;
        std::string_view m_text;
    };
};

/// Appends form to out, each conversion replaced by the next value. A conversion is % [-] [width]
/// [.precision] [l or z] and one of d, u, s, f, e, E, and prints what C's printf prints in the "C" locale. d
/// takes an int, u a std::size_t, s a text, the others a double, whatever the length modifier; a precision
/// belongs to f, e and E only. A conversion without a value, or with one of another kind, is copied as it
/// stands.
void appendFormatted(std::string& out, std::string_view form, std::initializer_list<FormatValue> values);

/// The same as a text of its own.
template <typename... Values> std::string formatted(std::string_view form, const Values&... values)
{
    std::string text;
    appendFormatted(text, form, {FormatValue(values)...});
    return text;
}

/// A text file that is written from its start to its end. Errors of writing are not reported: a dump for
/// developers is never a reason to fail.
class TextFile
{
public:
    /// No file: what is printed is dropped.
    TextFile() = default;
    /// Opens fileName, replacing any earlier file.
    explicit TextFile(const std::string& fileName);
    ~TextFile();
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    bool isOpen() const { return m_file != nullptr; }

    /// Writes form with its values (appendFormatted); nothing when the file is not open.
    template <typename... Values> void print(std::string_view form, const Values&... values)
    {
        if (!isOpen()) return;
        appendFormatted(m_pending, form, {FormatValue(values)...});
        if (m_pending.size() >= kBlock) flush();
    }

private:
    static constexpr std::size_t kBlock = 65536;

    void flush();

    std::FILE* m_file = nullptr;
    std::string m_pending;  // formatted, not written yet
};

}  // namespace lcn
