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
    using const_iterator = typename std::list<T>::const_iterator;

    void append(T value) { m_items.push_back(std::move(value)); }
    /// Removes the last element; the list must not be empty.
    void removeLast() { m_items.pop_back(); }
    /// The last element; the list must not be empty.
    const T& getLast() const noexcept { return m_items.back(); }
    void clear() noexcept { m_items.clear(); }

    int getSize() const noexcept { return static_cast<int>(m_items.size()); }
    bool isEmpty() const noexcept { return m_items.empty(); }

    const_iterator begin() const noexcept { return m_items.begin(); }
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::list<T> m_items;
};

} // namespace ul
