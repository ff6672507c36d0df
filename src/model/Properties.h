// Properties.h: the properties and the meta string of one object.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "bits.h"
#include "number_text.h"
#include "property_ids.h"
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
/// kPropertyDigits digits. Here a number is kept as it is, and its text is made when a host asks for it. A
/// text that a host stores is kept beside its number, read once.
///
/// There are millions of sets with a dozen numbers each, and clearing the memory they lie in is the greatest
/// part of the time that building a large circuit takes. So the ids that are present are the bits of one word
/// (propertySlot), the values lie side by side in the order of those bits, 8 bytes a property, in a room that
/// the owner provides; a look-up counts bits. Everything else (texts, the meta string, ids without a slot) is
/// kept apart and is there for the few sets that need it.
class Properties final : public IPropertySet
{
public:
    Properties() = default;
    ~Properties();
    Properties(const Properties&) = delete;
    Properties& operator=(const Properties&) = delete;

    /// Gives an empty set room for its first numbers. The room must outlive the set and is written before it
    /// is read.
    template <std::size_t kCount> void useRoom(std::array<double, kCount>& room)
    {
        m_values = room.data();
        m_capacity = static_cast<unsigned>(kCount);
    }

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
    double number(int id) const
    {
        const double* value = find(id);
        if (value == nullptr) return 0.0;
        if (m_rest != nullptr) requireReadable(readabilityOf(id));
        return *value;
    }
    /// The value of a property; none when it is absent or its text is no number.
    std::optional<double> readableNumber(int id) const
    {
        const double* value = find(id);
        if (value == nullptr || readabilityOf(id) != Readability::kNumber) return std::nullopt;
        return *value;
    }
    /// The text of a property; "" when it is absent.
    std::string text(int id) const;

    /// Calls visit(slot, value) for every number in ascending order of slot (propertySlot); false, and
    /// nothing is visited, when some text or some id without a slot is stored.
    template <typename Visit> bool visitNumbers(Visit&& visit) const
    {
        if (m_rest != nullptr && !(m_rest->texts.empty() && m_rest->others.empty())) return false;
        const double* value = m_values;
        for (std::uint64_t left = m_present; left != 0; left &= left - 1)
            visit(slotOfLowest(left), *value++);
        return true;
    }

    /// Store a value; true when its text differs from the stored one or nothing, or an empty text, was
    /// stored. When an allocation fails, nothing has changed.
    bool setNumber(int id, double value);
    bool setText(int id, std::string_view text);
    /// False when the property is absent. When an allocation of the listener fails, nothing has changed.
    bool remove(int id);

    /// Makes room for numbers under these ids, which have slots: storing them will not need memory. Identifiers
    /// that a listener is told about are not among them.
    void reserve(std::initializer_list<int> ids);

    /// What was stored under an id.
    class Former;
    /// Takes a property out and tells no one; gives what was there. Never throws.
    Former take(int id);
    /// Puts back what was taken out, in place of what is stored now; tells no one and never throws.
    void putBack(int id, Former former);

    /// Sets the meta string, null counts as ""; true when it differs from the one before.
    bool setMeta(const char* meta);

    /// Takes over every property and the meta string of another set.
    void copyFrom(const Properties& other);

    /// The one to be told about identifiers; null for none. Not owned.
    void setListener(IdentifierListener* listener) { m_listener = listener; }

private:
    enum class Form : unsigned char { kNumber, kText };

    /// The text of a property: a host's own, or that of the number, made when it was asked for.
    struct Text {
        std::string text;
        Form form = Form::kNumber;                       // kText: the host's own
        Readability readability = Readability::kNumber;  // of the text
    };
    using Texts = std::map<int, Text>;
    using Others = std::map<int, double>;

    /// What few sets have.
    struct Rest {
        Texts texts;    // by id
        Others others;  // values of ids without a slot; 0.0 when the text is no number
        std::string meta;
    };

    static std::uint64_t bitOf(int slot) { return std::uint64_t{1} << slot; }
    static int slotOfLowest(std::uint64_t bits) { return static_cast<int>(lowestBitOf(bits)); }

    /// Position of a slot among the values.
    unsigned rankOf(int slot) const { return countBits(m_present & (bitOf(slot) - 1)); }
    const double* find(int id) const
    {
        const int slot = propertySlot(id);
        if (slot < 0) return findOther(id);
        return (m_present & bitOf(slot)) != 0 ? m_values + rankOf(slot) : nullptr;
    }
    double* find(int id) { return const_cast<double*>(static_cast<const Properties*>(this)->find(id)); }
    const double* findOther(int id) const;
    const Text* findText(int id) const;
    Readability readabilityOf(int id) const;

    Rest& rest();
    void insert(int id, double value);
    void makeRoom(unsigned count);
    void giveRoomBack();
    void dropText(int id);
    bool isTold(int id) const { return m_listener != nullptr && isIdentifier(id); }
    template <typename Change> void changeAndTell(int id, Change&& change);

    std::uint64_t m_present = 0;   // by slot: whether there is a value
    double* m_values = nullptr;    // in ascending order of slot; 0.0 when the text is no number
    unsigned m_capacity = 0;       // of m_values
    bool m_ownsValues = false;     // m_values is no longer the owner's room
    std::unique_ptr<Rest> m_rest;  // null until it is needed
    IdentifierListener* m_listener = nullptr;
};

class Properties::Former
{
    friend class Properties;
    bool m_isStored = false;
    double m_value = 0.0;
    Texts::node_type m_text;    // empty: it had none
    Others::node_type m_other;  // of an id without a slot
};

/// Changes of several properties of a set that are made together: what is not kept is put back.
class PropertyChanges
{
public:
    explicit PropertyChanges(Properties& properties) : m_properties(properties) {}
    ~PropertyChanges()
    {
        while (m_count > 0) {
            Change& change = m_changes[--m_count];
            m_properties.putBack(change.id, std::move(change.former));
        }
    }
    PropertyChanges(const PropertyChanges&) = delete;
    PropertyChanges& operator=(const PropertyChanges&) = delete;

    /// Store a value; at most kMost of them, none of an identifier that a listener is told about.
    void setNumber(int id, double value)
    {
        replace(id);
        m_properties.setNumber(id, value);
    }
    void setText(int id, std::string_view text)
    {
        replace(id);
        m_properties.setText(id, text);
    }
    void keep() { m_count = 0; }

private:
    static constexpr std::size_t kMost = 4;
    struct Change {
        int id = 0;
        Properties::Former former;
    };

    void replace(int id)
    {
        m_changes[m_count] = {id, m_properties.take(id)};
        ++m_count;
    }

    Properties& m_properties;
    std::array<Change, kMost> m_changes;
    std::size_t m_count = 0;
};

}  // namespace Velcor::Tavell
