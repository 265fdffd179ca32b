// SPDX-License-Identifier: Apache-2.0
/// \file
/// Keys and pass phrases that leave no trace in memory, from the file to their use. Header-only.
#pragma once

#include "ul/bytes.h"
#include "ul/error.h"
#include "ul/file.h"
#include "ul/text.h"

#include <climits>
#include <string>
#include <string_view>
#include <utility>

namespace ul {

/// Wipes the characters of a string, and those that it no longer counts, and empties it.
template <class Character>
void wipeAndClear(std::basic_string<Character>& text) noexcept {
    text.resize(text.capacity());
    wipe(text.data(), text.size() * sizeof(Character));
    text.clear();
}

/// A text that is wiped when it ends: a private key, a pass phrase. It stands where a String is wanted.
class CSecretText {
public:
    /// Decodes UTF-8, which stays the caller's to wipe.
    /// \throws CError "Invalid UTF-8 text."
    explicit CSecretText(std::string_view utf8) : m_text(text(utf8)) {}
    /// Takes the text of `other`, which becomes empty.
    CSecretText(CSecretText&& other) noexcept : m_text(std::move(other.m_text)) { wipe(other.m_text); }
    CSecretText(const CSecretText&) = delete;
    CSecretText& operator=(const CSecretText&) = delete;
    ~CSecretText() { wipe(m_text); }

    /// The text, valid as long as this object.
    const String& get() const noexcept { return m_text; }
    /// The same, so that it can stand where a String is wanted.
    operator const String&() const noexcept { return m_text; }

    /// The UTF-8 of the text, for CPasswordKeyCache for example.
    /// \throws CError "Text cannot be encoded as UTF-8."
    TCryptBuffer<char> toUTF8() const {
        std::string utf8 = m_text.toUTF8();
        TCryptBuffer<char> bytes;
        try {
            bytes.init(utf8.data(), CBytes(utf8).getIntSize("CSecretText::toUTF8"));
        } catch (...) {
            wipeAndClear(utf8);
            throw;
        }
        wipeAndClear(utf8);
        return bytes;
    }

private:
    // Nobody else reaches the string, and it is not a constant: the access is to the String's own text.
    static void wipe(String& text) noexcept { wipeAndClear(const_cast<std::wstring&>(text.toStdWString())); }

    String m_text;
};

/// A whole file, for a key of bytes.
/// \throws CFileError, also if it is larger than 2^31 - 4097 bytes
inline TCryptBuffer<unsigned char> readSecretFile(const CWindowsPath& path) {
    constexpr int pieceSize = 4096;
    CWindowsFileInStream file(path);
    TCryptBuffer<unsigned char> content;
    while (!file.isEndOfStream()) {
        if (content.getUsed() > INT_MAX - pieceSize)
            throw CFileError("read file", path.getString(), "it is too large to be held in memory", -1);
        content.ensureAllocated(content.getUsed() + pieceSize);
        content.addUsed(file.readLax(content.getData() + content.getUsed(), pieceSize));
    }
    return content;
}

/// What readUTF8TextFile() reads, for a private key: neither the bytes of the file nor the text stays in memory.
/// \throws CFileError; CError "Invalid UTF-8 text." with the properties "position" and "path"
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

/// The first line of a text file, without its end: a pass phrase.
/// \throws as readSecretTextFile() does
inline CSecretText readSecretLine(const CWindowsPath& path) {
    const CSecretText content = readSecretTextFile(path);
    const TCryptBuffer<char> utf8 = content.toUTF8();
    const std::string_view characters = CBytes(utf8).asText();
    return CSecretText(characters.substr(0, characters.find_first_of("\r\n")));
}

} // namespace ul
