// SPDX-License-Identifier: Apache-2.0
/// \file
/// Linked list.
#pragma once

#include "ul/base.h"

#include <list>
#include <utility>

namespace ul {

/// A linked list of values: growing and shrinking at the ends never moves an element. Owned by one thread at a time.
template <class T>
class TList : public CBase {
public:
    /// Walks over the elements in order; valid for as long as its element.
    using const_iterator = typename std::list<T>::const_iterator;

    /// Puts an element behind the last one.
    void append(T value) { m_items.push_back(std::move(value)); }
    /// Removes the last element; the list must not be empty.
    void removeLast() { m_items.pop_back(); }
    /// The last element; the list must not be empty.
    const T& getLast() const noexcept { return m_items.back(); }
    /// Removes every element. Their destructors may use the list, which is empty by then.
    void clear() noexcept { const std::list<T> items = std::exchange(m_items, {}); }

    /// Number of elements.
    int getSize() const noexcept { return static_cast<int>(m_items.size()); }
    /// Whether there is no element.
    bool isEmpty() const noexcept { return m_items.empty(); }

    /// The first element, for range-based loops.
    const_iterator begin() const noexcept { return m_items.begin(); }
    /// The place behind the last element.
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::list<T> m_items;
};

} // namespace ul
