// Properties.cpp: storage of property values.
#include "Properties.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Velcor::Tavell
{

namespace
{

/// Numbers added at a time to a full set: sets are small and there are millions of them.
constexpr unsigned kGrowth = 6;

static_assert(propertySlot(TAVELL_FLUID_VISCOSITY_COEFFICIENT_3) == kPropertySlots - 1 &&
                  kPropertySlots <= 64,
              "every slot is a bit of one word");

}  // namespace

Properties::~Properties()
{
    giveRoomBack();
}

const char* Properties::GetMeta()
{
    return m_rest != nullptr ? m_rest->meta.c_str() : "";
}

int Properties::GetSize()
{
    const std::size_t others = m_rest != nullptr ? m_rest->others.size() : 0;
    return static_cast<int>(countBits(m_present) + others);
}

int Properties::GetProp(std::size_t index)
{
    if (index >= static_cast<std::size_t>(GetSize())) return TAVELL_NO_PROPERTY;
    std::uint64_t left = m_present;
    if (m_rest == nullptr || m_rest->others.empty()) {
        for (; index > 0; --index)
            left &= left - 1;
        return propertyOfSlot(slotOfLowest(left));
    }
    auto other = m_rest->others.begin();
    while (true) {
        const bool isOther =
            left == 0 || (other != m_rest->others.end() && other->first < propertyOfSlot(slotOfLowest(left)));
        if (index == 0) return isOther ? other->first : propertyOfSlot(slotOfLowest(left));
        if (isOther)
            ++other;
        else
            left &= left - 1;
        --index;
    }
}

double Properties::GetValue(std::size_t index)
{
    return index < static_cast<std::size_t>(GetSize()) ? number(GetProp(index)) : 0.0;
}

const char* Properties::GetName(std::size_t index)
{
    return propertyName(GetProp(index));
}

const char* Properties::GetStringValue(std::size_t index)
{
    if (index >= static_cast<std::size_t>(GetSize())) return nullptr;
    const int id = GetProp(index);
    if (const Text* stored = findText(id)) return stored->text.c_str();
    Text made;
    made.text = formatNumber(*find(id), kPropertyDigits);
    return rest().texts.emplace(id, std::move(made)).first->second.text.c_str();
}

int Properties::GetIndex(int id)
{
    if (!has(id)) return -1;
    std::uint64_t before = m_present;
    int index = 0;
    for (; before != 0 && propertyOfSlot(slotOfLowest(before)) < id; before &= before - 1)
        ++index;
    if (m_rest != nullptr) {
        const auto& others = m_rest->others;
        index += static_cast<int>(std::distance(others.begin(), others.lower_bound(id)));
    }
    return index;
}

bool Properties::SetStringPropertyByName(const char* name, const char* value)
{
    const int id = findPropertyId(name);
    if (id == TAVELL_NO_PROPERTY || value == nullptr) return false;
    setText(id, value);
    return true;
}

std::string Properties::text(int id) const
{
    if (const Text* stored = findText(id)) return stored->text;
    const double* value = find(id);
    return value != nullptr ? formatNumber(*value, kPropertyDigits) : std::string();
}

bool Properties::setNumber(int id, double value)
{
    double* stored = find(id);
    if (stored != nullptr) {
        const Text* text = findText(id);
        const bool isSame = text != nullptr && text->form == Form::kText
                                ? isTextOf(text->text, value, kPropertyDigits)
                                : haveSameText(*stored, value);
        if (isSame) return false;
    }
    if (isTold(id)) {
        changeAndTell(id, [&] { insert(id, value); });
    } else if (stored == nullptr) {
        insert(id, value);
    } else {
        dropText(id);
        *stored = value;
    }
    return true;
}

bool Properties::setText(int id, std::string_view text)
{
    double* stored = find(id);
    if (stored != nullptr && !text.empty() && this->text(id) == text) return false;

    // A copy of its own: the argument may be the text that is being replaced.
    const ParsedNumber parsed = parseNumber(text);
    Text ownText{std::string(text), Form::kText, parsed.readability};
    changeAndTell(id, [&] {
        insert(id, parsed.value);
        rest().texts.emplace(id, std::move(ownText));
    });
    return true;
}

bool Properties::remove(int id)
{
    if (!has(id)) return false;
    changeAndTell(id, [] {});
    return true;
}

void Properties::reserve(std::initializer_list<int> ids)
{
    const auto missing = std::count_if(ids.begin(), ids.end(), [this](int id) { return !has(id); });
    const unsigned needed = countBits(m_present) + static_cast<unsigned>(missing);
    if (needed > m_capacity) makeRoom(needed + kGrowth);
}

Properties::Former Properties::take(int id)
{
    Former former;
    double* stored = find(id);
    if (stored == nullptr) return former;
    former.m_isStored = true;
    former.m_value = *stored;
    if (m_rest != nullptr) former.m_text = m_rest->texts.extract(id);
    const int slot = propertySlot(id);
    if (slot < 0) {
        former.m_other = m_rest->others.extract(id);
    } else {
        std::copy(stored + 1, m_values + countBits(m_present), stored);
        m_present &= ~bitOf(slot);
    }
    return former;
}

void Properties::putBack(int id, Former former)
{
    take(id);
    if (!former.m_isStored) return;
    if (former.m_other)
        m_rest->others.insert(std::move(former.m_other));
    else
        insert(id, former.m_value);  // where it was taken from there is room
    if (former.m_text) m_rest->texts.insert(std::move(former.m_text));
}

/// Takes a property out, lets change() store it anew and tells the listener; when something of that fails, what
/// was stored is put back.
template <typename Change> void Properties::changeAndTell(int id, Change&& change)
{
    Former former = take(id);
    try {
        change();
        if (isTold(id)) m_listener->identifiersChanged();
    } catch (...) {
        putBack(id, std::move(former));
        throw;
    }
}

bool Properties::setMeta(const char* meta)
{
    const std::string_view wanted = meta != nullptr ? meta : "";
    if (wanted == GetMeta()) return false;
    rest().meta = wanted;
    return true;
}

void Properties::copyFrom(const Properties& other)
{
    std::unique_ptr<Rest> copy = other.m_rest != nullptr ? std::make_unique<Rest>(*other.m_rest) : nullptr;
    const unsigned count = countBits(other.m_present);
    makeRoom(count);
    std::copy_n(other.m_values, count, m_values);
    m_present = other.m_present;
    m_rest = std::move(copy);
    if (m_listener != nullptr) m_listener->identifiersChanged();
}

const double* Properties::findOther(int id) const
{
    if (m_rest == nullptr) return nullptr;
    const auto place = m_rest->others.find(id);
    return place != m_rest->others.end() ? &place->second : nullptr;
}

const Properties::Text* Properties::findText(int id) const
{
    if (m_rest == nullptr) return nullptr;
    const auto place = m_rest->texts.find(id);
    return place != m_rest->texts.end() ? &place->second : nullptr;
}

Readability Properties::readabilityOf(int id) const
{
    const Text* text = findText(id);
    return text != nullptr ? text->readability : Readability::kNumber;
}

Properties::Rest& Properties::rest()
{
    if (m_rest == nullptr) m_rest = std::make_unique<Rest>();
    return *m_rest;
}

/// Stores the value of a property that is absent.
void Properties::insert(int id, double value)
{
    const int slot = propertySlot(id);
    if (slot < 0) {
        rest().others.emplace(id, value);
        return;
    }
    const unsigned count = countBits(m_present);
    if (count == m_capacity) makeRoom(count + kGrowth);
    double* place = m_values + count;
    if ((m_present >> slot) != 0) {  // mostly ids come in ascending order, and nothing has to move
        place = m_values + rankOf(slot);
        std::copy_backward(place, m_values + count, m_values + count + 1);
    }
    // There is room now; the analyzer lets the sum above wrap.
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
    *place = value;
    m_present |= bitOf(slot);
}

/// Makes room for this many numbers; the values stay.
void Properties::makeRoom(unsigned count)
{
    if (count <= m_capacity) return;
    auto room = std::make_unique<double[]>(count);
    std::copy_n(m_values, countBits(m_present), room.get());
    giveRoomBack();
    m_values = room.release();
    m_capacity = count;
    m_ownsValues = true;
}

void Properties::giveRoomBack()
{
    if (m_ownsValues) delete[] m_values;
}

void Properties::dropText(int id)
{
    if (m_rest != nullptr) m_rest->texts.erase(id);
}

}  // namespace Velcor::Tavell
