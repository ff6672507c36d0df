// Properties.h: the properties and the meta string of one object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "number_text.h"
#include "tavell/IPropertySet.h"

namespace Velcor::Tavell
{

/// Learns that an identifier (isIdentifier) in a property set may read differently than before, whoever
/// changed it.
class IdentifierListener
{
public:
    virtual void identifiersChanged() = 0;

protected:
    ~IdentifierListener() = default;
};

/// Values by id, in ascending order of id. To a host every value is a text; a number has the text of
/// kPropertyDigits digits. Here a number is kept as it is, 16 bytes a property, and its text is made when a
/// host asks for it. A text that a host stores is kept beside its number, read once.
class Properties final : public IPropertySet
{
public:
    Properties() = default;
    ~Properties() = default;
    Properties(const Properties&) = delete;
    Properties& operator=(const Properties&) = delete;

    const char* GetMeta() override;
    int GetSize() override;
    int GetProp(std::size_t index) override;
    double GetValue(std::size_t index) override;
    const char* GetName(std::size_t index) override;
    const char* GetStringValue(std::size_t index) override;
    int GetIndex(int id) override;
    bool SetStringPropertyByName(const char* name, const char* value) override;

    bool has(int id) const { return find(id) != nullptr; }
    /// The value of a property; 0.0 when it is absent. Throws as requireReadable when its text is no number.
    double number(int id) const;
    /// The value of a property; none when it is absent or its text is no number.
    std::optional<double> readableNumber(int id) const;
    /// The text of a property; "" when it is absent.
    std::string text(int id) const;

    /// Store a value; true when its text differs from the stored one or nothing, or an empty text, was
    /// stored.
    bool setNumber(int id, double value);
    bool setText(int id, std::string_view text);
    /// False when the property is absent.
    bool remove(int id);

    /// Sets the meta string, null counts as ""; true when it differs from the one before.
    bool setMeta(const char* meta);

    /// Takes over every property and the meta string of another set.
    void copyFrom(const Properties& other);

    /// Makes room for this many properties.
    void reserve(std::size_t count) { m_entries.reserve(count); }

    /// The one to be told about identifiers; null for none. Not owned.
    void setListener(IdentifierListener* listener) { m_listener = listener; }

private:
    enum class Form : unsigned char { kNumber, kText };

    struct Entry {
        double number = 0.0;  // 0.0 when the text is no number
        int id = 0;
        Form form = Form::kNumber;                       // kText: the host's own text, in m_texts
        Readability readability = Readability::kNumber;  // of the text
        bool hasText = false;                            // m_texts holds the text
    };
    using Texts = std::map<int, std::string>;

    std::size_t positionOf(int id) const;
    const Entry* find(int id) const;
    bool isEntryOf(std::size_t position, int id) const;
    void insert(std::size_t position, const Entry& entry);
    std::string textOf(const Entry& entry) const;
    bool isText(const Entry& entry, std::string_view text) const;
    void storeText(Entry& entry, std::string text);
    void dropText(Entry& entry);
    void tellListener(int id);

    std::vector<Entry> m_entries;    // in ascending order of id
    std::unique_ptr<Texts> m_texts;  // null until a text is needed
    std::string m_meta;
    IdentifierListener* m_listener = nullptr;
};

}  // namespace Velcor::Tavell
