// FirstHolderIndex.h: finds the oldest object that holds a key, where several may hold the same one.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "HashIndex.h"

namespace Velcor::Tavell
{

/// Keys that objects hold, with the oldest holder of each at hand. T tells its age by sequence(): a smaller
/// number is older. Constant time on average; an object that shares its key costs O(log n). Does not own the
/// objects. Table is where the oldest holders are looked up.
template <class Key, class T, class Table = HashIndex<Key, T>> class FirstHolderIndex
{
public:
    /// The oldest holder of a key; null when nothing holds it.
    T* find(const Key& key) const { return m_oldest.find(key); }

    /// Files an object that is not filed yet.
    void insert(const Key& key, T& object)
    {
        T* oldest = m_oldest.find(key);
        if (oldest == nullptr) {
            m_oldest.set(key, &object);
            return;
        }
        const bool isOldest = object.sequence() < oldest->sequence();
        T& younger = isOldest ? *oldest : object;
        m_younger.emplace(Place{key, younger.sequence()}, &younger);
        if (isOldest) m_oldest.set(key, &object);
    }

    /// Takes out an object that was filed under this key. Never throws.
    void erase(const Key& key, const T& object)
    {
        if (m_oldest.find(key) != &object) {
            m_younger.erase(Place{key, object.sequence()});
            return;
        }
        const auto next = m_younger.lower_bound(Place{key, 0});
        if (next == m_younger.end() || next->first.first != key) {
            m_oldest.erase(key);
            return;
        }
        m_oldest.set(key, next->second);
        m_younger.erase(next);
    }

private:
    using Place = std::pair<Key, std::uint64_t>;  // key and sequence number

    Table m_oldest;
    std::map<Place, T*> m_younger;
};

}  // namespace Velcor::Tavell
