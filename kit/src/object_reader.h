// object_reader.h: strict reading of one JSON object; every departure from its keys, types and units is a
// finding.
#ifndef TAVELL_KIT_OBJECT_READER_H
#define TAVELL_KIT_OBJECT_READER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "findings.h"
#include "units.h"

namespace kit
{

/// A JSON value as text for a message, shortened to a few words.
std::string shownValue(const nlohmann::json& value);

/// What to use instead of an unknown word: the candidate that differs in few letters, or all of them.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

/// Which numbers a key takes, in SI units; all are finite.
enum class Range { any, positive, notNegative, notZero };

/// Whether a number is finite and in a range.
bool isInRange(double value, Range range);

/// Whether a key may be left out.
enum class Need { required, optional };

/// What a number is and must be. meaning completes messages: "the inner diameter".
struct NumberRule {
    Quantity quantity;
    Range range;
    const char* meaning;
};

/// What the readers of one document share.
struct Reading {
    std::string file;
    UnitSet units;  // of numbers without a unit of their own
    Findings& findings;

    Finding& report(Code code, const std::string& pointer, const std::string& object, std::string message,
                    std::string remedy) const;
    Finding& report(Code code, const std::string& pointer, const std::string& object,
                    std::string message) const;
    /// "the inner diameter in mm".
    std::string asked(const NumberRule& rule) const;
};

/// A number of the file in SI units, checked against its rule: a number, or a text with a unit when the
/// quantity has units. Nothing, and a finding at the pointer, when it is something else or out of range.
std::optional<double> checkedNumber(const nlohmann::json& value, const NumberRule& rule,
                                    const Reading& reading, const std::string& pointer,
                                    const std::string& object);

/// The same without findings for a number without a unit of its own, which is the case of nearly all: nothing
/// when it takes checkedNumber.
std::optional<double> goodNumber(const nlohmann::json& value, const NumberRule& rule, const Reading& reading);

/// Reads the keys of one object.
class ObjectReader
{
public:
    using Keys = std::vector<std::string>;

    /// pointer: the JSON pointer of value; object: what messages call it, "pipe 7" for example. keys: every
    /// key that it may hold; others are findings. A value that is no object is a finding, and then no key is
    /// missing.
    ObjectReader(const nlohmann::json& value, std::string pointer, std::string object, const Keys& keys,
                 const Reading& reading);

    bool isObject() const { return m_value.is_object(); }
    bool has(const char* key) const { return isObject() && m_value.contains(key); }
    const nlohmann::json& value() const { return m_value; }

    /// The value of a key; null when there is none. meaning says what to give, for a missing one.
    const nlohmann::json* member(const char* key, Need need, std::string_view meaning) const;
    std::optional<double> number(const char* key, const NumberRule& rule, Need need) const;
    /// A text that is not empty and has no control characters.
    std::optional<std::string> text(const char* key, Need need, std::string_view meaning) const;
    std::optional<bool> boolean(const char* key, std::string_view meaning) const;
    /// An array, or null.
    const nlohmann::json* array(const char* key, Need need, std::string_view meaning) const;

    /// JSON pointer of a member.
    std::string pointerOf(std::string_view key) const;
    const std::string& pointer() const { return m_pointer; }
    const std::string& object() const { return m_object; }
    const Reading& reading() const { return m_reading; }

    void report(Code code, std::string_view key, std::string message, std::string remedy) const;
    void reportObject(Code code, std::string message, std::string remedy) const;

private:
    void refuseUnknownKeys() const;
    /// The value of a key; null when there is none.
    const nlohmann::json* find(const char* key) const;

    const nlohmann::json& m_value;
    std::string m_pointer;
    std::string m_object;
    const Keys& m_keys;
    const Reading& m_reading;
};

/// A text of the file that is not empty and has no control characters; nothing, and a finding, otherwise.
std::optional<std::string> checkedText(const nlohmann::json& value, std::string_view meaning,
                                       const Reading& reading, const std::string& pointer,
                                       const std::string& object);

}  // namespace kit

#endif
