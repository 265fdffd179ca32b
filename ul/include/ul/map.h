// SPDX-License-Identifier: Apache-2.0
/// \file
/// Ordered map.
#pragma once

#include "ul/base.h"

#include <map>
#include <utility>

namespace ul {

/// A map ordered by `<` of its keys. Owned by one thread at a time.
template <class K, class V>
class TMap : public CBase {
public:
    /// Walks over the entries in the order of their keys; valid for as long as its entry.
    using const_iterator = typename std::map<K, V>::const_iterator;

    /// Stores `value` under `key`, in place of what stood there. If storing a new entry fails the map is unchanged.
    void set(const K& key, V value) { m_items.insert_or_assign(key, std::move(value)); }

    /// The value under `key`, or null. Valid until that entry is removed.
    V* find(const K& key) {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : &found->second;
    }
    /// The same for a map that may only be read.
    const V* find(const K& key) const {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : &found->second;
    }

    /// The value under `key`; a default value is stored there first if there is none.
    V& findOrInsert(const K& key) { return m_items[key]; }

    /// Removes every entry.
    void clear() noexcept { m_items.clear(); }
    /// Number of entries.
    int getSize() const noexcept { return static_cast<int>(m_items.size()); }

    /// The entry with the smallest key, for range-based loops.
    const_iterator begin() const noexcept { return m_items.begin(); }
    /// The place behind the last entry.
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::map<K, V> m_items;
};

} // namespace ul
