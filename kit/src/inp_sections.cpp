#include "inp_sections.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace kit
{

namespace
{

struct HeadingRow {
    InpSection section;
    std::string_view start;    // what a heading must start with
    std::string_view heading;  // in full
};

// clang-format off
constexpr HeadingRow kHeadings[] = {
    {InpSection::title,       "[TITL", "[TITLE]"},
    {InpSection::junctions,   "[JUNC", "[JUNCTIONS]"},
    {InpSection::reservoirs,  "[RESE", "[RESERVOIRS]"},
    {InpSection::tanks,       "[TANK", "[TANKS]"},
    {InpSection::pipes,       "[PIPE", "[PIPES]"},
    {InpSection::pumps,       "[PUMP", "[PUMPS]"},
    {InpSection::valves,      "[VALV", "[VALVES]"},
    {InpSection::demands,     "[DEMA", "[DEMANDS]"},
    {InpSection::emitters,    "[EMIT", "[EMITTERS]"},
    {InpSection::leakage,     "[LEAK", "[LEAKAGE]"},
    {InpSection::status,      "[STAT", "[STATUS]"},
    {InpSection::patterns,    "[PATT", "[PATTERNS]"},
    {InpSection::curves,      "[CURV", "[CURVES]"},
    {InpSection::controls,    "[CONT", "[CONTROLS]"},
    {InpSection::rules,       "[RULE", "[RULES]"},
    {InpSection::options,     "[OPTI", "[OPTIONS]"},
    {InpSection::times,       "[TIME", "[TIMES]"},
    {InpSection::coordinates, "[COOR", "[COORDINATES]"},
    {InpSection::vertices,    "[VERT", "[VERTICES]"},
    {InpSection::energy,      "[ENER", "[ENERGY]"},
    {InpSection::quality,     "[QUAL", "[QUALITY]"},
    {InpSection::sources,     "[SOUR", "[SOURCES]"},
    {InpSection::reactions,   "[REAC", "[REACTIONS]"},
    {InpSection::mixing,      "[MIXI", "[MIXING]"},
    {InpSection::report,      "[REPO", "[REPORT]"},
    {InpSection::tags,        "[TAG",  "[TAGS]"},
    {InpSection::labels,      "[LABE", "[LABELS]"},
    {InpSection::backdrop,    "[BACK", "[BACKDROP]"},
    {InpSection::roughness,   "[ROUG", "[ROUGHNESS]"},
    {InpSection::end,         "[END",  "[END]"},
};
// clang-format on

constexpr char kBlank = ' ';

InpSection findSection(std::string_view heading)
{
    for (const HeadingRow& row : kHeadings) {
        if (startsWithWord(heading, row.start)) return row.section;
    }
    return InpSection::unknown;
}

char upper(char letter)
{
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool isControl(char letter)
{
    const auto code = static_cast<unsigned char>(letter);
    return code < 0x20 || code == 0x7f;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

/// Appends the fields of a line: parts between blanks, or between double quotes.
void splitFields(std::string_view text, std::vector<std::string_view>& fields)
{
    std::size_t at = text.find_first_not_of(kBlank);
    while (at != std::string_view::npos) {
        const bool isQuoted = text[at] == '"';
        if (isQuoted) ++at;
        std::size_t end = isQuoted ? text.find('"', at) : text.find_first_of(kBlank, at);
        if (end == std::string_view::npos) end = text.size();
        fields.push_back(text.substr(at, end - at));
        if (isQuoted && end < text.size()) ++end;
        at = text.find_first_not_of(kBlank, end);
    }
}

std::string rangeText(InpRange range)
{
    return range == InpRange::positive ? "above 0" : "0 or more";
}

}  // namespace

std::string_view sectionHeading(InpSection section)
{
    for (const HeadingRow& row : kHeadings) {
        if (row.section == section) return row.heading;
    }
    return "";
}

InpDocument::InpDocument(std::string text, std::string file, Findings& findings)
    : m_text(std::move(text)), m_file(std::move(file))
{
    // Tabs and other control characters separate fields; no name or title can then hold one.
    for (char& letter : m_text) {
        if (isControl(letter) && letter != '\n' && letter != '\r') letter = ' ';
    }
    InpSection section = InpSection::kCount;
    const std::string_view whole = m_text;
    std::size_t number = 1;
    for (std::size_t at = 0; at < whole.size() && section != InpSection::end; ++number) {
        // CR LF, LF and the lone CR of old systems all end a line.
        std::size_t end = whole.find_first_of("\r\n", at);
        if (end == std::string_view::npos) end = whole.size();
        addLine(whole.substr(at, end - at), number, section, findings);
        at = end + 1;
        if (end + 1 < whole.size() && whole[end] == '\r' && whole[end + 1] == '\n') ++at;
    }
}

void InpDocument::addLine(std::string_view text, std::size_t number, InpSection& section, Findings& findings)
{
    const std::string_view whole = trimmed(text);
    const std::string_view content = trimmed(text.substr(0, text.find(';')));
    if (!content.empty() && content.front() == '[') {
        section = findSection(content);
        if (section == InpSection::unknown)
            findings.add(Code::inp_unknown_section, {m_file, number, 0, std::string(content), ""},
                         "the section " + oneLine(content) + " is unknown and was left out");
        return;
    }
    // A title is any text; only lines that start with a semicolon are comments there.
    const bool isTitle = section == InpSection::title && !whole.empty() && whole.front() != ';';
    if (content.empty() && !isTitle) return;
    if (section == InpSection::kCount) {
        findings.add(Code::inp_stray_text, {m_file, number, 0, "", ""},
                     "the line " + inQuotes(content) + " stands before the first section");
        return;
    }
    InpLine line{number, isTitle ? whole : content, m_fields.size(), 0};
    splitFields(line.text, m_fields);
    line.fieldCount = m_fields.size() - line.firstField;
    m_lines[static_cast<std::size_t>(section)].push_back(line);
}

bool InpReader::isWord(std::size_t position, std::string_view word) const
{
    return text(position).size() == word.size() && startsWithWord(text(position), word);
}

bool InpReader::hasFields(std::size_t least, std::string_view what)
{
    if (count() >= least) return true;
    add(Code::inp_missing_field,
        "the line has " + std::to_string(count()) + (count() == 1 ? " field" : " fields") + " of " +
            std::to_string(least),
        "give " + std::string(what));
    return false;
}

std::optional<double> InpReader::number(std::size_t position, std::string_view what, InpRange range)
{
    if (position >= count()) {
        add(Code::inp_missing_field, std::string(what) + " is missing");
        return std::nullopt;
    }
    const std::optional<double> value = inpNumber(text(position));
    if (!value) {
        add(Code::inp_bad_number,
            std::string(what) + " is " + inQuotes(text(position)) + ", which is no number");
        return std::nullopt;
    }
    const bool isLow =
        range == InpRange::positive ? *value <= 0.0 : range == InpRange::notNegative && *value < 0.0;
    if (!isLow) return value;
    add(Code::inp_out_of_range, std::string(what) + " is " + std::string(text(position)),
        "give a number that is " + rangeText(range));
    return std::nullopt;
}

std::optional<double> InpReader::numberOr(std::size_t position, std::string_view what, double fallback,
                                          InpRange range)
{
    if (position >= count()) return fallback;
    return number(position, what, range);
}

Finding& InpReader::add(Code code, std::string message)
{
    return m_findings.add(code, place(), std::move(message));
}

Finding& InpReader::add(Code code, std::string message, std::string remedy)
{
    return m_findings.add(code, place(), std::move(message), std::move(remedy));
}

Place InpReader::place() const
{
    return {m_document.file(), m_line.number, 0, std::string(sectionHeading(m_section)), m_object};
}

std::optional<double> inpNumber(std::string_view text)
{
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (!text.empty() && text.front() == '-' && text.size() > 1 && text[1] == '+') return std::nullopt;
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::string inpUpper(std::string_view text)
{
    std::string result(text);
    for (char& letter : result)
        letter = upper(letter);
    return result;
}

bool startsWithWord(std::string_view text, std::string_view word)
{
    if (text.size() < word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (upper(text[i]) != upper(word[i])) return false;
    }
    return true;
}

}  // namespace kit
