#include "problems.h"

std::string oneLine(std::string_view text)
{
    static const char kHexDigits[] = "0123456789abcdef";
    std::string line;
    line.reserve(text.size());
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || code == 0x7f) {
            line += "\\x";
            line += kHexDigits[code / 16];
            line += kHexDigits[code % 16];
        } else {
            line += c;
        }
    }
    return line;
}

std::string inQuotes(std::string_view text)
{
    return '"' + oneLine(text) + '"';
}

Problems::Problems(const std::string& file) : m_file(oneLine(file)) {}

void Problems::addToFile(std::string_view text)
{
    m_lines.push_back(m_file + ": " + oneLine(text));
}

void Problems::add(std::string_view place, std::string_view text)
{
    const std::string where = place.empty() ? "top level" : oneLine(place);
    m_lines.push_back(m_file + ": " + where + ": " + oneLine(text));
}

void Problems::addAt(std::size_t line, std::size_t column, std::string_view text)
{
    m_lines.push_back(m_file + ':' + std::to_string(line) + ':' + std::to_string(column) + ": " +
                      oneLine(text));
}
