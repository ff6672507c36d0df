// message_codes.h: every code of a finding. The rows are in messages/*.inc, one list per area; docs/messages/ is
// generated from them.
#ifndef TAVELL_KIT_MESSAGE_CODES_H
#define TAVELL_KIT_MESSAGE_CODES_H

#include <optional>
#include <string_view>

namespace kit
{

enum class Severity { error, warning, remark };

/// The codes. A code's text is its name with hyphens for underscores: no_pressure is "no-pressure".
enum class Code {
#define TAVELL_MESSAGE(name, severity, title, meaning, remedy) name,
#include "messages/all.inc"
#undef TAVELL_MESSAGE
    kCount
};

/// A row of the table of messages.
struct MessageRow {
    std::string_view code;
    Severity severity;
    std::string_view title;    // a few words
    std::string_view meaning;  // what it means and where it usually comes from; one or more sentences
    std::string_view remedy;   // what to do about it, as a sentence in lower case without a full stop
};

const MessageRow& rowOf(Code code);

/// The code of a text such as "no-pressure"; nothing when there is none.
std::optional<Code> findCode(std::string_view text);

/// "error", "warning", "remark".
std::string_view severityName(Severity severity);

}  // namespace kit

#endif
