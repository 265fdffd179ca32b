// SPDX-License-Identifier: Apache-2.0
#include "ul/path.h"

#include "ul/error.h"
#include "ul/list.h"

#include <algorithm>
#include <string>

namespace ul {

namespace {

/// Splits `text` at `separator` into `components` and resolves "." and "..".
template <class Traits>
bool resolveComponents(const std::wstring& text, bool mustNormalize, TList<String>& components) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(Traits::getSep(), start), text.size());
        const String component = text.substr(start, end - start);
        start = end + 1;
        if (component.isEmpty() || component == L".")
            continue;
        if (component == L"..") {
            if (components.isEmpty())
                return false;
            components.removeLast();
            continue;
        }
        components.append(mustNormalize ? Traits::normalizeComponent(component) : component);
        if (components.getLast().isEmpty())
            return false;
    }
    return true;
}

/// Normalises `text`; empty if it is not a valid path.
template <class Traits>
String normalizePath(const String& text) {
    if (text.isEmpty() || text.toStdWString().find(L'\0') != std::wstring::npos)
        return String();
    String absolute = Traits::normalizeSeparators(text);
    if (!Traits::isAbsolute(absolute))
        absolute = Traits::makeAbsolute(absolute, Traits::normalizeSeparators(getCurrentWorkDirectoryAsString()));

    const int rootLength = Traits::getRootLength(absolute);
    String result = Traits::normalizeRoot(absolute.Mid(0, rootLength));
    TList<String> components;
    const bool mustNormalize = Traits::pathNeedsToBeNormalizedToBeValid(absolute);
    if (result.isEmpty() || !resolveComponents<Traits>(absolute.Mid(rootLength), mustNormalize, components))
        return String();
    for (const String& component : components) {
        result += component;
        result += Traits::getSep();
    }
    return Traits::finalizeNormalizedPath(result);
}

} // namespace

template <class Traits>
TPathImpl<Traits>::TPathImpl(const String& text) : m_text(normalizePath<Traits>(text)) {
    if (m_text.isEmpty())
        throw CBadPathError(text);
}

template class TPathImpl<CWindowsPathTraits>;

} // namespace ul
