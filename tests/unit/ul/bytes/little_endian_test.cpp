// SPDX-License-Identifier: Apache-2.0
// The byte order of streams and saved states.
#include "ul/little_endian.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace sarn_test {

namespace {

template <class Number>
constexpr bool isStoredAs(Number number, const std::array<unsigned char, sizeof(Number)>& expected) {
    std::array<unsigned char, sizeof(Number)> bytes{};
    ul::storeLittleEndian(bytes.data(), number);
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        if (bytes[i] != expected[i])
            return false;
    }
    return ul::loadLittleEndian<Number>(bytes.data()) == number;
}

static_assert(isStoredAs<std::uint8_t>(0xFE, {0xFE}));
static_assert(isStoredAs<std::uint16_t>(0xFEDC, {0xDC, 0xFE}));
static_assert(isStoredAs<std::uint32_t>(0xFEDCBA98, {0x98, 0xBA, 0xDC, 0xFE}));
static_assert(isStoredAs<std::uint64_t>(0xFEDCBA9876543210, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}));

} // namespace

TEST(LittleEndian, NumbersInMemoryOfAnyAlignment_AreStoredAndLoaded) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
        std::array<unsigned char, 24> memory{};
        ul::storeLittleEndian<std::uint64_t>(memory.data() + offset, 0xFEDCBA9876543210);
        for (std::size_t i = 0; i < memory.size(); ++i) {
            const bool isInside = i >= offset && i < offset + 8;
            EXPECT_EQ(memory[i], isInside ? 0x10 + 0x22 * (i - offset) : 0) << i;
        }
        EXPECT_EQ(ul::loadLittleEndian<std::uint64_t>(memory.data() + offset), 0xFEDCBA9876543210);
    }
}

} // namespace sarn_test
