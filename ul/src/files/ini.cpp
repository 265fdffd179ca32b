// SPDX-License-Identifier: Apache-2.0
#include "ul/ini.h"

#include "errors/raise.h"
#include "files/whole_file.h"

#include <algorithm>
#include <string>

namespace ul {

namespace {

String trim(const std::wstring& text) {
    const std::size_t first = text.find_first_not_of(L" \t");
    if (first == std::wstring::npos)
        return String();
    return text.substr(first, text.find_last_not_of(L" \t") + 1 - first);
}

String unquote(const std::wstring& value) {
    const bool isQuoted = value.size() >= 2 && value.front() == L'"' && value.find(L'"', 1) == value.size() - 1;
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

[[noreturn]] void raiseInvalidLine(int number, const String& reason) {
    raiseError("Invalid INI text in line " + toString(number) + ": " + reason + ".",
               CProps().add("line", toString(number)));
}

String parseHeader(const std::wstring& line, int number) {
    const std::size_t end = line.find(L']');
    if (end == std::wstring::npos)
        raiseInvalidLine(number, "the section header has no ']'");
    if (end + 1 != line.size())
        raiseInvalidLine(number, "something follows the section header");
    String name = trim(line.substr(1, end - 1));
    if (name.isEmpty())
        raiseInvalidLine(number, "the section has no name");
    return name;
}

} // namespace

namespace detail {

template <class T>
const T* NamedItems<T>::find(const String& name) const {
    const int* const position = positions.find(name);
    return position ? &items[*position] : nullptr;
}

template <class T>
T& NamedItems<T>::findOrAppend(const String& name) {
    if (const int* const position = positions.find(name))
        return items[*position];
    names.append(name);
    items.append(T());
    positions.set(name, items.getSize() - 1);
    return items[items.getSize() - 1];
}

} // namespace detail

CINIContent::CINIContent() = default;

CINIContent::~CINIContent() = default;

P<CINIContent> CINIContent::parseFile(const TPathImpl<CWindowsPathTraits>& path) {
    TBuffer<unsigned char> content;
    readFile(path, content);
    return parseData(content, path);
}

void CINIContent::readFile(const TPathImpl<CWindowsPathTraits>& path, TBuffer<unsigned char>& data) {
    readWholeFile(path, data);
}

P<CINIContent> CINIContent::parseData(const TBuffer<unsigned char>& data, const TPathImpl<CWindowsPathTraits>& path) {
    return nameFileInErrors(path, [&] { return parseData(data); });
}

P<CINIContent> CINIContent::parseData(const TBuffer<unsigned char>& data) {
    return parse(decodeUTF8File(data));
}

P<CINIContent> CINIContent::parse(const String& text) {
    P<CINIContent> content = P<CINIContent>::adopt(new (RawNew{}) CINIContent);
    const std::wstring& whole = text;
    String section;
    int number = 0;
    for (std::size_t start = 0; start < whole.size();) {
        const std::size_t end = std::min(whole.find_first_of(L"\r\n", start), whole.size());
        content->parseLine(section, trim(whole.substr(start, end - start)), ++number);
        start = whole.compare(end, 2, L"\r\n") == 0 ? end + 2 : end + 1;
    }
    return content;
}

void CINIContent::parseLine(String& section, const String& line, int number) {
    if (line.isEmpty() || line[0] == L';' || line[0] == L'#')
        return;
    if (line[0] == L'[') {
        section = parseHeader(line, number);
        m_sections.findOrAppend(section);
        return;
    }
    String name;
    String separator;
    String value;
    partition(line, "=", name, separator, value);
    name = trim(name);
    if (separator.isEmpty())
        raiseInvalidLine(number, "it is no comment, no section header and has no '='");
    if (name.isEmpty())
        raiseInvalidLine(number, "the value has no name");
    setSectionValue(section, name, unquote(trim(value)));
}

bool CINIContent::tryGetSectionValue(String& value, const String& section, const String& name) const {
    const Section* const values = m_sections.find(section);
    const String* const found = values ? values->find(name) : nullptr;
    if (found)
        value = *found;
    return found != nullptr;
}

void CINIContent::setSectionValue(const String& section, const String& name, const String& value) {
    m_sections.findOrAppend(section).findOrAppend(name) = value;
}

void CINIContent::getSectionNames(TArray<String>& names) const {
    names = m_sections.names;
}

void CINIContent::getSectionValueNames(const String& section, TArray<String>& names) const {
    const Section* const values = m_sections.find(section);
    names = values ? values->names : TArray<String>();
}

} // namespace ul
