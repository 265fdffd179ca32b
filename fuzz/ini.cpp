// SPDX-License-Identifier: Apache-2.0
// The content of a configuration can be written and read again, and another reader reads the same.
#include "ul/ini.h"

#ifdef SARN_FUZZ_INIH
#include "ini_beside_inih.h"
#endif
#include "property.h"
#include "targets.h"

namespace sarn_fuzz {

namespace {

ul::P<ul::CINIContent> tryParse(const void* data, int size) {
    Buffer content;
    content.init(static_cast<const unsigned char*>(data), size);
    try {
        return ul::CINIContent::parseData(content);
    } catch (const ul::CError&) {
        return nullptr;
    }
}

/// A value in quotes, which preserve its spaces, unless it contains quotes.
ul::String quote(const ul::String& value) {
    const bool hasQuotes = value.toStdWString().find(L'"') != std::wstring::npos;
    return hasQuotes ? value : "\"" + value + "\"";
}

/// All sections, names and values.
ul::String write(const ul::CINIContent& content) {
    // A name may start with the bytes of a byte order mark.
    ul::String text = "\n";
    ul::TArray<ul::String> sections;
    content.getSectionNames(sections);
    for (const ul::String& section : sections) {
        if (!section.isEmpty())
            text += "[" + section + "]\n";
        ul::TArray<ul::String> names;
        content.getSectionValueNames(section, names);
        for (const ul::String& name : names) {
            ul::String value;
            require(content.tryGetSectionValue(value, section, name), "what is listed has a value");
            text += name + "=" + quote(value) + "\n";
        }
    }
    return text;
}

} // namespace

void fuzzINI(const std::uint8_t* data, std::size_t size) {
    const ul::P<ul::CINIContent> content = tryParse(data, static_cast<int>(size));
    if (!content)
        return;
#ifdef SARN_FUZZ_INIH
    compareWithInih({data, data + size}, *content);
#endif
    const ul::String text = write(*content);
    const std::string bytes = text.toUTF8();
    const ul::P<ul::CINIContent> again = tryParse(bytes.data(), static_cast<int>(bytes.size()));
    require(again && write(*again) == text, "what is written down reads the same");
}

} // namespace sarn_fuzz
