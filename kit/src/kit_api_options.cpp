#include "kit_api_options.h"

#include <charconv>
#include <cmath>

#include "findings.h"
#include "kit_api.h"
#include "number_text.h"
#include "object_reader.h"

namespace kit
{

namespace
{

/// Texts as a list for a message: "a", "b".
template <class Texts> std::string quotedList(const Texts& texts)
{
    std::string list;
    for (const std::string& text : texts)
        list += (list.empty() ? "" : ", ") + inQuotes(text);
    return list;
}

[[noreturn]] void refuseOption(const std::string& key, const std::string& message, const std::string& remedy)
{
    throw Refusal{{"", 0, 0, '/' + key, ""}, message, remedy};
}

}  // namespace

std::optional<double> clockSeconds(std::string_view text)
{
    constexpr double kSecondsOfUnit[] = {3600.0, 60.0, 1.0};
    constexpr int kLargest[] = {1000000, 59, 59};
    double seconds = 0.0;
    std::size_t unit = 0;
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    while (true) {
        int value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc() || value < 0 || value > kLargest[unit]) return std::nullopt;
        seconds += value * kSecondsOfUnit[unit];
        if (next == end) break;
        if (*next != ':' || ++unit > 2) return std::nullopt;
        at = next + 1;
    }
    if (unit == 0) return std::nullopt;
    return seconds;
}

Options::Options(const char* text)
{
    if (text == nullptr || *text == '\0') return;
    m_object = nlohmann::json::parse(text, nullptr, false);
    if (!m_object.is_object())
        refuse("the options " + inQuotes(text) + " are no JSON object", "write {\"key\": value}");
}

const nlohmann::json* Options::find(const std::string& key)
{
    m_known.insert(key);
    const auto found = m_object.find(key);
    return found == m_object.end() || found->is_null() ? nullptr : &*found;
}

std::optional<std::string> Options::text(const std::string& key)
{
    const nlohmann::json* value = find(key);
    if (value == nullptr) return std::nullopt;
    if (!value->is_string()) refuseOption(key, "the option is no text", "write it between quotes");
    return value->get<std::string>();
}

std::optional<bool> Options::flag(const std::string& key)
{
    const nlohmann::json* value = find(key);
    if (value == nullptr) return std::nullopt;
    if (!value->is_boolean()) refuseOption(key, "the option is neither true nor false", "write one of them");
    return value->get<bool>();
}

std::optional<double> Options::number(const std::string& key, double lowest, double highest)
{
    const nlohmann::json* value = find(key);
    if (value == nullptr) return std::nullopt;
    const double number = value->is_number() ? value->get<double>() : lowest - 1.0;
    if (!(number >= lowest && number <= highest))
        refuseOption(key,
                     "the option is no number from " + shortNumber(lowest) + " to " + shortNumber(highest),
                     "give such a number");
    return number;
}

std::optional<std::size_t> Options::choice(const std::string& key, const std::vector<std::string>& words)
{
    const auto word = text(key);
    if (!word) return std::nullopt;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (*word == words[i]) return i;
    }
    refuseOption(key, inQuotes(*word) + " is unknown", "give one of " + quotedList(words));
}

std::optional<double> Options::clock(const std::string& key)
{
    const nlohmann::json* value = find(key);
    if (value == nullptr) return std::nullopt;
    std::optional<double> seconds;
    if (value->is_string()) seconds = clockSeconds(value->get<std::string>());
    if (value->is_number() && value->get<double>() >= 0.0) seconds = value->get<double>();
    if (!seconds)
        refuseOption(key, shownValue(*value) + " is no time of day",
                     value->is_string() ? "write hours and minutes with a colon: \"10:00\""
                                        : "give seconds, 0 or above, or a text such as \"10:00\"");
    return seconds;
}

void Options::close() const
{
    for (const auto& [key, value] : m_object.items()) {
        if (m_known.count(key) == 0)
            refuseOption(key, "the option is unknown", "give one of " + quotedList(m_known));
    }
}

}  // namespace kit
