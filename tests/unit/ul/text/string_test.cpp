// SPDX-License-Identifier: Apache-2.0
// Texts, and UTF-8 as RFC 3629 defines it.
#include "support/expect.h"

namespace sarn_test {

using ul::String;

namespace {

void expectPartition(const char* text, const char* separator, const char* before, const char* found,
                     const char* after) {
    SCOPED_TRACE(std::string(text) + " at " + separator);
    String parts[] = {"x", "x", "x"};
    ul::partition(text, separator, parts[0], parts[1], parts[2]);
    EXPECT_EQ(parts[0], before);
    EXPECT_EQ(parts[1], found);
    EXPECT_EQ(parts[2], after);
}

ul::String decode(const std::string& bytes) {
    return ul::String::fromUTF8(bytes.data(), bytes.size());
}

struct Pair : Row {
    std::wstring text;
    std::string bytes;
};

struct Invalid : Row {
    std::string bytes;
    const char* position;
};

class UTF8 : public testing::TestWithParam<Pair> {};
class InvalidUTF8 : public testing::TestWithParam<Invalid> {};

// clang-format off
const Pair edges[] = {
    {"Empty", L"", ""}, {"Ascii", L"a~\x7F", "a~\x7F"},
    {"Null", std::wstring(L"a\0b", 3), std::string("a\0b", 3)},
    {"FirstOfTwo", L"\u0080", "\xC2\x80"}, {"LastOfTwo", L"\u07FF", "\xDF\xBF"},
    {"FirstOfThree", L"\u0800", "\xE0\xA0\x80"}, {"LastOfThree", L"\uFFFF", "\xEF\xBF\xBF"},
    {"BeforeSurrogates", L"\uD7FF", "\xED\x9F\xBF"}, {"AfterSurrogates", L"\uE000", "\xEE\x80\x80"},
    {"ByteOrderMark", L"\uFEFF", "\xEF\xBB\xBF"},
    {"FirstOfFour", L"\U00010000", "\xF0\x90\x80\x80"}, {"LastOfAll", L"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
    {"Emoji", L"a\U0001F600z", "a\xF0\x9F\x98\x80z"},
};

const Invalid invalid[] = {
    {"LoneContinuation", "\x80", "0"}, {"MissingContinuation", "\xE2\x82(", "0"},
    {"OverlongNull", "a\xC0\x80", "1"}, {"OverlongSlashOfTwo", "\xC0\xAF", "0"}, {"OverlongOfTwo", "ab\xC1\xBF", "2"},
    {"OverlongOfThree", "\xE0\x9F\xBF", "0"}, {"OverlongOfFour", "\xF0\x8F\xBF\xBF", "0"},
    {"LeadSurrogate", "\xED\xA0\x80", "0"}, {"TrailSurrogate", "\xED\xBF\xBF", "0"},
    {"SurrogatePair", "a\xED\xA0\x80\xED\xB0\x80", "1"},
    {"BeyondUnicode", "\xF4\x90\x80\x80", "0"}, {"FiveBytes", "\xF8\x88\x80\x80\x80", "0"},
    {"FE", "abc\xFE", "3"}, {"FF", "\xFF", "0"},
    {"CutOfTwo", "a\xC3", "1"}, {"CutOfThree", "a\xE2\x82", "1"}, {"CutOfFour", "\xF0\x9F\x98", "0"},
};
// clang-format on

} // namespace

TEST(String, NarrowForms_ReadEachByteAsOneCharacter) {
    EXPECT_EQ(String("A\xE9\xFF").toStdWString(), L"A\u00E9\u00FF");
    EXPECT_EQ(String("ab\0c", 4).toStdWString(), std::wstring(L"ab\0c", 4));
    EXPECT_EQ(String("", 0).getLength(), 0);
}

TEST(String, MoreCharactersThanAnInt_AreRefusedBeforeTheyAreRead) {
    const std::size_t length = std::size_t{INT_MAX} + 1;
    expectInvalidArg("String::String", "text is too long", [&] { String("x", length); });
    expectInvalidArg("String::String", "text is too long", [&] { String(L"x", length); });
}

TEST(String, NullPointers_AreEmptyTexts) {
    const wchar_t* const wide = nullptr;
    const char* const narrow = nullptr;
    const String empty;
    const String text("x");
    EXPECT_TRUE(String(narrow).isEmpty() && String(wide).isEmpty() && empty.isEmpty());
    EXPECT_TRUE(ul::getEmptyString().isEmpty());
    EXPECT_TRUE(empty == wide && empty == narrow && text != wide && text != narrow);
    EXPECT_TRUE(text.StartsWith(wide) && empty.StartsWith(wide));
}

TEST(String, StandardWideStrings_AreConvertedBothWays) {
    String text = std::wstring(L"abc");
    text = std::wstring(L"de");
    const std::wstring& standard = text;
    EXPECT_EQ(standard, L"de");
    EXPECT_STREQ(text.c_str(), L"de");
    EXPECT_EQ(text[1], L'e');
}

TEST(String, ToLatin1_ReplacesOtherCharactersByQuestionMarks) {
    EXPECT_EQ(String(L"A\u00FF\u0100\uFF21").toLatin1(), "A\xFF??");
    EXPECT_EQ(String("a\0b", 3).toLatin1(), std::string("a\0b", 3));
}

TEST(String, Mid_IsLimitedToTheText) {
    struct {
        int start;
        int count;
        const char* part;
    } const cuts[] = {{2, 3, "cde"}, {2, -1, "cdef"},        {4, 9, "ef"},          {6, 1, ""}, {7, -1, ""}, {0, 0, ""},
                      {-2, 4, "ab"}, {INT_MAX, INT_MAX, ""}, {INT_MIN, INT_MAX, ""}};
    for (const auto& [start, count, part] : cuts)
        EXPECT_EQ(String("abcdef").Mid(start, count), part) << start << " " << count;
    EXPECT_EQ(String("abcdef").Mid(2), "cdef");
}

TEST(String, StartsWith_IsCaseSensitiveAndKnowsShortTexts) {
    const String text("/net/port");
    EXPECT_TRUE(text.StartsWith(String("/net")) && text.StartsWith(L"/net/port") && text.StartsWith(L""));
    EXPECT_FALSE(text.StartsWith(L"/Net") || text.StartsWith(String("/net/port/")));
    EXPECT_FALSE(String().StartsWith(L"/"));
}

TEST(String, TrimRight_RemovesOnlyTrailingWhiteSpace) {
    // A no-break space is not white space.
    for (const auto& [given, trimmed] :
         {std::pair(L" a b \t\r\n\v\f ", L" a b"), {L" \r\n", L""}, {L"a\u00A0", L"a\u00A0"}}) {
        String text(given);
        text.trimRight();
        EXPECT_EQ(text.toStdWString(), trimmed);
    }
}

TEST(String, Append_TakesEveryForm) {
    String text;
    text += String(L"a");
    text += "b\xE9";
    text += L'c';
    text += '\xE9';
    text += L"d";
    text += text;
    EXPECT_EQ(text.toStdWString(), L"ab\u00E9c\u00E9dab\u00E9c\u00E9d");
    EXPECT_EQ(String("a") + "b" + String(L"c"), "abc");
}

TEST(String, Comparison_IsOrdinalFromBothSides) {
    EXPECT_TRUE(String(L"a\u00E9") == "a\xE9");
    EXPECT_TRUE(String("ab") != "a" && String("a") != "ab" && String() == "" && String("a") != "b");
    EXPECT_TRUE(String(L"\u0161") != "\x61") << "the low byte is not enough";
    EXPECT_TRUE(String("a\0b", 3) != "a");
    const String text("b");
    EXPECT_TRUE("b" == text && L"b" == text && "a" != text && L"a" != text);
    EXPECT_TRUE(text > String("a") && text >= String("b") && text <= String("b"));
    EXPECT_FALSE(text > String("b") || text >= String("c") || text <= String("a") || text < String("b"));
    EXPECT_TRUE(String("B") < String("a") && String("a") < String("ab") && String() < String("a"));
    EXPECT_TRUE(String("z") < String(L"\u00E4") && String(L"\u00E4") < String(L"\uFFFD"));
    EXPECT_EQ(std::hash<String>()(text), std::hash<String>()(String(L"b")));
}

TEST(String, ToStringAndToHexString_GiveDigits) {
    EXPECT_TRUE(ul::toString(0) == "0" && ul::toString(-12) == "-12");
    EXPECT_EQ(ul::toString(-9223372036854775807LL - 1), "-9223372036854775808");
    EXPECT_TRUE(ul::toHexString(0) == "0" && ul::toHexString(0x1010102F) == "1010102F");
    EXPECT_TRUE(ul::toHexString(-1) == "FFFFFFFF" && ul::toHexString(0xAB) == "AB") << "upper case, of 32 bits";
}

TEST(Partition, SplitsAtTheFirstSeparator_OrNotAtAll) {
    expectPartition("a/b/c", "/", "a", "/", "b/c");
    expectPartition("/b", "/", "", "/", "b");
    expectPartition("a/", "/", "a", "/", "");
    expectPartition("a::b:c", "::", "a", "::", "b:c");
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
        ASSERT_EQ(String(wide.data(), size).toLatin1(), narrow);
        for (std::size_t at = 0; at < size; ++at) {
            for (const wchar_t foreign : {wchar_t{0x100}, wchar_t{0x2F41}, wchar_t{0x7FFF}, wchar_t{0xD800}}) {
                std::wstring changed = wide;
                std::string expected = narrow;
                changed[at] = foreign;
                expected[at] = '?';
                ASSERT_EQ(String(changed.data(), size).toLatin1(), expected) << size << " " << at;
            }
        }
    }
}

TEST(String, CopyLatin1_OfAPart_WritesOnlyThat) {
    const String text(L"ab\x100"
                      L"de");
    char out[] = "......";
    text.copyLatin1(out + 1, 1, 3);
    EXPECT_STREQ(out, ".b?d..");
}

TEST(WipeText, CurrentAndEarlierCharacters_AreZeros_AndTheTextCanBeUsedAgain) {
    String text(std::wstring(50, L'k') + std::wstring(50, L' '));
    const wchar_t* const characters = text.c_str();
    text.trimRight();
    ASSERT_EQ(text.getLength(), 50);
    ul::wipe(text);
    EXPECT_TRUE(text.isEmpty());
    ASSERT_EQ(text.c_str(), characters) << "the memory is still the text's";
    EXPECT_TRUE(std::all_of(characters, characters + 100, [](wchar_t character) { return character == 0; }));
    ul::wipe(text);
    EXPECT_TRUE(text.isEmpty());
    text += "next";
    EXPECT_TRUE(text == "next");
}

template <class Appended, class = void>
constexpr bool isAppendable = false;
template <class Appended>
constexpr bool isAppendable<Appended, std::void_t<decltype(std::declval<String&>() += std::declval<Appended>())>> =
    true;
static_assert(isAppendable<char> && isAppendable<wchar_t> && isAppendable<const char*> && isAppendable<String>);
static_assert(!isAppendable<double> && !isAppendable<bool> && !isAppendable<int>, "numbers are not characters");

TEST_P(UTF8, EncodesAndDecodes) {
    EXPECT_EQ(ul::String(GetParam().text).toUTF8(), GetParam().bytes);
    EXPECT_EQ(decode(GetParam().bytes).toStdWString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Edges, UTF8, testing::ValuesIn(edges), getRowName<Pair>);

// Growth would leave a copy of a secret in freed memory.
TEST(UTF8, ResultsDoNotGrow) {
    std::wstring text = std::wstring(40, L'\x7F') + std::wstring(37, L'\xE4') + std::wstring(41, L'\x20AC');
    if (sizeof(wchar_t) == 4)
        text += std::wstring(43, static_cast<wchar_t>(0x1F511));
    const std::string bytes = ul::String(text).toUTF8();
    constexpr std::size_t rounding = 16;
    EXPECT_LT(bytes.capacity() - bytes.size(), rounding);
    EXPECT_LT(decode(bytes).toStdWString().capacity() - bytes.size(), rounding);
}

TEST_P(InvalidUTF8, IsRefusedWithThePosition) {
    expectError("Invalid UTF-8 text.", {"position", GetParam().position}, [] { decode(GetParam().bytes); });
}

INSTANTIATE_TEST_SUITE_P(Kinds, InvalidUTF8, testing::ValuesIn(invalid), getRowName<Invalid>);

TEST(ToUTF8, OfAnUnpairedSurrogate_IsRefusedWithThePosition) {
    const std::pair<const wchar_t*, const char*> texts[] = {{L"ab\xD800", "2"},       {L"ab\xD800z", "2"},
                                                            {L"ab\xDBFF\xD800", "2"}, {L"\xDC00\xD800", "0"},
                                                            {L"\xDFFF", "0"},         {L"a\xDC00", "1"}};
    for (const auto& [text, position] : texts)
        expectError("Text cannot be encoded as UTF-8.", {"position", position},
                    [text = text] { ul::String(text).toUTF8(); });
}

#ifndef _WIN32
TEST(ToUTF8, OfAValueAboveUnicode_IsRefusedWithThePosition) {
    const std::wstring text = {L'a', wchar_t{0x110000}};
    expectError("Text cannot be encoded as UTF-8.", {"position", "1"}, [&] { ul::String(text).toUTF8(); });
}
#endif

} // namespace sarn_test
