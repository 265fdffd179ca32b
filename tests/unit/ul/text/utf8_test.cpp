// SPDX-License-Identifier: Apache-2.0
// UTF-8 (RFC 3629), strict both ways.
#include "support/expect.h"

#include "ul/string.h"

#include <gtest/gtest.h>

namespace {

ul::String decode(const std::string& bytes) {
    return ul::String::fromUTF8(bytes.data(), bytes.size());
}

struct Pair {
    const char* name;
    std::wstring text;
    std::string bytes;
};

/// For messages of failures.
void PrintTo(const Pair& pair, std::ostream* out) {
    *out << pair.name;
}

class UTF8 : public testing::TestWithParam<Pair> {};

struct Invalid {
    const char* name;
    std::string bytes;
    const char* position;
};

void PrintTo(const Invalid& invalid, std::ostream* out) {
    *out << invalid.name;
}

class InvalidUTF8 : public testing::TestWithParam<Invalid> {};

template <class Param>
std::string getName(const testing::TestParamInfo<Param>& info) {
    return info.param.name;
}

} // namespace

TEST_P(UTF8, EncodesAndDecodes) {
    EXPECT_EQ(ul::String(GetParam().text).toUTF8(), GetParam().bytes);
    EXPECT_EQ(decode(GetParam().bytes).toStdWString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Edges, UTF8,
                         testing::Values(Pair{"Empty", L"", ""}, Pair{"Ascii", L"a~\x7F", "a~\x7F"},
                                         Pair{"Null", std::wstring(L"a\0b", 3), std::string("a\0b", 3)},
                                         Pair{"FirstOfTwo", L"\u0080", "\xC2\x80"},
                                         Pair{"LastOfTwo", L"\u07FF", "\xDF\xBF"},
                                         Pair{"FirstOfThree", L"\u0800", "\xE0\xA0\x80"},
                                         Pair{"BeforeSurrogates", L"\uD7FF", "\xED\x9F\xBF"},
                                         Pair{"BehindSurrogates", L"\uE000", "\xEE\x80\x80"},
                                         Pair{"LastOfThree", L"\uFFFF", "\xEF\xBF\xBF"},
                                         Pair{"ByteOrderMark", L"\uFEFF", "\xEF\xBB\xBF"},
                                         Pair{"FirstOfFour", L"\U00010000", "\xF0\x90\x80\x80"},
                                         Pair{"Emoji", L"a\U0001F600b",
                                              "a\xF0\x9F\x98\x80"
                                              "b"},
                                         Pair{"LastOfAll", L"\U0010FFFF", "\xF4\x8F\xBF\xBF"}),
                         getName<Pair>);

TEST_P(InvalidUTF8, IsRefusedWithThePosition) {
    sarn_test::expectError("Invalid UTF-8 text.", {"position", GetParam().position}, [] { decode(GetParam().bytes); });
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, InvalidUTF8,
    testing::Values(Invalid{"LoneContinuation", "\x80", "0"}, Invalid{"OverlongNull", "a\xC0\x80", "1"},
                    Invalid{"OverlongSlashOfTwo", "\xC0\xAF", "0"}, Invalid{"OverlongOfTwo", "ab\xC1\xBF", "2"},
                    Invalid{"OverlongOfThree", "\xE0\x9F\xBF", "0"}, Invalid{"OverlongOfFour", "\xF0\x8F\xBF\xBF", "0"},
                    Invalid{"LeadSurrogate", "\xED\xA0\x80", "0"}, Invalid{"TrailSurrogate", "\xED\xBF\xBF", "0"},
                    Invalid{"SurrogatePair", "a\xED\xA0\x80\xED\xB0\x80", "1"},
                    Invalid{"BeyondUnicode", "\xF4\x90\x80\x80", "0"},
                    Invalid{"FiveBytes", "\xF8\x88\x80\x80\x80", "0"}, Invalid{"FE", "abc\xFE", "3"},
                    Invalid{"FF", "\xFF", "0"}, Invalid{"CutOfTwo", "a\xC3", "1"},
                    Invalid{"CutOfThree", "a\xE2\x82", "1"}, Invalid{"CutOfFour", "\xF0\x9F\x98", "0"},
                    Invalid{"MissingContinuation", "\xE2\x82(", "0"}),
    getName<Invalid>);

TEST(ToUTF8, OfAnUnpairedLeadSurrogate_IsRefusedWithThePosition) {
    for (const wchar_t* const text : {L"ab\xD800", L"ab\xD800z", L"ab\xDBFF\xD800"})
        sarn_test::expectError("Text cannot be encoded as UTF-8.", {"position", "2"},
                               [&] { ul::String(text).toUTF8(); });
}

TEST(ToUTF8, OfAnUnpairedTrailSurrogate_IsRefusedWithThePosition) {
    const std::pair<const wchar_t*, const char*> texts[] = {
        {L"\xDC00\xD800", "0"}, {L"\xDFFF", "0"}, {L"a\xDC00", "1"}};
    for (const auto& [text, position] : texts)
        sarn_test::expectError("Text cannot be encoded as UTF-8.", {"position", position},
                               [text = text] { ul::String(text).toUTF8(); });
}
