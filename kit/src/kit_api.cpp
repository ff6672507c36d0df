// Texts, versions and findings of the C interface.
#include "kit_api.h"

#include <cstdlib>
#include <cstring>

#include <nlohmann/json.hpp>

#ifndef TAVELL_VERSION
#define TAVELL_VERSION "development"
#endif

namespace kit
{

void refuse(std::string message, std::string remedy)
{
    throw Refusal{{}, std::move(message), std::move(remedy)};
}

void record(tvkFindings* findings, Code code, const char* what) noexcept
{
    if (findings == nullptr) return;
    try {
        findings->list.add(code, {}, what);
    } catch (...) {
        findings->unrecorded = code == Code::out_of_memory ? "out-of-memory" : "internal-error";
    }
}

void recordRefusal(tvkFindings* findings, Refusal& refusal) noexcept
{
    if (findings == nullptr) return;
    try {
        if (refusal.remedy.empty())
            findings->list.add(Code::bad_option, refusal.place, refusal.message);
        else
            findings->list.add(Code::bad_option, refusal.place, refusal.message, refusal.remedy);
    } catch (...) {
        findings->unrecorded = "out-of-memory";
    }
}

char* newText(std::string_view text)
{
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

tvkStatus giveText(char** target, std::string_view text)
{
    required(target, "text") = newText(text);
    return TVK_OK;
}

namespace
{

/// Texts of a finding that could not be recorded.
const char* const kUnrecordedMessage = "memory ran out while a finding was made";
const char* const kUnrecordedRemedy = "close other programs, or split the network";

/// A finding at a position; null when there is none, or none that was recorded.
const Finding* findingAt(const tvkFindings* findings, size_t position)
{
    if (findings == nullptr || position >= findings->list.list().size()) return nullptr;
    return &findings->list.list()[position];
}

/// Whether a position is that of the finding for which there was no memory.
bool isUnrecorded(const tvkFindings* findings, size_t position)
{
    return findings != nullptr && findings->unrecorded != nullptr && position == findings->list.list().size();
}

template <class Text>
const char* textAt(const tvkFindings* findings, size_t position, const char* unrecorded, Text&& text)
{
    if (const Finding* finding = findingAt(findings, position)) return text(*finding);
    return isUnrecorded(findings, position) ? unrecorded : "";
}

const NamedNumber* numberAt(const tvkFindings* findings, size_t position, size_t number)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr || number >= finding->numbers.size() ? nullptr : &finding->numbers[number];
}

}  // namespace

}  // namespace kit

using kit::Finding;
using kit::findingAt;
using kit::guarded;
using kit::required;

const char* tvkVersion(void)
{
    return TAVELL_VERSION;
}

void tvkFreeText(char* text)
{
    std::free(text);
}

tvkFindings* tvkNewFindings(void)
{
    return new (std::nothrow) tvkFindings;
}

void tvkFreeFindings(tvkFindings* findings)
{
    delete findings;
}

void tvkClearFindings(tvkFindings* findings)
{
    if (findings == nullptr) return;
    findings->list.clear();
    findings->unrecorded = nullptr;
}

tvkStatus tvkAppendFindings(tvkFindings* findings, const tvkFindings* others)
{
    return guarded(findings, [&](kit::Findings& list) {
        required(findings, "findings");
        const tvkFindings& source = required(others, "others");
        if (source.unrecorded != nullptr) findings->unrecorded = source.unrecorded;
        list.append(source.list);
        return TVK_OK;
    });
}

size_t tvkFindingsCount(const tvkFindings* findings)
{
    if (findings == nullptr) return 0;
    return findings->list.list().size() + (findings->unrecorded != nullptr ? 1 : 0);
}

size_t tvkFindingsCountOf(const tvkFindings* findings, int severity)
{
    if (findings == nullptr || severity < TVK_ERROR || severity > TVK_REMARK) return 0;
    return kit::guardedValue(size_t{0}, [&] {
        const auto wanted = static_cast<kit::Severity>(severity);
        size_t count = findings->list.countOf(wanted);
        for (int i = 0; i < static_cast<int>(kit::Code::kCount); ++i) {
            const auto code = static_cast<kit::Code>(i);
            if (kit::rowOf(code).severity == wanted) count += findings->list.notKept(code);
        }
        if (findings->unrecorded != nullptr && severity == TVK_ERROR) ++count;
        return count;
    });
}

tvkStatus tvkFindingsText(const tvkFindings* findings, char** text)
{
    if (text != nullptr) *text = nullptr;
    return guarded(nullptr, [&](kit::Findings&) {
        std::string lines = required(findings, "findings").list.text();
        if (findings->unrecorded != nullptr) {
            lines += kit::kUnrecordedMessage;
            lines += std::string("; ") + kit::kUnrecordedRemedy + " [" + findings->unrecorded + "]\n";
        }
        return kit::giveText(text, lines);
    });
}

tvkStatus tvkFindingsJson(const tvkFindings* findings, char** text)
{
    if (text != nullptr) *text = nullptr;
    return guarded(nullptr, [&](kit::Findings&) {
        std::string array = required(findings, "findings").list.json();
        if (findings->unrecorded != nullptr) {
            array.pop_back();
            if (!findings->list.isEmpty()) array += ',';
            array += std::string(R"({"code": ")") + findings->unrecorded +
                     R"(", "severity": "error", "message": ")" + kit::kUnrecordedMessage +
                     R"(", "remedy": ")" + kit::kUnrecordedRemedy + R"("}])";
        }
        return kit::giveText(text, array);
    });
}

const char* tvkFindingCode(const tvkFindings* findings, size_t position)
{
    return kit::textAt(findings, position, findings == nullptr ? "" : findings->unrecorded,
                       [](const Finding& finding) { return kit::rowOf(finding.code).code.data(); });
}

int tvkFindingSeverity(const tvkFindings* findings, size_t position)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr ? static_cast<int>(TVK_ERROR) : static_cast<int>(finding->severity);
}

const char* tvkFindingMessage(const tvkFindings* findings, size_t position)
{
    return kit::textAt(findings, position, kit::kUnrecordedMessage,
                       [](const Finding& finding) { return finding.message.c_str(); });
}

const char* tvkFindingRemedy(const tvkFindings* findings, size_t position)
{
    return kit::textAt(findings, position, kit::kUnrecordedRemedy,
                       [](const Finding& finding) { return finding.remedy.c_str(); });
}

const char* tvkFindingFile(const tvkFindings* findings, size_t position)
{
    return kit::textAt(findings, position, "",
                       [](const Finding& finding) { return finding.place.file.c_str(); });
}

size_t tvkFindingLine(const tvkFindings* findings, size_t position)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr ? 0 : finding->place.line;
}

size_t tvkFindingColumn(const tvkFindings* findings, size_t position)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr ? 0 : finding->place.column;
}

const char* tvkFindingPointer(const tvkFindings* findings, size_t position)
{
    return kit::textAt(findings, position, "",
                       [](const Finding& finding) { return finding.place.pointer.c_str(); });
}

const char* tvkFindingObject(const tvkFindings* findings, size_t position)
{
    return kit::textAt(findings, position, "",
                       [](const Finding& finding) { return finding.place.object.c_str(); });
}

size_t tvkFindingObjectCount(const tvkFindings* findings, size_t position)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr ? 0 : finding->objects.size();
}

const char* tvkFindingObjectAt(const tvkFindings* findings, size_t position, size_t object)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr || object >= finding->objects.size() ? "" : finding->objects[object].c_str();
}

size_t tvkFindingNumberCount(const tvkFindings* findings, size_t position)
{
    const Finding* finding = findingAt(findings, position);
    return finding == nullptr ? 0 : finding->numbers.size();
}

const char* tvkFindingNumberName(const tvkFindings* findings, size_t position, size_t number)
{
    const kit::NamedNumber* found = kit::numberAt(findings, position, number);
    return found == nullptr ? "" : found->name.c_str();
}

double tvkFindingNumberValue(const tvkFindings* findings, size_t position, size_t number)
{
    const kit::NamedNumber* found = kit::numberAt(findings, position, number);
    return found == nullptr ? 0.0 : found->value;
}

const char* tvkFindingNumberUnit(const tvkFindings* findings, size_t position, size_t number)
{
    const kit::NamedNumber* found = kit::numberAt(findings, position, number);
    return found == nullptr ? "" : found->unit.c_str();
}
