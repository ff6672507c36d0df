// json_document.h: a file's text as a JSON document, with syntax errors and repeated keys reported by place.
#ifndef TAVELL_TOOLS_JSON_DOCUMENT_H
#define TAVELL_TOOLS_JSON_DOCUMENT_H

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "problems.h"

/// The whole text of a file; nothing, and a problem, when it is missing, a directory, unreadable or above 512
/// MiB.
std::optional<std::string> readFileText(const std::string& path, Problems& problems);

/// The document in text (JSON, RFC 8259); nothing, and a problem with line and column, at the first syntax
/// error or number out of range. A key that an object holds twice is a problem too, at its JSON pointer.
std::optional<nlohmann::json> parseJson(const std::string& text, Problems& problems);

#endif
