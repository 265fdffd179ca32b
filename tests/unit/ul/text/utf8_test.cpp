// SPDX-License-Identifier: Apache-2.0
// UTF-8 as RFC 3629 defines it.
#include "support/expect.h"

namespace sarn_test {

namespace {

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

TEST_P(UTF8, EncodesAndDecodes) {
    EXPECT_EQ(ul::String(GetParam().text).toUTF8(), GetParam().bytes);
    EXPECT_EQ(decode(GetParam().bytes).toStdWString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Edges, UTF8, testing::ValuesIn(edges), getRowName<Pair>);

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

} // namespace sarn_test
