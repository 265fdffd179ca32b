// SPDX-License-Identifier: Apache-2.0
/// \file
/// Named values in an error.
#pragma once

#include "ul/string.h"

#include <utility>
#include <vector>

namespace ul {

/// Named texts, in the order in which they were added.
class UL_EXPORT CProps {
public:
    /// Adds a value and returns this list, so that calls chain.
    CProps& add(const String& name, const String& value);

    /// Number of values.
    int getCount() const noexcept { return static_cast<int>(m_props.size()); }
    /// The name at `index`. Requires: 0 <= `index` < getCount().
    const String& getName(int index) const noexcept { return m_props[static_cast<std::size_t>(index)].first; }
    /// The value at `index`; same requirement.
    const String& getValue(int index) const noexcept { return m_props[static_cast<std::size_t>(index)].second; }

    /// Stores the first value called `name` in `value`. If there is none, returns false and leaves `value` unchanged.
    bool tryGet(const String& name, String& value) const;

private:
    std::vector<std::pair<String, String>> m_props;
};

} // namespace ul
