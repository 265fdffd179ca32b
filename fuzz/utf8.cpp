// SPDX-License-Identifier: Apache-2.0
// UTF-8 is decoded if and only if it is well-formed by the table of the Unicode standard (D92), and encodes to the
// same.
#include "property.h"
#include "targets.h"

#include "ul/string.h"

namespace sarn_fuzz {

namespace {

/// The number of bytes of a well-formed sequence at the start; 0 if there is none.
std::size_t getSequenceLength(const std::uint8_t* data, std::size_t size) {
    const auto continues = [&](std::size_t index, unsigned low, unsigned high) {
        return index < size && data[index] >= low && data[index] <= high;
    };
    const unsigned lead = data[0];
    if (lead <= 0x7F)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return continues(1, 0x80, 0xBF) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = lead == 0xED ? 0x9F : 0xBF;
        return continues(1, low, high) && continues(2, 0x80, 0xBF) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
        return continues(1, low, high) && continues(2, 0x80, 0xBF) && continues(3, 0x80, 0xBF) ? 4 : 0;
    }
    return 0;
}

bool isWellFormed(const std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        const std::size_t length = getSequenceLength(data, size);
        if (length == 0)
            return false;
        data += length;
        size -= length;
    }
    return true;
}

} // namespace

void fuzzUTF8(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    bool isTaken = true;
    try {
        const ul::String text = ul::String::fromUTF8(bytes.data(), bytes.size());
        require(text.toUTF8() == bytes, "UTF-8 comes back the same");
    } catch (const ul::CError&) {
        isTaken = false;
    }
    require(isTaken == isWellFormed(data, size), "well-formed UTF-8 is taken, other bytes are refused");
}

} // namespace sarn_fuzz
