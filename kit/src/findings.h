// findings.h: what is to be said about a file, a network or a solve, as values.
#ifndef TAVELL_KIT_FINDINGS_H
#define TAVELL_KIT_FINDINGS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "message_codes.h"

namespace kit
{

/// Where something was found. Parts that do not apply are empty or 0.
struct Place {
    std::string file;
    std::size_t line = 0;    // from 1
    std::size_t column = 0;  // from 1
    std::string pointer;     // JSON pointer (RFC 6901), or the section of a file of another format
    std::string object;      // name of the node, element, curve ... with its kind in front: "node tap 3"
};

/// A number of a finding with its meaning and its unit: {"velocity", 3.2, "m/s"}; unit "" for none.
struct NamedNumber {
    std::string name;
    double value = 0.0;
    std::string unit;
};

/// One thing that is wrong, doubtful or worth knowing.
struct Finding {
    Code code{};
    Severity severity = Severity::error;
    Place place;
    std::string message;               // one sentence: what is so, with the value; no full stop
    std::string remedy;                // what to do about it; that of the code's row when none is given
    std::vector<std::string> objects;  // names of all objects concerned, with their kind: "element pipe 3"
    std::vector<NamedNumber> numbers;
};

/// Findings in the order in which they were made. Beyond a limit per code further ones are only counted.
class Findings
{
public:
    /// How many findings of one code are kept.
    static constexpr std::size_t kMostOfOneCode = 1000;

    /// Adds a finding of a code at a place; severity and remedy are those of the code's row.
    Finding& add(Code code, Place place, std::string message);
    /// The same with a remedy of its own.
    Finding& add(Code code, Place place, std::string message, std::string remedy);
    Finding& add(Finding finding);
    void append(const Findings& others);

    bool isEmpty() const { return m_list.empty(); }
    bool hasErrors() const { return m_errorCount > 0; }
    std::size_t countOf(Severity severity) const;
    const std::vector<Finding>& list() const { return m_list; }
    /// How many findings of a code were made but not kept.
    std::size_t notKept(Code code) const;
    void clear();

    /// One line per finding: "FILE:LINE: POINTER (OBJECT): message; remedy [code]".
    std::string text() const;
    /// A JSON array of objects with code, severity, file, line, column, pointer, object, objects, message, remedy
    /// and numbers (name, value, unit).
    std::string json() const;

private:
    std::vector<Finding> m_list;
    std::vector<std::size_t> m_count;  // by code, all that were made
    Finding m_notKept;                 // the last one beyond the limit
    std::size_t m_errorCount = 0;
};

/// One line of text for one finding, without a line end.
std::string lineOf(const Finding& finding);

/// A text with its control characters written as \xNN, so that it stays on one line of a terminal.
std::string oneLine(std::string_view text);

/// A text between double quotes, made for one line.
std::string inQuotes(std::string_view text);

}  // namespace kit

#endif
