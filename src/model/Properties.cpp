// Properties.cpp: storage of property values.
#include "Properties.h"

#include <algorithm>
#include <utility>

#include "property_ids.h"

namespace Velcor::Tavell
{

namespace
{

/// Properties added at a time to a full set: sets are small and there are millions of them.
constexpr std::size_t kGrowth = 4;

}  // namespace

const char* Properties::GetMeta()
{
    return m_meta.c_str();
}

int Properties::GetSize()
{
    return static_cast<int>(m_entries.size());
}

int Properties::GetProp(std::size_t index)
{
    return index < m_entries.size() ? m_entries[index].id : TAVELL_NO_PROPERTY;
}

double Properties::GetValue(std::size_t index)
{
    if (index >= m_entries.size()) return 0.0;
    requireReadable(m_entries[index].readability);
    return m_entries[index].number;
}

const char* Properties::GetName(std::size_t index)
{
    return propertyName(GetProp(index));
}

const char* Properties::GetStringValue(std::size_t index)
{
    if (index >= m_entries.size()) return nullptr;
    Entry& entry = m_entries[index];
    if (!entry.hasText) storeText(entry, formatNumber(entry.number, kPropertyDigits));
    return m_texts->find(entry.id)->second.c_str();
}

int Properties::GetIndex(int id)
{
    const std::size_t position = positionOf(id);
    return isEntryOf(position, id) ? static_cast<int>(position) : -1;
}

bool Properties::SetStringPropertyByName(const char* name, const char* value)
{
    const int id = findPropertyId(name);
    if (id == TAVELL_NO_PROPERTY || value == nullptr) return false;
    setText(id, value);
    return true;
}

double Properties::number(int id) const
{
    const Entry* entry = find(id);
    if (entry == nullptr) return 0.0;
    requireReadable(entry->readability);
    return entry->number;
}

std::optional<double> Properties::readableNumber(int id) const
{
    const Entry* entry = find(id);
    if (entry == nullptr || entry->readability != Readability::kNumber) return std::nullopt;
    return entry->number;
}

std::string Properties::text(int id) const
{
    const Entry* entry = find(id);
    return entry != nullptr ? textOf(*entry) : std::string();
}

bool Properties::setNumber(int id, double value)
{
    const std::size_t position = positionOf(id);
    if (!isEntryOf(position, id)) {
        Entry entry;
        entry.number = value;
        entry.id = id;
        insert(position, entry);
        tellListener(id);
        return true;
    }
    Entry& entry = m_entries[position];
    const bool isSame = entry.form == Form::kNumber ? haveSameText(entry.number, value)
                                                    : isText(entry, formatNumber(value, kPropertyDigits));
    if (isSame) return false;
    dropText(entry);
    entry.form = Form::kNumber;
    entry.readability = Readability::kNumber;
    entry.number = value;
    tellListener(id);
    return true;
}

bool Properties::setText(int id, std::string_view text)
{
    const std::size_t position = positionOf(id);
    const bool isNew = !isEntryOf(position, id);
    if (!isNew && !text.empty() && isText(m_entries[position], text)) return false;

    // A copy of its own: the argument may be the text that is being replaced.
    std::string ownText(text);
    if (isNew) {
        Entry entry;
        entry.id = id;
        insert(position, entry);
    }
    Entry& entry = m_entries[position];
    const ParsedNumber parsed = parseNumber(ownText);
    storeText(entry, std::move(ownText));
    entry.form = Form::kText;
    entry.readability = parsed.readability;
    entry.number = parsed.value;
    tellListener(id);
    return true;
}

bool Properties::remove(int id)
{
    const std::size_t position = positionOf(id);
    if (!isEntryOf(position, id)) return false;
    dropText(m_entries[position]);
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(position));
    tellListener(id);
    return true;
}

bool Properties::setMeta(const char* meta)
{
    const std::string_view wanted = meta != nullptr ? meta : "";
    if (m_meta == wanted) return false;
    m_meta = wanted;
    return true;
}

void Properties::copyFrom(const Properties& other)
{
    std::vector<Entry> entries = other.m_entries;
    std::unique_ptr<Texts> texts =
        other.m_texts != nullptr ? std::make_unique<Texts>(*other.m_texts) : nullptr;
    m_meta = other.m_meta;
    m_entries = std::move(entries);
    m_texts = std::move(texts);
    if (m_listener != nullptr) m_listener->identifiersChanged();
}

/// Position of an id, or the one where it would go.
std::size_t Properties::positionOf(int id) const
{
    const auto place = std::lower_bound(m_entries.begin(), m_entries.end(), id,
                                        [](const Entry& entry, int wanted) { return entry.id < wanted; });
    return static_cast<std::size_t>(place - m_entries.begin());
}

const Properties::Entry* Properties::find(int id) const
{
    const std::size_t position = positionOf(id);
    return isEntryOf(position, id) ? &m_entries[position] : nullptr;
}

bool Properties::isEntryOf(std::size_t position, int id) const
{
    return position < m_entries.size() && m_entries[position].id == id;
}

void Properties::insert(std::size_t position, const Entry& entry)
{
    if (m_entries.size() == m_entries.capacity())
        m_entries.reserve(m_entries.size() + std::max(kGrowth, m_entries.size() / 2));
    m_entries.insert(m_entries.begin() + static_cast<std::ptrdiff_t>(position), entry);
}

std::string Properties::textOf(const Entry& entry) const
{
    return entry.hasText ? m_texts->find(entry.id)->second : formatNumber(entry.number, kPropertyDigits);
}

bool Properties::isText(const Entry& entry, std::string_view text) const
{
    return textOf(entry) == text;
}

void Properties::storeText(Entry& entry, std::string text)
{
    if (m_texts == nullptr) m_texts = std::make_unique<Texts>();
    (*m_texts)[entry.id] = std::move(text);
    entry.hasText = true;
}

void Properties::dropText(Entry& entry)
{
    if (entry.hasText) m_texts->erase(entry.id);
    entry.hasText = false;
}

void Properties::tellListener(int id)
{
    if (m_listener != nullptr && isIdentifier(id)) m_listener->identifiersChanged();
}

}  // namespace Velcor::Tavell
