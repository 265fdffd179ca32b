// SPDX-License-Identifier: Apache-2.0
/// \file
/// Growable array.
#pragma once

#include "ul/base.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace ul {

/// A growable array of values. Indices and sizes count elements. Owned by one thread at a time.
template <class T>
class TArray : public CBase {
public:
    using iterator = typename std::vector<T>::iterator;
    using const_iterator = typename std::vector<T>::const_iterator;

    void append(T value) { m_items.push_back(std::move(value)); }
    /// Cuts the array or fills it up with default values.
    void resize(int size) { m_items.resize(static_cast<std::size_t>(size)); }
    void clear() noexcept { m_items.clear(); }

    int getSize() const noexcept { return static_cast<int>(m_items.size()); }
    bool isEmpty() const noexcept { return m_items.empty(); }

    /// The element at `index`, which must lie in [0, getSize()).
    T& operator[](int index) noexcept { return m_items[static_cast<std::size_t>(index)]; }
    const T& operator[](int index) const noexcept { return m_items[static_cast<std::size_t>(index)]; }

    iterator begin() noexcept { return m_items.begin(); }
    iterator end() noexcept { return m_items.end(); }
    const_iterator begin() const noexcept { return m_items.begin(); }
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::vector<T> m_items;
};

} // namespace ul
