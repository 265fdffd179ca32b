// SPDX-License-Identifier: Apache-2.0
/// \file
/// Ordered map.
#pragma once

#include "ul/base.h"

#include <map>
#include <utility>

namespace ul {

/// A map ordered by `<` on its keys. Owned by one thread at a time.
template <class K, class V>
class TMap : public CBase {
public:
    /// Iterates over the entries in the order of their keys. Valid as long as its entry.
    using const_iterator = typename std::map<K, V>::const_iterator;

    TMap() = default;
    TMap(const TMap&) = default;
    /// Takes the entries of the other map and leaves it empty.
    TMap(TMap&&) noexcept = default;
    /// Takes the entries of `other`. The previous entries are destroyed after that.
    TMap& operator=(TMap other) noexcept {
        m_items.swap(other.m_items);
        return *this;
    }
    ~TMap() override { clear(); }

    /// Stores `value` under `key`. A value that it replaces is destroyed after that; its destructor may use the map. If
    /// inserting a new entry fails, the map is unchanged.
    void set(const K& key, V value) {
        const auto entry = m_items.find(key);
        if (entry == m_items.end())
            m_items.emplace(key, std::move(value));
        else
            std::swap(entry->second, value);
    }

    /// The value under `key`, or null. Valid until the entry is removed.
    V* find(const K& key) {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : &found->second;
    }
    /// Read-only access.
    const V* find(const K& key) const {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : &found->second;
    }

    /// The value under `key`. If there is none, a default value is inserted first.
    V& findOrInsert(const K& key) { return m_items[key]; }

    /// Removes the entry under `key` and returns whether there was one. The destructor of the value may use the map.
    bool erase(const K& key) { return !m_items.extract(key).empty(); }
    /// Removes all entries. The destructors of the values may use the map; they find it empty.
    void clear() noexcept { const std::map<K, V> items = std::exchange(m_items, {}); }
    /// Number of entries.
    int getSize() const noexcept { return static_cast<int>(m_items.size()); }

    /// The entry with the smallest key, for range-based loops.
    const_iterator begin() const noexcept { return m_items.begin(); }
    /// One past the last entry.
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::map<K, V> m_items;
};

} // namespace ul
