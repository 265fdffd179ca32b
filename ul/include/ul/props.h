// SPDX-License-Identifier: Apache-2.0
/// \file
/// Named values that an error carries.
#pragma once

#include "ul/string.h"

#include <utility>
#include <vector>

namespace ul {

/// A list of named texts, in the order in which they were added.
class UL_EXPORT CProps {
public:
    /// Adds a value and returns this list, so that calls chain.
    CProps& add(const String& name, const String& value);

    /// Number of values.
    int getCount() const noexcept { return static_cast<int>(m_props.size()); }
    /// Name and value at `index`, which must lie in [0, getCount()).
    const String& getName(int index) const noexcept { return m_props[static_cast<std::size_t>(index)].first; }
    /// The text of the value at `index`, as for getName().
    const String& getValue(int index) const noexcept { return m_props[static_cast<std::size_t>(index)].second; }

    /// Puts the first value called `name` into `value`; returns false and leaves it alone if there is none.
    bool tryGet(const String& name, String& value) const;

private:
    std::vector<std::pair<String, String>> m_props;
};

} // namespace ul
