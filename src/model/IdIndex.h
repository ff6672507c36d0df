// IdIndex.h: a look-up table from a whole number to an object, for numbers that mostly count up from 1.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "HashIndex.h"

namespace Velcor::Tavell
{

/// Does what HashIndex<int, T> does. Numbers below a limit that grows with the number of objects are
/// positions in a list, the others are hashed: ids come from a counter, and neighbours in a list are
/// neighbours in the cache, where a hash spreads them over all memory. Whatever the numbers, the list is at
/// most four times as long as the objects were ever many.
template <class T> class IdIndex
{
public:
    std::size_t size() const { return m_listed + m_others.size(); }

    /// The object of a number; null when there is none.
    T* find(int id) const { return isListed(id) ? m_list[position(id)] : m_others.find(id); }

    /// Stores the object (not null) of a number. Replaces one that is there, and then never throws.
    void set(int id, T* object)
    {
        if (!isListed(id) && id >= 0 && position(id) < 2 * (size() + kFewest) && m_others.find(id) == nullptr)
            extendListTo(id);
        if (!isListed(id)) {
            m_others.set(id, object);
            return;
        }
        if (m_list[position(id)] == nullptr) ++m_listed;
        m_list[position(id)] = object;
    }

    /// Removes a number; false when it is not there. Never throws.
    bool erase(int id)
    {
        if (!isListed(id)) return m_others.erase(id);
        if (m_list[position(id)] == nullptr) return false;
        m_list[position(id)] = nullptr;
        --m_listed;
        return true;
    }

    void clear()
    {
        m_list = {};
        m_listed = 0;
        m_others.clear();
    }

private:
    static constexpr std::size_t kFewest = 8;

    static std::size_t position(int id) { return static_cast<std::size_t>(id); }
    bool isListed(int id) const { return id >= 0 && position(id) < m_list.size(); }

    /// Lengthens the list to hold a number, at least to twice its length, and takes over the objects that are
    /// hashed and belong into it now.
    void extendListTo(int id)
    {
        const std::size_t before = m_list.size();
        m_list.resize(std::max({2 * kFewest, 2 * before, position(id) + 1}), nullptr);
        for (std::size_t i = before; i < m_list.size() && m_others.size() > 0; ++i) {
            const int number = static_cast<int>(i);
            m_list[i] = m_others.find(number);
            if (m_others.erase(number)) ++m_listed;
        }
    }

    std::vector<T*> m_list;    // by number; null: no object
    std::size_t m_listed = 0;  // objects in the list
    HashIndex<int, T> m_others;
};

}  // namespace Velcor::Tavell
