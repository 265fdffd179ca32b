// SPDX-License-Identifier: Apache-2.0
#include "ul/props.h"

#include <algorithm>

namespace ul {

CProps& CProps::add(const String& name, const String& value) {
    m_props.emplace_back(name, value);
    return *this;
}

bool CProps::tryGet(const String& name, String& value) const {
    const auto found =
        std::find_if(m_props.begin(), m_props.end(), [&](const auto& prop) { return prop.first == name; });
    if (found == m_props.end())
        return false;
    value = found->second;
    return true;
}

} // namespace ul
