// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/string.h"

#include <gtest/gtest.h>

using ul::String;

namespace {

void expectPartition(const char* text, const char* separator, const char* before, const char* found,
                     const char* after) {
    String actualBefore("x");
    String actualFound("x");
    String actualAfter("x");
    ul::partition(text, separator, actualBefore, actualFound, actualAfter);
    EXPECT_TRUE(actualBefore == before && actualFound == found && actualAfter == after)
        << "'" << text << "' at '" << separator << "'";
}

} // namespace

TEST(String, NarrowForms_TakeEachByteAsOneCharacter) {
    EXPECT_EQ(String("A\xE9\xFF").toStdWString(), L"A\u00E9\u00FF");
    EXPECT_EQ(String("ab\0c", 4).toStdWString(), std::wstring(L"ab\0c", 4));
    EXPECT_EQ(String("", 0).getLength(), 0);
}

TEST(String, NullPointers_GiveEmptyStrings) {
    EXPECT_TRUE(String(static_cast<const char*>(nullptr)).isEmpty());
    EXPECT_TRUE(String(static_cast<const wchar_t*>(nullptr)).isEmpty());
    EXPECT_TRUE(String().isEmpty() && ul::getEmptyString().isEmpty());
}

TEST(String, StandardWideStrings_AreTakenAndGiven) {
    String text = std::wstring(L"abc");
    text = std::wstring(L"de");
    const std::wstring& standard = text;
    EXPECT_EQ(standard, L"de");
    EXPECT_STREQ(text.c_str(), L"de");
    EXPECT_EQ(text[1], L'e');
}

TEST(String, ToLatin1_TurnsWhatDoesNotFitAByteIntoQuestionMarks) {
    EXPECT_EQ(String(L"A\u00FF\u0100\uFF21").toLatin1(), "A\xFF??");
    EXPECT_EQ(String("a\0b", 3).toLatin1(), std::string("a\0b", 3));
}

TEST(String, Mid_CutsToWhatIsThere) {
    const String text("abcdef");
    EXPECT_TRUE(text.Mid(2, 3) == "cde");
    EXPECT_TRUE(text.Mid(2, -1) == "cdef");
    EXPECT_TRUE(text.Mid(2) == "cdef");
    EXPECT_TRUE(text.Mid(4, 9) == "ef");
    EXPECT_TRUE(text.Mid(6, 1) == "" && text.Mid(7, -1) == "" && text.Mid(0, 0) == "");
    EXPECT_TRUE(text.Mid(-2, 4) == "ab");
    EXPECT_TRUE(text.Mid(2147483647, 2147483647) == "");
    EXPECT_TRUE(text.Mid(-2147483647 - 1, 2147483647) == "");
}

TEST(String, StartsWith_IsCaseSensitiveAndKnowsShortTexts) {
    const String text("/net/port");
    EXPECT_TRUE(text.StartsWith(String("/net")) && text.StartsWith(L"/net/port") && text.StartsWith(L""));
    EXPECT_FALSE(text.StartsWith(L"/Net") || text.StartsWith(String("/net/port/")));
    EXPECT_FALSE(String().StartsWith(L"/"));
}

TEST(String, TrimRight_RemovesOnlyTrailingWhiteSpace) {
    String text(L" a b \t\r\n\v\f ");
    text.trimRight();
    EXPECT_TRUE(text == " a b");
    String blank(" \r\n");
    blank.trimRight();
    EXPECT_TRUE(blank.isEmpty());
    String nbsp(L"a\u00A0");
    nbsp.trimRight();
    EXPECT_EQ(nbsp.getLength(), 2) << "a no-break space is text";
}

TEST(String, Append_TakesEveryForm) {
    String text;
    text += String(L"a");
    text += "b\xE9";
    text += L'c';
    text += L"d";
    text += text;
    EXPECT_EQ(text.toStdWString(), L"ab\u00E9cdab\u00E9cd");
    EXPECT_TRUE(String("a") + "b" + String(L"c") == "abc");
}

TEST(String, ComparisonWithNarrowText_IsCharacterByCharacter) {
    EXPECT_TRUE(String(L"a\u00E9") == "a\xE9");
    EXPECT_TRUE(String("ab") != "a" && String("a") != "ab" && String() == "" && String("a") != "b");
    EXPECT_TRUE(String(L"\u0161") != "\x61") << "the low byte is not enough";
    EXPECT_TRUE(String("a\0b", 3) != "a");
}

TEST(String, Order_IsOrdinal) {
    EXPECT_TRUE(String("B") < String("a") && String("a") < String("ab") && String() < String("a"));
    EXPECT_FALSE(String("a") < String("a"));
    EXPECT_TRUE(String("z") < String(L"\u00E4") && String(L"\u00E4") < String(L"\uFFFD"));
}

TEST(String, ToHexString_GivesUpperCaseDigitsOfThe32Bits) {
    EXPECT_TRUE(ul::toHexString(0) == "0" && ul::toHexString(0x1010102F) == "1010102F");
    EXPECT_TRUE(ul::toHexString(-1) == "FFFFFFFF" && ul::toHexString(0xAB) == "AB");
}

TEST(String, ToString_GivesDecimalDigits) {
    EXPECT_TRUE(ul::toString(0) == "0" && ul::toString(-12) == "-12");
    EXPECT_TRUE(ul::toString(-9223372036854775807LL - 1) == "-9223372036854775808");
}

TEST(Partition, SplitsAtTheFirstSeparator) {
    expectPartition("a/b/c", "/", "a", "/", "b/c");
    expectPartition("/b", "/", "", "/", "b");
    expectPartition("a/", "/", "a", "/", "");
    expectPartition("a::b:c", "::", "a", "::", "b:c");
}

TEST(Partition, WithoutTheSeparator_GivesTheWholeTextAsBefore) {
    expectPartition("abc", "/", "abc", "", "");
    expectPartition("", "/", "", "", "");
    expectPartition("abc", "", "abc", "", "");
}

TEST(Partition, MayWriteOverItsInputs) {
    String text("a/b");
    String separator("/");
    String after;
    ul::partition(text, separator, text, separator, after);
    EXPECT_TRUE(text == "a" && separator == "/" && after == "b");
}
TEST(String, ToLatin1_OfAnyLengthWithAForeignCharacterAnywhere_ReplacesJustThatOne) {
    for (std::size_t size = 0; size < 70; ++size) {
        std::wstring wide;
        std::string narrow;
        for (std::size_t i = 0; i < size; ++i) {
            wide += static_cast<wchar_t>((i * 37 + 128) % 255 + 1);
            narrow += static_cast<char>((i * 37 + 128) % 255 + 1);
        }
        ASSERT_EQ(ul::String(wide.data(), size).toLatin1(), narrow);
        for (std::size_t at = 0; at < size; ++at) {
            for (const wchar_t foreign : {wchar_t{0x100}, wchar_t{0x2F41}, wchar_t{0x7FFF}, wchar_t{0xD800}}) {
                std::wstring changed = wide;
                std::string expected = narrow;
                changed[at] = foreign;
                expected[at] = '?';
                ASSERT_EQ(ul::String(changed.data(), size).toLatin1(), expected) << size << " " << at;
            }
        }
    }
}

TEST(String, CopyLatin1_OfAPart_WritesOnlyThat) {
    const ul::String text(L"ab\x100"
                          L"de");
    char out[] = "......";
    text.copyLatin1(out + 1, 1, 3);
    EXPECT_STREQ(out, ".b?d..");
}

TEST(String, NullPointers_AreEmptyTexts) {
    const wchar_t* const wide = nullptr;
    const char* const narrow = nullptr;
    const ul::String empty;
    const ul::String text("x");
    EXPECT_TRUE(empty == wide && empty == narrow && text != wide && text != narrow);
    EXPECT_TRUE(text.StartsWith(wide) && empty.StartsWith(wide));
}

TEST(String, Comparison_WorksFromBothSidesAndInEveryOrder) {
    const ul::String text("b");
    EXPECT_TRUE("b" == text && L"b" == text && "a" != text && L"a" != text);
    EXPECT_TRUE(text > ul::String("a") && text >= ul::String("b") && text <= ul::String("b"));
    EXPECT_FALSE(text > ul::String("b") || text >= ul::String("c") || text <= ul::String("a"));
    EXPECT_EQ(std::hash<ul::String>()(text), std::hash<ul::String>()(ul::String(L"b")));
}

TEST(String, AppendedCharacter_OfEightBitsIsLatin1) {
    ul::String text;
    text += '\xE9';
    EXPECT_TRUE(text == L"\u00E9");
    text += L'z';
    EXPECT_EQ(text.getLength(), 2);
}

template <class Appended, class = void>
constexpr bool isAppendable = false;
template <class Appended>
constexpr bool isAppendable<Appended, std::void_t<decltype(std::declval<ul::String&>() += std::declval<Appended>())>> =
    true;
static_assert(isAppendable<char> && isAppendable<wchar_t> && isAppendable<const char*> && isAppendable<ul::String>);
static_assert(!isAppendable<double> && !isAppendable<bool> && !isAppendable<int>, "numbers are not characters");
