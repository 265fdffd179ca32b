// SPDX-License-Identifier: Apache-2.0
// The text of a path is absolute and its own normal form.
#include "ul/path.h"

#include "property.h"
#include "targets.h"

namespace sarn_fuzz {

namespace {

bool hasComponent(const std::wstring& text, const wchar_t* component) {
    return (text + L"\\").find(std::wstring(L"\\") + component + L"\\") != std::wstring::npos;
}

} // namespace

void fuzzPath(const std::uint8_t* data, std::size_t size) {
    ul::String text;
    try {
        text = ul::String::fromUTF8(reinterpret_cast<const char*>(data), size);
        text = ul::CWindowsPath(text).getString();
    } catch (const ul::CError&) {
        return;
    }
    const ul::CWindowsPath again(text);
    require(again.getString() == text, "a path is its own normal form");
    require(ul::CWindowsPathTraits::isAbsolute(text), "a path is absolute");
    const int root = ul::CWindowsPathTraits::getRootLength(text);
    require(root > 0 && root <= text.getLength(), "a path has a root");
    if (text.StartsWith(L"\\\\?\\"))
        return;
    const std::wstring behindRoot = text.Mid(root - 1, -1);
    require(!hasComponent(behindRoot, L".") && !hasComponent(behindRoot, L".."), "no component is left to resolve");
    require(behindRoot.find(L'/') == std::wstring::npos && behindRoot.find(L"\\\\") == std::wstring::npos,
            "separators are single and of one kind");
}

} // namespace sarn_fuzz
