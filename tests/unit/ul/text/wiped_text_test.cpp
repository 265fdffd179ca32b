// SPDX-License-Identifier: Apache-2.0
#include "ul/string.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sarn_test {

TEST(WipeText, CharactersOfNowAndOfBefore_AreZeros) {
    ul::String text(std::wstring(50, L'k') + std::wstring(50, L' '));
    const wchar_t* const characters = text.c_str();
    text.trimRight();
    ASSERT_EQ(text.getLength(), 50);
    ul::wipe(text);
    EXPECT_TRUE(text.isEmpty());
    ASSERT_EQ(text.c_str(), characters) << "the memory is still the text's";
    EXPECT_TRUE(std::all_of(characters, characters + 100, [](wchar_t character) { return character == 0; }));
}

TEST(WipeText, EmptyText_StaysEmpty) {
    ul::String text;
    ul::wipe(text);
    EXPECT_TRUE(text.isEmpty());
    text += "next";
    EXPECT_TRUE(text == "next");
}

} // namespace sarn_test
