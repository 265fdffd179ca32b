// SPDX-License-Identifier: Apache-2.0
/// \file
/// Configuration text in INI form.
#pragma once

#include "ul/array.h"
#include "ul/base.h"
#include "ul/buffer.h"
#include "ul/map.h"
#include "ul/path.h"
#include "ul/pointer.h"
#include "ul/string.h"

namespace ul {

namespace detail {

/// A list of named items with a look-up by name. It is separate from the exported class because inlining, which varies
/// between compilers, would otherwise change what the library exports.
template <class T>
struct NamedItems {
    /// In the order in which they were appended.
    TArray<String> names;
    /// In the same order.
    TArray<T> items;
    /// Index of each item.
    TMap<String, int> positions;

    /// The item called `name`, or null.
    const T* find(const String& name) const;
    /// The item called `name`; a default one is appended first if there is none.
    T& findOrAppend(const String& name);
};

} // namespace detail

/// Named values in named sections, in the order of the text.
///
/// A line ends with LF, CR or both and is one of: empty, a comment that starts with `;` or `#`, a section header
/// `[section]`, or `name=value`. Spaces and tabs around a line, a name or a value are ignored. Double quotes around a
/// value are removed if there are none inside. Names are case-sensitive. Repeated sections are merged; of repeated
/// names the last one wins. Values before the first header belong to the section "". Any other line is an error, so
/// that no line is silently dropped.
///
/// Any number of threads may read at once while none changes the content.
class UL_EXPORT CINIContent : public CBase {
public:
    /// Reads and parses a file of UTF-8 text, with or without a byte order mark.
    /// \throws CFileError if the file cannot be read; CError as parseData() does, with the property "path".
    static P<CINIContent> parseFile(const TPathImpl<CWindowsPathTraits>& path);
    /// Parses the used bytes as UTF-8 text, with or without a byte order mark.
    /// \throws CError "Invalid UTF-8 text."; CError "Invalid INI text in line N: ..." with the property "line", where
    ///         the first line is number 1.
    static P<CINIContent> parseData(const TBuffer<unsigned char>& data);
    /// Parses bytes that the caller has read from a file and inspected. Errors have the property "path".
    static P<CINIContent> parseData(const TBuffer<unsigned char>& data, const TPathImpl<CWindowsPathTraits>& path);
    /// Reads the bytes that parseFile() would parse, and replaces the content of `data` by them.
    /// \throws CFileError if the file cannot be read.
    static void readFile(const TPathImpl<CWindowsPathTraits>& path, TBuffer<unsigned char>& data);

    ~CINIContent() override;

    /// Stores the value called `name` in `value`. If there is none, returns false and leaves `value` unchanged.
    bool tryGetSectionValue(String& value, const String& section, const String& name) const;

    /// Sets a value in memory. A new section or name is appended.
    void setSectionValue(const String& section, const String& name, const String& value);

    /// Replaces the content of `names` by the names of all sections.
    void getSectionNames(TArray<String>& names) const;
    /// Replaces the content of `names` by the names of all values in a section; there are none if the section does not
    /// exist.
    void getSectionValueNames(const String& section, TArray<String>& names) const;

private:
    using Section = detail::NamedItems<String>;

    CINIContent();
    static P<CINIContent> parse(const String& text);
    void parseLine(String& section, const String& line, int number);

    detail::NamedItems<Section> m_sections;
};

} // namespace ul
