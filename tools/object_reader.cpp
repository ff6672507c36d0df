#include "object_reader.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace
{

using nlohmann::json;

constexpr std::size_t kShownLength = 40;  // [byte] of a value in a message
constexpr std::size_t kFewLetters = 2;    // that a mistyped word may differ in

/// Number of single-letter insertions, deletions and replacements between two texts, Levenshtein (1966).
std::size_t editDistance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row[b.size()];
}

bool isInRange(double value, Range range)
{
    switch (range) {
    case Range::any:
        return true;
    case Range::positive:
        return value > 0.0;
    case Range::notNegative:
        return value >= 0.0;
    case Range::notZero:
        return value != 0.0;
    }
    return false;
}

const char* rangeText(Range range)
{
    switch (range) {
    case Range::any:
        return "finite";
    case Range::positive:
        return "above 0";
    case Range::notNegative:
        return "0 or above";
    case Range::notZero:
        return "other than 0";
    }
    return "";
}

bool hasControlCharacter(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return code < 0x20 || code == 0x7f;
    });
}

}  // namespace

std::string shownValue(const json& value)
{
    if (value.is_object()) return "an object";
    if (value.is_array()) return "an array";
    std::string text = value.dump();
    if (text.size() > kShownLength) {
        std::size_t end = kShownLength;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U)
            --end;
        text = text.substr(0, end) + "...";
    }
    return text;
}

std::string suggestion(std::string_view word, const std::vector<std::string>& candidates)
{
    std::string all;
    const std::string* nearest = nullptr;
    std::size_t least = 0;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = editDistance(word, candidate);
        if (nearest == nullptr || distance < least) {
            nearest = &candidate;
            least = distance;
        }
        all += (all.empty() ? "" : ", ") + inQuotes(candidate);
    }
    const bool isNear = nearest != nullptr && least <= std::max(kFewLetters, word.size() / 3);
    return isNear ? "did you mean " + inQuotes(*nearest) + '?' : "give one of " + all;
}

std::optional<double> checkedNumber(const json& value, Range range, std::string_view meaning,
                                    std::string_view place, Problems& problems)
{
    if (value.is_string()) {
        problems.add(place, shownValue(value) + " is text; write " + std::string(meaning) +
                                " as a number without quotes");
        return std::nullopt;
    }
    if (!value.is_number()) {
        problems.add(place, shownValue(value) + " is no number; give " + std::string(meaning));
        return std::nullopt;
    }
    const double number = value.get<double>();
    if (!std::isfinite(number) || !isInRange(number, range)) {
        problems.add(place,
                     shownValue(value) + " is not " + rangeText(range) + "; give " + std::string(meaning));
        return std::nullopt;
    }
    return number;
}

ObjectReader::ObjectReader(const json& value, std::string pointer, Problems& problems)
    : m_value(value), m_pointer(std::move(pointer)), m_problems(problems)
{
    if (!isObject()) reportObject(shownValue(value) + " is no object; write { } with its keys");
}

void ObjectReader::setLabel(std::string_view label)
{
    m_label = " (" + std::string(label) + ')';
}

const json* ObjectReader::member(const char* key, Need need, std::string_view meaning)
{
    m_known.emplace_back(key);
    if (!isObject()) return nullptr;
    const auto found = m_value.find(key);
    if (found != m_value.end()) return &*found;
    if (need == Need::required) reportObject(inQuotes(key) + " is missing; give " + std::string(meaning));
    return nullptr;
}

std::optional<double> ObjectReader::number(const char* key, Range range, Need need, std::string_view meaning)
{
    const json* value = member(key, need, meaning);
    if (value == nullptr) return std::nullopt;
    return checkedNumber(*value, range, meaning, placeOf(key), m_problems);
}

std::optional<std::string> ObjectReader::text(const char* key, Need need, std::string_view meaning)
{
    const json* value = member(key, need, meaning);
    if (value == nullptr) return std::nullopt;
    if (!value->is_string()) {
        report(key, shownValue(*value) + " is no text; give between quotes " + std::string(meaning));
        return std::nullopt;
    }
    std::string text = value->get<std::string>();
    if (text.empty()) {
        report(key, "is empty; give " + std::string(meaning));
        return std::nullopt;
    }
    if (hasControlCharacter(text)) {
        report(key, shownValue(*value) + " has a line end or another control character; leave it out");
        return std::nullopt;
    }
    return text;
}

const json* ObjectReader::array(const char* key, Need need, std::string_view meaning)
{
    const json* value = member(key, need, meaning);
    if (value == nullptr || value->is_array()) return value;
    report(key, shownValue(*value) + " is no array; write [ ] with " + std::string(meaning));
    return nullptr;
}

void ObjectReader::close()
{
    if (!isObject()) return;
    for (const auto& [key, value] : m_value.items()) {
        if (std::find(m_known.begin(), m_known.end(), key) != m_known.end()) continue;
        reportObject("unknown key " + inQuotes(key) + "; " + suggestion(key, m_known));
    }
}

std::string ObjectReader::pointerOf(std::string_view key) const
{
    json::json_pointer last;
    last.push_back(std::string(key));
    return m_pointer + last.to_string();
}

std::string ObjectReader::placeOf(std::string_view key) const
{
    return pointerOf(key) + m_label;
}

std::string ObjectReader::placeOf(std::string_view key, std::size_t item) const
{
    return pointerOf(key) + '/' + std::to_string(item) + m_label;
}

std::string ObjectReader::place() const
{
    return m_pointer + m_label;
}

void ObjectReader::report(std::string_view key, std::string_view text)
{
    m_problems.add(placeOf(key), text);
}

void ObjectReader::reportObject(std::string_view text)
{
    m_problems.add(place(), text);
}
