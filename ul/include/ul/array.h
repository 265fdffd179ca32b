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
    /// Walks over the elements in order; valid until the array changes its size.
    using iterator = typename std::vector<T>::iterator;
    /// The same for elements that may only be read.
    using const_iterator = typename std::vector<T>::const_iterator;

    /// Puts an element behind the last one.
    void append(T value) { m_items.push_back(std::move(value)); }
    /// Cuts the array or fills it up with default values.
    /// \throws CInvalidArgError "invalid size" if `size` is negative.
    void resize(int size) {
        if (size < 0)
            throw CInvalidArgError("TArray::resize", "invalid size", CProps());
        m_items.resize(static_cast<std::size_t>(size));
    }
    /// Removes every element. Their destructors may use the array, which is empty by then.
    void clear() noexcept { const std::vector<T> items = std::exchange(m_items, {}); }

    /// Number of elements.
    int getSize() const noexcept { return static_cast<int>(m_items.size()); }
    /// Whether there is no element.
    bool isEmpty() const noexcept { return m_items.empty(); }

    /// The element at `index`, which must lie in [0, getSize()).
    T& operator[](int index) noexcept { return m_items[static_cast<std::size_t>(index)]; }
    /// The same for an array that may only be read.
    const T& operator[](int index) const noexcept { return m_items[static_cast<std::size_t>(index)]; }

    /// The first element, for range-based loops.
    iterator begin() noexcept { return m_items.begin(); }
    /// The place behind the last element.
    iterator end() noexcept { return m_items.end(); }
    /// The same for an array that may only be read.
    const_iterator begin() const noexcept { return m_items.begin(); }
    /// The same for an array that may only be read.
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::vector<T> m_items;
};

} // namespace ul
