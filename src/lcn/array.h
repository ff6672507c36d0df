// array.h: the solver's container, a handle on shared storage.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace lcn
{

/// A handle on reference-counted storage with an index offset. Copies share the elements: what one writes the
/// others read. Items are numbered from 1, so an array for n items holds n + 1 slots and slot 0 is unused.
/// Handles may be copied and destroyed on different threads; element access is not synchronised.
template <typename T> class array
{
public:
    /// No elements, storage of its own; never a null handle.
    array() : m_storage(std::make_shared<VectorData>()) {}
    array(const array&) = default;
    array& operator=(const array&) = default;
    /// Takes the other's storage and leaves it this one's, so that neither is ever a null handle. Without
    /// counting: a handle that is made to be assigned costs half.
    array& operator=(array&& other) noexcept
    {
        m_storage.swap(other.m_storage);
        std::swap(m_offset, other.m_offset);
        return *this;
    }
    virtual ~array() = default;

    /// Sets the number of slots [0 .. count - 1]. New slots are zero, surplus ones are dropped from the end,
    /// the offset goes back to 0. Every handle on the storage sees the change. Throws std::bad_alloc.
    void resize(int count)
    {
        m_storage->items.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        m_storage->first = m_storage->items.empty() ? nullptr : m_storage->items.data();
        m_offset = 0;
    }

    /// Assigns value to every slot.
    void fill(const T& value)
    {
        for (T& item : m_storage->items)
            item = value;
    }

    /// Element i, which is slot offset + i. Not checked.
    T& operator[](int i) const
    {
        // An array without items has no valid index; the analyzer follows that case all the same.
        // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn)
        return m_storage->first[m_offset + i];
    }

    /// Number of slots from the offset on.
    int size() const { return static_cast<int>(m_storage->items.size()) - m_offset; }
    bool isEmpty() const { return m_storage->first == nullptr; }
    int offset() const { return m_offset; }

    /// First slot of the storage; null when there is none.
    T* data() const { return m_storage->first; }

    /// Another handle on the same storage whose element i is this one's element i + shift.
    array shiftedBy(int shift) const
    {
        array view(*this);
        view.m_offset += shift;
        return view;
    }

    /// Takes over the items of a vector, slot 0 first; the offset goes back to 0.
    void assign(std::vector<T>&& items)
    {
        m_storage->items = std::move(items);
        m_storage->first = m_storage->items.empty() ? nullptr : m_storage->items.data();
        m_offset = 0;
    }

private:
    struct VectorData {
        T* first = nullptr;  // cached, null when there are no items
        std::vector<T> items;
    };
    std::shared_ptr<VectorData> m_storage;
    int m_offset = 0;
};

}  // namespace lcn
