#include "csv_table.h"

#include <algorithm>
#include <utility>

namespace kit
{

namespace
{

/// Splits a text into rows of fields.
class CsvParser
{
public:
    CsvParser(const std::string& text, const std::string& file, Findings& findings)
        : m_text(text), m_file(file), m_findings(findings), m_separator(separatorOf(text))
    {
    }

    std::optional<CsvTable> parse()
    {
        CsvTable table;
        bool hasHeader = false;
        while (m_at < m_text.size()) {
            CsvRow row = readRow();
            if (isEmpty(row)) continue;
            if (!hasHeader) {
                table.header = std::move(row);
                hasHeader = true;
                continue;
            }
            if (row.fields.size() > table.header.fields.size())
                report(row.line, "the line has " + std::to_string(row.fields.size()) +
                                     " fields, more than the header's " +
                                     std::to_string(table.header.fields.size()));
            row.fields.resize(table.header.fields.size());
            table.rows.push_back(std::move(row));
        }
        if (!hasHeader) report(1, "the table has no header line");
        if (!hasHeader || m_isOpen) return std::nullopt;
        return table;
    }

private:
    static char separatorOf(const std::string& text)
    {
        bool isQuoted = false;
        for (const char c : text) {
            if (c == '"') isQuoted = !isQuoted;
            if (isQuoted) continue;
            if (c == ';') return ';';
            if (c == '\n') break;
        }
        return ',';
    }

    static bool isEmpty(const CsvRow& row)
    {
        return std::all_of(row.fields.begin(), row.fields.end(),
                           [](const std::string& field) { return field.empty(); });
    }

    CsvRow readRow()
    {
        CsvRow row;
        row.line = m_line;
        do
            row.fields.push_back(readField());
        while (takes(m_separator));
        takes('\r');
        if (takes('\n')) ++m_line;
        return row;
    }

    bool takes(char c)
    {
        if (m_at >= m_text.size() || m_text[m_at] != c) return false;
        ++m_at;
        return true;
    }

    bool isAtEndOfField() const
    {
        if (m_at >= m_text.size()) return true;
        const char c = m_text[m_at];
        return c == m_separator || c == '\n' || (c == '\r' && m_text.compare(m_at, 2, "\r\n") == 0);
    }

    std::string readField()
    {
        std::string field;
        if (takes('"')) {
            field = readQuoted();
            if (!isAtEndOfField()) report(m_line, "text follows the closing quote of a field");
        }
        while (!isAtEndOfField())
            field += m_text[m_at++];
        return field;
    }

    /// The rest of a quoted field behind its first quote; a doubled quote stands for one.
    std::string readQuoted()
    {
        const std::size_t firstLine = m_line;
        std::string field;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"' && !takes('"')) return field;
            if (c == '\n') ++m_line;
            field += c;
        }
        report(firstLine, "a quoted field is not closed");
        m_isOpen = true;
        return field;
    }

    void report(std::size_t line, std::string message)
    {
        m_findings.add(Code::csv_syntax, Place{m_file, line, 0, "", ""}, std::move(message));
    }

    const std::string& m_text;
    const std::string& m_file;
    Findings& m_findings;
    char m_separator;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
    bool m_isOpen = false;  // a quoted field ran to the end: what the lines are is not known
};

bool needsQuotes(const std::string& field)
{
    if (field.empty()) return false;
    return field.front() == ' ' || field.back() == ' ' ||
           field.find_first_of(",;\"\r\n\t") != std::string::npos;
}

std::string quotedField(const std::string& field)
{
    std::string quoted = "\"";
    for (const char c : field) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace

std::optional<CsvTable> parseCsv(const std::string& text, const std::string& file, Findings& findings)
{
    return CsvParser(text, file, findings).parse();
}

std::string csvLine(const std::vector<std::string>& fields)
{
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0) line += ',';
        line += needsQuotes(fields[i]) ? quotedField(fields[i]) : fields[i];
    }
    return line + "\r\n";
}

}  // namespace kit
