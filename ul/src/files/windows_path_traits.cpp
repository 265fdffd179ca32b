// SPDX-License-Identifier: Apache-2.0
#include "ul/path.h"

#include <algorithm>
#include <string>

namespace ul {

namespace {

constexpr wchar_t sep = L'\\';

bool isSeparator(wchar_t character) {
    return character == sep || character == L'/';
}

bool isLetter(wchar_t character) {
    return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z');
}

wchar_t toUpper(wchar_t character) {
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A') : character;
}

/// Requires: `position` is not beyond the end, where a null character is.
bool startsWithDrive(const std::wstring& text, std::size_t position) {
    return isLetter(text[position]) && text[position + 1] == L':';
}

bool isVerbatim(const std::wstring& text) {
    return text.compare(0, 4, L"\\\\?\\") == 0;
}

/// True even without the separator after "UNC", because completing the root would add it.
bool isVerbatimShare(const std::wstring& text) {
    return isVerbatim(text) && text.size() >= 7 && toUpper(text[4]) == L'U' && toUpper(text[5]) == L'N' &&
           toUpper(text[6]) == L'C' && (text.size() == 7 || text[7] == sep);
}

/// The start of a root: fixed characters, and the number of names after them that belong to the root.
struct RootForm {
    std::size_t prefix;
    int names;
};

RootForm getRootForm(const std::wstring& text) {
    if (isVerbatimShare(text))
        return {8, 2};
    if (isVerbatim(text))
        return {4, 1};
    if (text.compare(0, 2, L"\\\\") == 0)
        return {2, 2};
    if (startsWithDrive(text, 0))
        return {text[2] == sep ? std::size_t{3} : std::size_t{2}, 0};
    return {text.compare(0, 1, L"\\") == 0 ? std::size_t{1} : std::size_t{0}, 0};
}

/// End of the name at `position`: the next separator or the end of the text.
std::size_t getNameEnd(const std::wstring& text, std::size_t position) {
    return std::min(text.find(sep, position), text.size());
}

bool isName(const std::wstring& text) {
    return !text.empty() && text != L"." && text != L"..";
}

} // namespace

bool CWindowsPathTraits::isAbsolute(const String& text) {
    const RootForm form = getRootForm(text);
    return form.names > 0 || form.prefix == 3;
}

int CWindowsPathTraits::getRootLength(const String& text) {
    const std::wstring& whole = text;
    const RootForm form = getRootForm(whole);
    std::size_t end = form.prefix;
    for (int i = 0; i < form.names; ++i)
        end = std::min(getNameEnd(whole, end) + 1, whole.size());
    return static_cast<int>(end);
}

String CWindowsPathTraits::normalizeSeparators(const String& text) {
    const std::wstring& given = text;
    std::wstring result;
    // Three separators at the start remain three: "\\" and an empty name, which no root may have.
    const std::size_t shareStart = isSeparator(given[0]) && isSeparator(given[1]) ? 2 : 0;
    for (const wchar_t character : given) {
        const bool isRepeated = result.size() > shareStart && result.back() == sep;
        if (!isSeparator(character))
            result += character;
        else if (!isRepeated)
            result += sep;
    }
    return result;
}

String CWindowsPathTraits::normalizeRoot(const String& root) {
    std::wstring result = root;
    const RootForm form = getRootForm(result);
    std::size_t position = form.prefix;
    for (int i = 0; i < form.names; ++i) {
        const std::size_t start = std::min(position, result.size());
        const std::size_t end = getNameEnd(result, start);
        if (!isName(result.substr(start, end - start)))
            return String();
        position = end + 1;
    }
    if (form.prefix == 3)
        result[0] = toUpper(result[0]);
    else if (form.prefix == 4 && startsWithDrive(result, 4))
        result[4] = toUpper(result[4]);
    if (result.empty() || result.back() != sep)
        result += sep;
    return result;
}

String CWindowsPathTraits::normalizeComponent(const String& component) {
    const std::wstring& whole = component;
    const std::size_t last = whole.find_last_not_of(L". ");
    return last == std::wstring::npos ? String() : String(whole.substr(0, last + 1));
}

bool CWindowsPathTraits::pathNeedsToBeNormalizedToBeValid(const String& text) {
    return !isVerbatim(text);
}

String CWindowsPathTraits::makeAbsolute(const String& text, const String& workDirectory) {
    const std::wstring& given = text;
    if (startsWithDrive(given, 0)) {
        const std::wstring& directory = workDirectory;
        const std::size_t drive = isVerbatim(directory) ? 4 : 0;
        const bool isSameDrive = startsWithDrive(directory, drive) && toUpper(directory[drive]) == toUpper(given[0]);
        return (isSameDrive ? workDirectory : text.Mid(0, 2)) + L"\\" + text.Mid(2);
    }
    if (text.StartsWith(L"\\"))
        return workDirectory.Mid(0, getRootLength(workDirectory)) + text;
    return workDirectory + L"\\" + text;
}

String CWindowsPathTraits::finalizeNormalizedPath(const String& path) {
    const int last = path.getLength() - 1;
    const bool hasSepAtEnd = last >= getRootLength(path) && path[last] == sep;
    return hasSepAtEnd ? path.Mid(0, last) : path;
}

} // namespace ul
