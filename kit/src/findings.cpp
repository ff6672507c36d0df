#include "findings.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace kit
{

namespace
{

using Json = nlohmann::ordered_json;

/// "FILE:LINE:COLUMN: POINTER (OBJECT): ", without the parts that do not apply.
std::string placeText(const Place& place)
{
    std::string text = oneLine(place.file);
    if (place.line > 0) text += (text.empty() ? "line " : ":") + std::to_string(place.line);
    if (place.line > 0 && place.column > 0) text += ':' + std::to_string(place.column);
    std::string inside = oneLine(place.pointer);
    if (!place.object.empty())
        inside += inside.empty() ? oneLine(place.object) : " (" + oneLine(place.object) + ')';
    if (!text.empty() && !inside.empty()) text += ": ";
    text += inside;
    return text.empty() ? text : text + ": ";
}

Json jsonOf(const Finding& finding)
{
    Json object{{"code", rowOf(finding.code).code}, {"severity", severityName(finding.severity)}};
    const Place& place = finding.place;
    if (!place.file.empty()) object["file"] = place.file;
    if (place.line > 0) object["line"] = place.line;
    if (place.column > 0) object["column"] = place.column;
    if (!place.pointer.empty()) object["pointer"] = place.pointer;
    if (!place.object.empty()) object["object"] = place.object;
    object["message"] = finding.message;
    object["remedy"] = finding.remedy;
    if (!finding.objects.empty()) object["objects"] = finding.objects;
    if (!finding.numbers.empty()) {
        Json numbers = Json::array();
        for (const NamedNumber& number : finding.numbers)
            numbers.push_back({{"name", number.name}, {"value", number.value}, {"unit", number.unit}});
        object["numbers"] = std::move(numbers);
    }
    return object;
}

std::string restText(Code code, std::size_t count)
{
    return std::to_string(count) + " more of the same kind are not shown [" + std::string(rowOf(code).code) +
           ']';
}

}  // namespace

Finding& Findings::add(Code code, Place place, std::string message)
{
    return add(code, std::move(place), std::move(message), std::string(rowOf(code).remedy));
}

Finding& Findings::add(Code code, Place place, std::string message, std::string remedy)
{
    Finding finding;
    finding.code = code;
    finding.severity = rowOf(code).severity;
    finding.place = std::move(place);
    finding.message = std::move(message);
    finding.remedy = std::move(remedy);
    return add(std::move(finding));
}

Finding& Findings::add(Finding finding)
{
    m_count.resize(static_cast<std::size_t>(Code::kCount), 0);
    std::size_t& count = m_count[static_cast<std::size_t>(finding.code)];
    const bool isKept = count < kMostOfOneCode;
    const bool isError = finding.severity == Severity::error;
    if (isKept)
        m_list.push_back(std::move(finding));
    else
        m_notKept = std::move(finding);
    // only now: there may have been no memory for it
    ++count;
    if (isError) ++m_errorCount;
    return isKept ? m_list.back() : m_notKept;
}

void Findings::append(const Findings& others)
{
    for (const Finding& finding : others.m_list)
        add(finding);
}

std::size_t Findings::countOf(Severity severity) const
{
    return static_cast<std::size_t>(
        std::count_if(m_list.begin(), m_list.end(),
                      [severity](const Finding& finding) { return finding.severity == severity; }));
}

std::size_t Findings::notKept(Code code) const
{
    const auto index = static_cast<std::size_t>(code);
    return m_count.empty() || m_count[index] <= kMostOfOneCode ? 0 : m_count[index] - kMostOfOneCode;
}

void Findings::clear()
{
    *this = Findings();
}

std::string Findings::text() const
{
    std::string text;
    for (const Finding& finding : m_list)
        text += lineOf(finding) + '\n';
    for (std::size_t i = 0; i < m_count.size(); ++i) {
        const auto code = static_cast<Code>(i);
        if (notKept(code) > 0) text += restText(code, notKept(code)) + '\n';
    }
    return text;
}

std::string Findings::json() const
{
    Json list = Json::array();
    for (const Finding& finding : m_list)
        list.push_back(jsonOf(finding));
    return list.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::string lineOf(const Finding& finding)
{
    std::string line = placeText(finding.place) + oneLine(finding.message);
    if (!finding.remedy.empty()) line += "; " + oneLine(finding.remedy);
    return line + " [" + std::string(rowOf(finding.code).code) + ']';
}

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

}  // namespace kit
