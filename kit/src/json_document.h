// json_document.h: a file's text as a JSON document, with syntax errors and repeated keys reported by place,
// and the lines of its values.
#ifndef TAVELL_KIT_JSON_DOCUMENT_H
#define TAVELL_KIT_JSON_DOCUMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

#include "findings.h"

namespace kit
{

/// How deep objects and arrays of a document may be nested.
constexpr std::size_t kDeepestNesting = 100;

/// A document and the lines (from 1) of the items of the arrays among its top-level members.
// NOLINTNEXTLINE(bugprone-exception-escape): moving a JSON value and a map throws nothing.
struct JsonDocument {
    nlohmann::json root;
    std::unordered_map<std::string, std::vector<std::uint32_t>> itemLines;
};

/// The document in text (JSON, RFC 8259); nothing, and a finding with line and column, at the first syntax
/// error or nesting beyond kDeepestNesting. A key that an object holds twice is a finding too, and so is each
/// number that is too large to be stored, which is infinite in the document. file names the text in findings.
std::optional<JsonDocument> parseJson(const std::string& text, const std::string& file, Findings& findings);

/// Adds the findings of a document to others in the order of their lines. The line of each one is that of the
/// innermost value of its pointer's path which the text has. The text is one that parseJson has read.
void appendWithLines(const std::string& text, const Findings& found, Findings& findings);

/// A JSON pointer (RFC 6901) with one more key.
std::string pointerTo(const std::string& pointer, std::string_view key);

}  // namespace kit

#endif
