// object_reader.h: strict reading of one JSON object; every departure from its keys and types is a problem.
#ifndef TAVELL_TOOLS_OBJECT_READER_H
#define TAVELL_TOOLS_OBJECT_READER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "problems.h"

/// A JSON value as text for a message, shortened to a few words.
std::string shownValue(const nlohmann::json& value);

/// What to use instead of an unknown word: the candidate that differs in few letters, or all of them.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

/// Which numbers a key takes; all are finite.
enum class Range { any, positive, notNegative, notZero };

/// Whether a key may be left out.
enum class Need { required, optional };

/// A number of the file, checked against a range; meaning ("the inner diameter in m") completes the message.
/// Nothing, and a problem at place, when the value is no number or out of range.
std::optional<double> checkedNumber(const nlohmann::json& value, Range range, std::string_view meaning,
                                    std::string_view place, Problems& problems);

/// Reads the keys of one object. Ask for every key that the object may hold, then close().
class ObjectReader
{
public:
    /// pointer: the JSON pointer of value. A value that is no object is a problem, and then no key is
    /// missing.
    ObjectReader(const nlohmann::json& value, std::string pointer, Problems& problems);

    /// A name that the messages show behind the pointer.
    void setLabel(std::string_view label);

    bool isObject() const { return m_value.is_object(); }
    bool has(const char* key) const { return isObject() && m_value.contains(key); }

    /// The value of a key; null when there is none. meaning says what to give, for a missing one.
    const nlohmann::json* member(const char* key, Need need, std::string_view meaning);
    std::optional<double> number(const char* key, Range range, Need need, std::string_view meaning);
    /// A text that is not empty and has no control characters.
    std::optional<std::string> text(const char* key, Need need, std::string_view meaning);
    /// An array, or null.
    const nlohmann::json* array(const char* key, Need need, std::string_view meaning);

    /// Reports the keys that were never asked for.
    void close();

    /// JSON pointer of a member, with the label.
    std::string placeOf(std::string_view key) const;
    /// JSON pointer of an item of an array member, with the label.
    std::string placeOf(std::string_view key, std::size_t item) const;
    /// JSON pointer of the object, with the label.
    std::string place() const;
    /// JSON pointer of a member, without the label.
    std::string pointerOf(std::string_view key) const;

    void report(std::string_view key, std::string_view text);
    void reportObject(std::string_view text);

private:
    const nlohmann::json& m_value;
    std::string m_pointer;
    std::string m_label;
    Problems& m_problems;
    std::vector<std::string> m_known;
};

#endif
