// OrderedObjects.h: an owning list of objects in order of creation.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Velcor::Tavell
{

/// Objects in order of creation. T keeps the sequence number that the list gives it: setSequence(),
/// sequence().
///
/// Appending takes constant time, and so does access by position until something is removed. A removed object
/// leaves an empty slot; from then on a binary indexed tree (Fenwick, 1994) counts the objects before a slot,
/// and access and removal take O(log n). Empty slots are squeezed out when they outnumber the objects.
template <class T> class OrderedObjects
{
    struct Slot {
        std::unique_ptr<T> object;   // null: the object was removed
        std::uint64_t sequence = 0;  // ascending from slot to slot, stays when the object goes
    };

    template <class Object> class Iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Object*;
        using difference_type = std::ptrdiff_t;
        using pointer = Object* const*;
        using reference = Object*;

        Iterator() = default;
        Iterator(const Slot* slot, const Slot* end) : m_slot(slot), m_end(end) { skipEmpty(); }

        Object* operator*() const { return m_slot->object.get(); }
        Iterator& operator++()
        {
            ++m_slot;
            skipEmpty();
            return *this;
        }
        Iterator operator++(int)
        {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return m_slot == other.m_slot; }
        bool operator!=(const Iterator& other) const { return m_slot != other.m_slot; }

    private:
        void skipEmpty()
        {
            while (m_slot != m_end && m_slot->object == nullptr)
                ++m_slot;
        }

        const Slot* m_slot = nullptr;
        const Slot* m_end = nullptr;
    };

public:
    using iterator = Iterator<T>;
    using const_iterator = Iterator<const T>;

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }

    /// The object at a position from 0; null when position is not below size().
    T* at(std::size_t position) { return objectAt(position); }
    const T* at(std::size_t position) const { return objectAt(position); }

    /// Position of an object of this list.
    std::size_t positionOf(const T& object) const
    {
        const std::size_t slot = slotOf(object);
        if (m_slots.size() == m_size) return slot;
        countSlots();
        std::size_t before = 0;
        for (std::size_t i = slot; i > 0; i -= lowestBit(i))
            before += m_counts[i];
        return before;
    }

    /// Takes an object over, gives it the next sequence number and returns it.
    T& append(std::unique_ptr<T> object)
    {
        // Room first: an allocation that fails must not leave list and tree at odds.
        if (m_slots.size() == m_slots.capacity()) m_slots.reserve(std::max(kFewestSlots, 2 * m_slots.size()));
        if (!m_counts.empty()) appendCount();
        object->setSequence(m_nextSequence);
        m_slots.push_back({std::move(object), m_nextSequence});
        ++m_nextSequence;
        ++m_size;
        return *m_slots.back().object;
    }

    /// The youngest object; null when there is none. Never throws.
    T* last() const { return m_slots.empty() ? nullptr : m_slots.back().object.get(); }

    /// Takes an object of this list out of it; the caller decides when it dies.
    std::unique_ptr<T> release(const T& object)
    {
        const std::size_t slot = slotOf(object);
        std::unique_ptr<T> released = std::move(m_slots[slot].object);
        --m_size;
        if (!m_counts.empty()) lowerCounts(slot);
        dropEmptyTail();
        if (m_slots.size() > kFewestSlots && m_slots.size() > 2 * m_size) squeeze();
        return released;
    }

    /// Destroys the objects, the oldest first.
    void clear()
    {
        m_counts = {};
        m_size = 0;
        for (Slot& slot : m_slots)
            slot.object.reset();
        m_slots.clear();
    }

    // Walks the objects in order of creation. Appending or removing an object ends every walk.
    iterator begin() { return {m_slots.data(), slotsEnd()}; }
    iterator end() { return {slotsEnd(), slotsEnd()}; }
    const_iterator begin() const { return {m_slots.data(), slotsEnd()}; }
    const_iterator end() const { return {slotsEnd(), slotsEnd()}; }

private:
    static constexpr std::size_t kFewestSlots = 16;

    static std::size_t lowestBit(std::size_t i) { return i & (~i + 1); }

    const Slot* slotsEnd() const { return m_slots.data() + m_slots.size(); }

    std::size_t slotOf(const T& object) const
    {
        const auto slot =
            std::lower_bound(m_slots.begin(), m_slots.end(), object.sequence(),
                             [](const Slot& s, std::uint64_t sequence) { return s.sequence < sequence; });
        return static_cast<std::size_t>(slot - m_slots.begin());
    }

    T* objectAt(std::size_t position) const
    {
        if (position >= m_size) return nullptr;
        if (m_slots.size() == m_size) return m_slots[position].object.get();
        countSlots();
        return m_slots[slotAtPosition(position)].object.get();
    }

    /// Descends the tree to the slot that has `position` objects before it and holds one itself.
    std::size_t slotAtPosition(std::size_t position) const
    {
        std::size_t slot = 0;
        std::size_t step = 1;
        while (step * 2 < m_counts.size())
            step *= 2;
        for (; step > 0; step /= 2) {
            if (slot + step >= m_counts.size() || m_counts[slot + step] > position) continue;
            slot += step;
            position -= m_counts[slot];
        }
        return slot;
    }

    /// Builds the tree if there is none: m_counts[i] is the number of objects in the lowestBit(i) slots
    /// before i.
    void countSlots() const
    {
        if (!m_counts.empty()) return;
        std::vector<std::size_t> counts(m_slots.size() + 1, 0);
        for (std::size_t i = 1; i < counts.size(); ++i) {
            if (m_slots[i - 1].object != nullptr) ++counts[i];
            const std::size_t parent = i + lowestBit(i);
            if (parent < counts.size()) counts[parent] += counts[i];
        }
        m_counts = std::move(counts);
    }

    /// Adds the count whose last slot is about to be appended with an object in it.
    void appendCount()
    {
        const std::size_t i = m_counts.size();
        std::size_t count = 1;
        for (std::size_t step = 1; step < lowestBit(i); step *= 2)
            count += m_counts[i - step];
        m_counts.push_back(count);
    }

    void lowerCounts(std::size_t slot)
    {
        for (std::size_t i = slot + 1; i < m_counts.size(); i += lowestBit(i))
            --m_counts[i];
    }

    /// Drops empty slots at the end; the tree stays, so that removals at the end never make it be built
    /// again.
    void dropEmptyTail()
    {
        while (!m_slots.empty() && m_slots.back().object == nullptr)
            m_slots.pop_back();
        if (!m_counts.empty()) m_counts.resize(m_slots.size() + 1);
    }

    void squeeze()
    {
        const auto isEmpty = [](const Slot& slot) { return slot.object == nullptr; };
        m_slots.erase(std::remove_if(m_slots.begin(), m_slots.end(), isEmpty), m_slots.end());
        m_counts = {};
    }

    std::vector<Slot> m_slots;
    mutable std::vector<std::size_t> m_counts;  // the tree, from index 1; empty until it is needed
    std::size_t m_size = 0;
    std::uint64_t m_nextSequence = 0;
};

}  // namespace Velcor::Tavell
