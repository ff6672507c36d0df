#include "object_reader.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>

#include <nlohmann/json.hpp>

#include "json_document.h"

namespace kit
{

namespace
{

using nlohmann::json;

constexpr std::size_t kShownLength = 40;       // [byte] of a value in a message
constexpr std::size_t kFewLetters = 2;         // that a mistyped word may differ in
constexpr std::size_t kLongestCompared = 100;  // [byte] of words that are compared letter by letter
constexpr std::size_t kMostListed = 30;        // candidates that a message names

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

/// "above 0"; a temperature is above the absolute zero, whatever its unit.
std::string rangeText(const NumberRule& rule)
{
    const bool isTemperature = rule.quantity == Quantity::temperature;
    switch (rule.range) {
    case Range::any:
        return "finite";
    case Range::positive:
        return isTemperature ? "above absolute zero" : "above 0";
    case Range::notNegative:
        return isTemperature ? "at or above absolute zero" : "0 or above";
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

bool isNumberAlone(const std::string& text)
{
    return text.find_first_not_of("0123456789.+-eE \t") == std::string::npos;
}

std::string shortened(std::string text)
{
    if (text.size() <= kShownLength) return text;
    std::size_t end = kShownLength;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U)
        --end;
    return text.substr(0, end) + "...";
}

/// Whether a value stands for a number that is too large to be stored; the parser has said so.
bool isTooLarge(const json& value)
{
    return value.is_number_float() && std::isinf(value.get<double>());
}

/// A number without a unit of its own in SI units.
double inSi(const json& value, const NumberRule& rule, const Reading& reading)
{
    const double number = value.get<double>();
    if (reading.units.empty()) return number;
    return toSi(number, displayUnit(reading.units, rule.quantity), rule.quantity);
}

/// Whether a value is a text that needs no finding.
bool isGoodText(const json& value)
{
    if (!value.is_string()) return false;
    const auto& text = value.get_ref<const std::string&>();
    return !text.empty() && !hasControlCharacter(text);
}

/// The SI value of a text with a unit; nothing, and a finding, otherwise.
std::optional<double> numberInText(const json& value, const NumberRule& rule, const Reading& reading,
                                   const std::string& pointer, const std::string& object)
{
    const auto& text = value.get_ref<const std::string&>();
    if (rule.quantity == Quantity::none || isNumberAlone(text)) {
        reading.report(Code::wrong_type, pointer, object,
                       shownValue(value) + (rule.quantity == Quantity::none ? " is text instead of a number"
                                                                            : " is text without a unit"),
                       "write " + reading.asked(rule) + " as a number without quotes" +
                           (rule.quantity == Quantity::none ? "" : ", or add its unit"));
        return std::nullopt;
    }
    std::string why;
    const auto number = parseQuantity(text, rule.quantity, why);
    if (!number)
        reading.report(Code::unknown_unit, pointer, object,
                       shownValue(value) + " is not understood: " + oneLine(why),
                       "give " + reading.asked(rule) + " as a number, or as a text with its unit");
    return number;
}

}  // namespace

bool isInRange(double value, Range range)
{
    if (!std::isfinite(value)) return false;
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

std::string shownValue(const json& value)
{
    if (value.is_object()) return "an object";
    if (value.is_array()) return "an array";
    if (isTooLarge(value)) return "a number that is too large";
    return shortened(value.dump(-1, ' ', false, json::error_handler_t::replace));
}

std::string suggestion(std::string_view word, const std::vector<std::string>& candidates)
{
    std::string all;
    const std::string* nearest = nullptr;
    std::size_t least = 0;
    std::size_t listed = 0;
    for (const std::string& candidate : candidates) {
        if (word.size() <= kLongestCompared && candidate.size() <= kLongestCompared) {
            const std::size_t distance = editDistance(word, candidate);
            if (nearest == nullptr || distance < least) {
                nearest = &candidate;
                least = distance;
            }
        }
        if (listed < kMostListed) all += (all.empty() ? "" : ", ") + inQuotes(candidate);
        if (listed == kMostListed) all += " ...";
        ++listed;
    }
    const bool isNear =
        nearest != nullptr && least < word.size() && least <= std::max(kFewLetters, word.size() / 3);
    return isNear ? "did you mean " + inQuotes(*nearest) + '?' : "give one of " + all;
}

Finding& Reading::report(Code code, const std::string& pointer, const std::string& object,
                         std::string message, std::string remedy) const
{
    return findings.add(code, Place{file, 0, 0, pointer, object}, std::move(message), std::move(remedy));
}

Finding& Reading::report(Code code, const std::string& pointer, const std::string& object,
                         std::string message) const
{
    return findings.add(code, Place{file, 0, 0, pointer, object}, std::move(message));
}

std::string Reading::asked(const NumberRule& rule) const
{
    const std::string unit = displayUnit(units, rule.quantity);
    return unit.empty() ? rule.meaning : std::string(rule.meaning) + " in " + unit;
}

std::optional<double> goodNumber(const json& value, const NumberRule& rule, const Reading& reading)
{
    if (!value.is_number()) return std::nullopt;
    const double number = inSi(value, rule, reading);
    if (!isInRange(number, rule.range)) return std::nullopt;
    return number;
}

std::optional<double> checkedNumber(const json& value, const NumberRule& rule, const Reading& reading,
                                    const std::string& pointer, const std::string& object)
{
    std::optional<double> number;
    if (value.is_string()) {
        number = numberInText(value, rule, reading, pointer, object);
        if (!number) return std::nullopt;
    } else if (isTooLarge(value)) {
        return std::nullopt;
    } else if (value.is_number()) {
        number = inSi(value, rule, reading);
    } else {
        reading.report(Code::wrong_type, pointer, object, shownValue(value) + " is no number",
                       "give " + reading.asked(rule));
        return std::nullopt;
    }
    if (isInRange(*number, rule.range)) return number;
    reading.report(Code::value_out_of_range, pointer, object,
                   shownValue(value) + " is not " + rangeText(rule), "give " + reading.asked(rule));
    return std::nullopt;
}

std::optional<std::string> checkedText(const json& value, std::string_view meaning, const Reading& reading,
                                       const std::string& pointer, const std::string& object)
{
    const std::string remedy = "give between quotes " + std::string(meaning);
    if (!value.is_string()) {
        reading.report(Code::wrong_type, pointer, object, shownValue(value) + " is no text", remedy);
        return std::nullopt;
    }
    const auto& text = value.get_ref<const std::string&>();
    if (text.empty()) {
        reading.report(Code::empty_text, pointer, object, "the text is empty", remedy);
        return std::nullopt;
    }
    if (hasControlCharacter(text)) {
        reading.report(Code::control_character, pointer, object,
                       shownValue(value) + " has a line end or another control character");
        return std::nullopt;
    }
    return text;
}

ObjectReader::ObjectReader(const json& value, std::string pointer, std::string object, const Keys& keys,
                           const Reading& reading)
    : m_value(value), m_pointer(std::move(pointer)), m_object(std::move(object)), m_keys(keys),
      m_reading(reading)
{
    if (isObject())
        refuseUnknownKeys();
    else
        reportObject(Code::wrong_type, shownValue(value) + " is no object", "write { } with its keys");
}

const json* ObjectReader::find(const char* key) const
{
    assert(std::find(m_keys.begin(), m_keys.end(), key) != m_keys.end() && "a key that is in no table");
    if (!isObject()) return nullptr;
    const auto found = m_value.find(key);
    return found == m_value.end() ? nullptr : &*found;
}

const json* ObjectReader::member(const char* key, Need need, std::string_view meaning) const
{
    const json* value = find(key);
    if (value == nullptr && need == Need::required && isObject())
        reportObject(Code::missing_key, inQuotes(key) + " is missing", "give " + std::string(meaning));
    return value;
}

std::optional<double> ObjectReader::number(const char* key, const NumberRule& rule, Need need) const
{
    const json* value = find(key);
    if (value == nullptr) {
        if (need == Need::required) member(key, need, m_reading.asked(rule));
        return std::nullopt;
    }
    if (const auto number = goodNumber(*value, rule, m_reading)) return number;
    return checkedNumber(*value, rule, m_reading, pointerOf(key), m_object);
}

std::optional<std::string> ObjectReader::text(const char* key, Need need, std::string_view meaning) const
{
    const json* value = member(key, need, meaning);
    if (value == nullptr) return std::nullopt;
    if (isGoodText(*value)) return value->get_ref<const std::string&>();
    return checkedText(*value, meaning, m_reading, pointerOf(key), m_object);
}

std::optional<bool> ObjectReader::boolean(const char* key, std::string_view meaning) const
{
    const json* value = member(key, Need::optional, meaning);
    if (value == nullptr) return std::nullopt;
    if (value->is_boolean()) return value->get<bool>();
    report(Code::wrong_type, key, shownValue(*value) + " is neither true nor false",
           "write true or false without quotes: " + std::string(meaning));
    return std::nullopt;
}

const json* ObjectReader::array(const char* key, Need need, std::string_view meaning) const
{
    const json* value = member(key, need, meaning);
    if (value == nullptr || value->is_array()) return value;
    report(Code::wrong_type, key, shownValue(*value) + " is no array",
           "write [ ] with " + std::string(meaning));
    return nullptr;
}

void ObjectReader::refuseUnknownKeys() const
{
    for (const auto& entry : m_value.get_ref<const json::object_t&>()) {
        const std::string& key = entry.first;
        if (std::find(m_keys.begin(), m_keys.end(), key) != m_keys.end()) continue;
        report(Code::unknown_key, key, "the key " + inQuotes(shortened(key)) + " is unknown here",
               suggestion(key, m_keys));
    }
}

std::string ObjectReader::pointerOf(std::string_view key) const
{
    return pointerTo(m_pointer, key);
}

void ObjectReader::report(Code code, std::string_view key, std::string message, std::string remedy) const
{
    m_reading.report(code, pointerOf(key), m_object, std::move(message), std::move(remedy));
}

void ObjectReader::reportObject(Code code, std::string message, std::string remedy) const
{
    m_reading.report(code, m_pointer, m_object, std::move(message), std::move(remedy));
}

}  // namespace kit
