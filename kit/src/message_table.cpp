#include "message_codes.h"

#include <array>
#include <cstddef>
#include <string>
#include <unordered_map>

namespace kit
{

namespace
{

constexpr std::size_t kRowCount = static_cast<std::size_t>(Code::kCount);

/// A row as the lists give it, its name with underscores.
struct RawRow {
    const char* name;
    Severity severity;
    const char* title;
    const char* meaning;
    const char* remedy;
};

constexpr std::array<RawRow, kRowCount> kRows{{
#define TAVELL_MESSAGE(name, severity, title, meaning, remedy)                                               \
    {#name, Severity::severity, title, meaning, remedy},
#include "messages/all.inc"
#undef TAVELL_MESSAGE
}};

struct Table {
    std::array<std::string, kRowCount> codes;
    std::array<MessageRow, kRowCount> rows;
    std::unordered_map<std::string_view, Code> byCode;

    Table()
    {
        for (std::size_t i = 0; i < kRowCount; ++i) {
            codes[i] = kRows[i].name;
            for (char& c : codes[i]) {
                if (c == '_') c = '-';
            }
            rows[i] = {codes[i], kRows[i].severity, kRows[i].title, kRows[i].meaning, kRows[i].remedy};
            byCode.emplace(codes[i], static_cast<Code>(i));
        }
    }
};

const Table& table()
{
    static const Table kTable;
    return kTable;
}

}  // namespace

const MessageRow& rowOf(Code code)
{
    return table().rows.at(static_cast<std::size_t>(code));
}

std::optional<Code> findCode(std::string_view text)
{
    const auto found = table().byCode.find(text);
    if (found == table().byCode.end()) return std::nullopt;
    return found->second;
}

std::string_view severityName(Severity severity)
{
    switch (severity) {
    case Severity::error:
        return "error";
    case Severity::warning:
        return "warning";
    case Severity::remark:
        break;
    }
    return "remark";
}

}  // namespace kit
