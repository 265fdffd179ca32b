// SPDX-License-Identifier: Apache-2.0
/// \file
/// Linked list.
#pragma once

#include "ul/base.h"

#include <list>
#include <utility>

namespace ul {

/// A linked list of values: appending and removing never move an element. Owned by one thread at a time.
template <class T>
class TList : public CBase {
public:
    /// Iterates over the elements in order. Valid as long as its element.
    using const_iterator = typename std::list<T>::const_iterator;

    /// Appends an element.
    void append(T value) { m_items.push_back(std::move(value)); }
    /// Removes the last element. Requires: the list is not empty.
    void removeLast() { m_items.pop_back(); }
    /// The last element. Requires: the list is not empty.
    const T& getLast() const noexcept { return m_items.back(); }
    /// Removes all elements. Their destructors may use the list; they find it empty.
    void clear() noexcept { const std::list<T> items = std::exchange(m_items, {}); }

    /// Number of elements.
    int getSize() const noexcept { return static_cast<int>(m_items.size()); }
    /// Whether the list has no elements.
    bool isEmpty() const noexcept { return m_items.empty(); }

    /// The first element, for range-based loops.
    const_iterator begin() const noexcept { return m_items.begin(); }
    /// One past the last element.
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::list<T> m_items;
};

} // namespace ul
