// SPDX-License-Identifier: Apache-2.0
/// \file
/// Bytes as hexadecimal text. Header-only.
#pragma once

#include "ul/bytes.h"

#include <string>
#include <string_view>

namespace ul {

/// Two lower-case digits for each byte, as common commands print a digest.
inline std::string toHex(CBytes bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text(2 * bytes.size(), '0');
    auto digit = text.begin();
    for (const unsigned char byte : bytes) {
        *digit++ = digits[byte >> 4];
        *digit++ = digits[byte & 15];
    }
    return text;
}

/// Parses hexadecimal text in either case, without a prefix or white space.
/// \throws CInvalidArgError "invalid hexadecimal text" if the text is anything else; "data is too large".
inline TCryptBuffer<unsigned char> fromHex(std::string_view text) {
    const auto getValue = [](char digit) {
        if (digit >= '0' && digit <= '9')
            return digit - '0';
        const char letter = static_cast<char>(digit | 0x20);
        if (letter >= 'a' && letter <= 'f')
            return letter - 'a' + 10;
        throw CInvalidArgError("fromHex", "invalid hexadecimal text", CProps());
    };
    if (text.size() % 2 != 0)
        throw CInvalidArgError("fromHex", "invalid hexadecimal text", CProps());
    const int size = CBytes(text).getIntSize("fromHex") / 2;
    TCryptBuffer<unsigned char> bytes(size, -1);
    for (int i = 0; i < size; ++i) {
        const std::size_t position = 2 * static_cast<std::size_t>(i);
        bytes.getData()[i] = static_cast<unsigned char>(getValue(text[position]) << 4 | getValue(text[position + 1]));
    }
    return bytes;
}

} // namespace ul
