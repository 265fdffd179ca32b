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

/// A list of named items that finds them by name. It is not part of the exported class: the compiler's choice which of
/// its functions to inline would change what the library exports.
template <class T>
struct NamedItems {
    TArray<String> names;
    TArray<T> items;
    TMap<String, int> positions;

    const T* find(const String& name) const;
    T& findOrAppend(const String& name);
};

} // namespace detail

/// Named values in named sections, in the order of the text.
///
/// Lines end with LF, CR or both and are one of: nothing, a comment that starts with `;` or `#`, a section header
/// `[section]`, or `name=value`. Spaces and tabs around a line, a name or a value do not count; a value in double
/// quotes with none inside loses them. Names are case-sensitive. A repeated section goes on, a repeated name takes the
/// last value. Values ahead of any header belong to the section named "". Whatever is none of these is refused, so that
/// no line is silently left out.
///
/// Reading from several threads is safe while none changes the content.
class UL_EXPORT CINIContent : public CBase {
public:
    /// Reads and parses a file of UTF-8 text, with or without a byte order mark.
    /// \throws CFileError if the file cannot be read; CError as parseData() does, with the property "path".
    static P<CINIContent> parseFile(const TPathImpl<CWindowsPathTraits>& path);
    /// Parses the used bytes as UTF-8 text, with or without a byte order mark.
    /// \throws CError "Invalid UTF-8 text."; CError "Invalid INI text in line N: ..." with the property "line", N
    ///         counted from 1.
    static P<CINIContent> parseData(const TBuffer<unsigned char>& data);
    /// The same for bytes that a caller has read from a file and inspected. Errors have the property "path".
    static P<CINIContent> parseData(const TBuffer<unsigned char>& data, const TPathImpl<CWindowsPathTraits>& path);
    /// Reads the bytes that parseFile() would parse into `data`, in place of what it held.
    /// \throws CFileError if the file cannot be read.
    static void readFile(const TPathImpl<CWindowsPathTraits>& path, TBuffer<unsigned char>& data);

    ~CINIContent() override;

    /// Puts the value called `name` into `value`; returns false and leaves it alone if there is none.
    bool tryGetSectionValue(String& value, const String& section, const String& name) const;

    /// Sets a value in memory; a new section or name goes to the end.
    void setSectionValue(const String& section, const String& name, const String& value);

    /// Replaces the content of `names` by the names of all sections.
    void getSectionNames(TArray<String>& names) const;
    /// Replaces the content of `names` by the names of all values of a section; none if there is no such section.
    void getSectionValueNames(const String& section, TArray<String>& names) const;

private:
    using Section = detail::NamedItems<String>;

    CINIContent();
    static P<CINIContent> parse(const String& text);
    void parseLine(String& section, const String& line, int number);

    detail::NamedItems<Section> m_sections;
};

} // namespace ul
