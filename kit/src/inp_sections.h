// inp_sections.h: the text of an EPANET input file as sections, lines and fields.
#ifndef TAVELL_KIT_INP_SECTIONS_H
#define TAVELL_KIT_INP_SECTIONS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "findings.h"

namespace kit
{

enum class InpSection {
    title,
    junctions,
    reservoirs,
    tanks,
    pipes,
    pumps,
    valves,
    demands,
    emitters,
    leakage,
    status,
    patterns,
    curves,
    controls,
    rules,
    options,
    times,
    coordinates,
    vertices,
    energy,
    quality,
    sources,
    reactions,
    mixing,
    report,
    tags,
    labels,
    backdrop,
    roughness,
    unknown,
    end,
    kCount
};

/// "[PIPES]"
std::string_view sectionHeading(InpSection section);

/// A line with at least one field. Comments are no part of it.
struct InpLine {
    std::size_t number = 0;  // from 1
    std::string_view text;
    std::size_t firstField = 0;  // in the document's list of fields
    std::size_t fieldCount = 0;
};

/// A file in sections. Sections that are given several times are joined. What follows [END] is left out.
class InpDocument
{
public:
    InpDocument(std::string text, std::string file, Findings& findings);
    InpDocument(const InpDocument&) = delete;
    InpDocument& operator=(const InpDocument&) = delete;

    const std::vector<InpLine>& lines(InpSection section) const
    {
        return m_lines[static_cast<std::size_t>(section)];
    }
    std::string_view field(const InpLine& line, std::size_t position) const
    {
        return m_fields[line.firstField + position];
    }
    const std::string& file() const { return m_file; }

private:
    void addLine(std::string_view text, std::size_t number, InpSection& section, Findings& findings);

    std::string m_text;
    std::string m_file;
    std::vector<std::string_view> m_fields;
    std::array<std::vector<InpLine>, static_cast<std::size_t>(InpSection::kCount)> m_lines;
};

/// What a number may be.
enum class InpRange { any, notNegative, positive };

/// One line while it is read: its fields, and findings at its place.
class InpReader
{
public:
    /// object is the line's node or link with its kind, "pipe 7"; "" where there is none.
    InpReader(const InpDocument& document, InpSection section, const InpLine& line, Findings& findings,
              std::string object = {})
        : m_document(document), m_section(section), m_line(line), m_findings(findings),
          m_object(std::move(object))
    {
    }

    std::size_t count() const { return m_line.fieldCount; }
    std::string_view text(std::size_t position) const { return m_document.field(m_line, position); }
    std::string id(std::size_t position) const { return std::string(text(position)); }
    /// Whether a field is this word, in any case of letters.
    bool isWord(std::size_t position, std::string_view word) const;
    std::size_t lineNumber() const { return m_line.number; }

    /// Whether the line has so many fields; otherwise a finding that lists what they are: "ID, node 1, node
    /// 2".
    bool hasFields(std::size_t least, std::string_view what);
    /// The number of a field; nothing and a finding when it is none or out of range. what: "the length".
    std::optional<double> number(std::size_t position, std::string_view what, InpRange range = InpRange::any);
    /// The same where the line may end before the field.
    std::optional<double> numberOr(std::size_t position, std::string_view what, double fallback,
                                   InpRange range = InpRange::any);

    Finding& add(Code code, std::string message);
    Finding& add(Code code, std::string message, std::string remedy);
    Place place() const;

private:
    const InpDocument& m_document;
    InpSection m_section;
    const InpLine& m_line;
    Findings& m_findings;
    std::string m_object;
};

/// The number that a text is; nothing when it is none, or not finite.
std::optional<double> inpNumber(std::string_view text);

/// A text in capital letters of ASCII.
std::string inpUpper(std::string_view text);

/// Whether a text starts with a word, in any case of letters: EPANET takes every keyword by its first
/// letters.
bool startsWithWord(std::string_view text, std::string_view word);

}  // namespace kit

#endif
