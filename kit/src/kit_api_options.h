// kit_api_options.h: the options of a call, a JSON object as text.
#ifndef TAVELL_KIT_KIT_API_OPTIONS_H
#define TAVELL_KIT_KIT_API_OPTIONS_H

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace kit
{

/// Options by their keys. What cannot be used is refused (kit_api.h).
class Options
{
public:
    /// text: a JSON object; null or "" for none.
    explicit Options(const char* text);

    std::optional<std::string> text(const std::string& key);
    std::optional<bool> flag(const std::string& key);
    /// A number within limits, both included.
    std::optional<double> number(const std::string& key, double lowest, double highest);
    /// One of some words, by its position.
    std::optional<std::size_t> choice(const std::string& key, const std::vector<std::string>& words);
    /// A time [s]: a number, or "HH:MM" or "HH:MM:SS".
    std::optional<double> clock(const std::string& key);

    /// Refuses the keys that nobody asked for.
    void close() const;

private:
    const nlohmann::json* find(const std::string& key);

    nlohmann::json m_object = nlohmann::json::object();
    std::set<std::string> m_known;
};

/// "HH:MM" or "HH:MM:SS" as seconds; nothing when it is neither.
std::optional<double> clockSeconds(std::string_view text);

}  // namespace kit

#endif
