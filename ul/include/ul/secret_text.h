// SPDX-License-Identifier: Apache-2.0
/// \file
/// Keys and passphrases that leave no trace in memory between the file and their use. Header-only.
#pragma once

#include "ul/bytes.h"
#include "ul/error.h"
#include "ul/ini.h"
#include "ul/text.h"

#include <string>
#include <string_view>
#include <utility>

namespace ul {

/// Wipes a string with its spare capacity and empties it.
template <class Character>
void wipeAndClear(std::basic_string<Character>& text) noexcept {
    text.resize(text.capacity());
    wipe(text.data(), text.size() * sizeof(Character));
    text.clear();
}

/// A private key, a passphrase or another text that is wiped on destruction. It converts to String.
class CSecretText {
public:
    /// Decodes UTF-8. The caller owns `utf8` and wipes it.
    /// \throws CError "Invalid UTF-8 text.".
    explicit CSecretText(std::string_view utf8) : m_text(text(utf8)) {}
    /// Takes the text of `other` and leaves `other` empty.
    CSecretText(CSecretText&& other) noexcept : m_text(std::move(other.m_text)) { wipe(other.m_text); }
    CSecretText(const CSecretText&) = delete;
    CSecretText& operator=(const CSecretText&) = delete;
    ~CSecretText() { wipe(m_text); }

    /// The text. Valid as long as this object.
    const String& get() const noexcept { return m_text; }
    /// The text, for parameters of type String. Valid as long as this object.
    operator const String&() const noexcept { return m_text; }

    /// The text as UTF-8, for example for CPasswordKeyCache.
    /// \throws CError "Text cannot be encoded as UTF-8.".
    TCryptBuffer<char> toUTF8() const {
        struct Wiped {
            std::string characters;
            ~Wiped() { wipeAndClear(characters); }
        };
        const Wiped utf8{m_text.toUTF8()};
        TCryptBuffer<char> bytes;
        bytes.init(utf8.characters.data(), CBytes(utf8.characters).getIntSize("CSecretText::toUTF8"));
        return bytes;
    }

private:
    // This object is the only owner of the string, and the string is not const: the cast reaches the String's own text.
    static void wipe(String& text) noexcept { wipeAndClear(const_cast<std::wstring&>(text.toStdWString())); }

    String m_text;
};

/// Reads a whole file, for example a binary key.
/// \throws CFileError, also if the file is larger than 2^31 - 65537 bytes.
inline TCryptBuffer<unsigned char> readSecretFile(const CWindowsPath& path) {
    TCryptBuffer<unsigned char> content;
    CINIContent::readFile(path, content); // reads any file, and grows the buffer without leaving copies
    return content;
}

/// Reads a file as readUTF8TextFile() does, for example a private key. All copies, the returned text included, are
/// wiped.
/// \throws CFileError; CError "Invalid UTF-8 text." with the properties "position" and "path".
inline CSecretText readSecretTextFile(const CWindowsPath& path) {
    const TCryptBuffer<unsigned char> content = readSecretFile(path);
    std::string_view utf8 = CBytes(content).asText();
    if (utf8.substr(0, 3) == "\xEF\xBB\xBF") // a byte order mark
        utf8.remove_prefix(3);
    try {
        return CSecretText(utf8);
    } catch (const CError& error) {
        CProps props = error.getProps();
        throw CError(error.getMessage(), "", -1, props.add("path", path.getString()), nullptr);
    }
}

/// Reads the first line of a text file without its line end, for example a passphrase.
/// \throws as readSecretTextFile() does.
inline CSecretText readSecretLine(const CWindowsPath& path) {
    const CSecretText content = readSecretTextFile(path);
    const TCryptBuffer<char> utf8 = content.toUTF8();
    const std::string_view characters = CBytes(utf8).asText();
    return CSecretText(characters.substr(0, characters.find_first_of("\r\n")));
}

} // namespace ul
