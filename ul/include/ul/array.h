// SPDX-License-Identifier: Apache-2.0
/// \file
/// Growable array.
#pragma once

#include "ul/base.h"
#include "ul/error.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace ul {

/// A growable array of values. Indices and sizes count elements. Owned by one thread at a time.
template <class T>
class TArray : public CBase {
public:
    /// Iterates over the elements in order. A change of the array's size invalidates it.
    using iterator = typename std::vector<T>::iterator;
    /// Read-only iterator, invalidated likewise.
    using const_iterator = typename std::vector<T>::const_iterator;

    /// Appends an element.
    void append(T value) { m_items.push_back(std::move(value)); }
    /// Truncates the array, or extends it with default values.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    void resize(int size) {
        if (size < 0)
            throw CInvalidArgError("TArray::resize", "invalid size", CProps());
        m_items.resize(static_cast<std::size_t>(size));
    }
    /// Removes all elements. Their destructors may use the array; they find it empty.
    void clear() noexcept { const std::vector<T> items = std::exchange(m_items, {}); }

    /// Number of elements.
    int getSize() const noexcept { return static_cast<int>(m_items.size()); }
    /// Whether the array has no elements.
    bool isEmpty() const noexcept { return m_items.empty(); }

    /// The element at `index`. Requires: 0 <= `index` < getSize().
    T& operator[](int index) noexcept { return m_items[static_cast<std::size_t>(index)]; }
    /// Read-only access; same requirement.
    const T& operator[](int index) const noexcept { return m_items[static_cast<std::size_t>(index)]; }

    /// The first element, for range-based loops.
    iterator begin() noexcept { return m_items.begin(); }
    /// One past the last element.
    iterator end() noexcept { return m_items.end(); }
    /// Read-only form.
    const_iterator begin() const noexcept { return m_items.begin(); }
    /// Read-only form.
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::vector<T> m_items;
};

} // namespace ul
