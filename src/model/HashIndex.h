// HashIndex.h: a compact look-up table from a key to an object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Velcor::Tavell
{

/// Bits of a key, spread afterwards by HashIndex. One overload for each kind of key.
inline std::uint64_t keyBits(int key)
{
    return static_cast<std::uint32_t>(key);
}
inline std::uint64_t keyBits(std::uint64_t key)
{
    return key;
}
inline std::uint64_t keyBits(const void* key)
{
    return reinterpret_cast<std::uintptr_t>(key);
}
inline std::uint64_t keyBits(const std::pair<int, int>& key)
{
    return keyBits(key.first) << 32 | keyBits(key.second);
}

/// Open addressing with linear probing: 16 bytes a slot, at most three quarters of them in use. Look-up,
/// insertion and removal take constant time on average. Does not own the objects and never looks at them.
/// There is no way to walk the table, so that no result can depend on its order.
template <class Key, class T> class HashIndex
{
public:
    std::size_t size() const { return m_size; }

    /// The object of a key; null when there is none.
    T* find(const Key& key) const { return m_slots.empty() ? nullptr : m_slots[slotOf(key)].object; }

    /// Stores the object (not null) of a key. Replaces one that is there, and then never throws.
    void set(const Key& key, T* object)
    {
        if (find(key) != nullptr) {
            m_slots[slotOf(key)].object = object;
            return;
        }
        if ((m_size + 1) * 4 > m_slots.size() * 3)
            resize(m_slots.empty() ? kFewestSlots : m_slots.size() * 2);
        m_slots[slotOf(key)] = {key, object};
        ++m_size;
    }

    /// Removes a key; false when it is not there. Never throws.
    bool erase(const Key& key)
    {
        if (find(key) == nullptr) return false;
        closeGap(slotOf(key));
        --m_size;
        return true;
    }

    void clear()
    {
        m_slots = {};
        m_size = 0;
    }

private:
    struct Slot {
        Key key{};
        T* object = nullptr;  // null: the slot is free
    };
    static constexpr std::size_t kFewestSlots = 16;  // a power of two, as every size of the table

    /// Position at which a search for key begins. Finaliser of SplitMix64 (Steele, Lea and Flood, 2014):
    /// neighbouring keys are spread over the whole table.
    std::size_t homeOf(const Key& key) const
    {
        std::uint64_t bits = keyBits(key);
        bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9U;
        bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebU;
        return static_cast<std::size_t>(bits ^ (bits >> 31)) & (m_slots.size() - 1);
    }

    std::size_t next(std::size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }

    /// The slot of key, or the free slot where it would go.
    std::size_t slotOf(const Key& key) const
    {
        std::size_t slot = homeOf(key);
        while (m_slots[slot].object != nullptr && m_slots[slot].key != key)
            slot = next(slot);
        return slot;
    }

    /// Frees a slot and moves later entries of the same run down, so that no search stops short of its key
    /// (Knuth, The Art of Computer Programming 3, 6.4, algorithm R).
    void closeGap(std::size_t gap)
    {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t slot = next(gap); m_slots[slot].object != nullptr; slot = next(slot)) {
            const std::size_t home = homeOf(m_slots[slot].key);
            if (((slot - home) & mask) < ((slot - gap) & mask)) continue;
            m_slots[gap] = m_slots[slot];
            gap = slot;
        }
        m_slots[gap] = {};
    }

    void resize(std::size_t slots)
    {
        std::vector<Slot> old(slots);
        old.swap(m_slots);
        for (const Slot& slot : old)
            if (slot.object != nullptr) m_slots[slotOf(slot.key)] = slot;
    }

    std::vector<Slot> m_slots;
    std::size_t m_size = 0;
};

}  // namespace Velcor::Tavell
