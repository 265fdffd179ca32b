// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ul/ini.h"

#include <stdexcept>

namespace sarn_test {

/// Calls `action(section, name, value)` for each value, in order.
template <class Action>
void forEachValue(const ul::CINIContent& content, Action action) {
    ul::TArray<ul::String> sections;
    content.getSectionNames(sections);
    for (const ul::String& section : sections) {
        ul::TArray<ul::String> names;
        content.getSectionValueNames(section, names);
        for (const ul::String& name : names) {
            ul::String value;
            if (!content.tryGetSectionValue(value, section, name))
                throw std::logic_error("a name is listed, but has no value");
            action(section.toUTF8(), name.toUTF8(), value.toUTF8());
        }
    }
}

} // namespace sarn_test
