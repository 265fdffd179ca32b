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

    /// An empty map.
    TMap() = default;
    /// Copies every entry.
    TMap(const TMap&) = default;
    /// Takes the entries of the other map, which is empty from then on.
    TMap(TMap&&) noexcept = default;
    /// Takes the entries of `other`. What was there ends after that.
    TMap& operator=(TMap other) noexcept {
        m_items.swap(other.m_items);
        return *this;
    }
    ~TMap() override { clear(); }

    /// Stores `value` under `key`, in place of what stood there, which ends after that: its destructor may use the map.
    /// If storing a new entry fails the map is unchanged.
    void set(const K& key, V value) {
        const auto entry = m_items.find(key);
        if (entry == m_items.end())
            m_items.emplace(key, std::move(value));
        else
            std::swap(entry->second, value);
    }

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

    /// Removes the entry under `key` and returns whether there was one. The destructor of its value may use the map.
    bool erase(const K& key) { return !m_items.extract(key).empty(); }
    /// Removes every entry. The destructors of the values may use the map, which is empty by then.
    void clear() noexcept { const std::map<K, V> items = std::exchange(m_items, {}); }
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
