// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/vectors.h"

#include "sarn/base64.h"

#include <gtest/gtest.h>

#include <climits>

namespace sarn_test {

namespace {

std::string encode(const Bytes& bytes, bool keepPadding = true, bool lineBreaks = false) {
    return sarn::base64Encode(bytes.data(), static_cast<int>(bytes.size()), keepPadding, lineBreaks).toLatin1();
}

std::string encode(const char* text, bool keepPadding = true, bool lineBreaks = false) {
    return encode(toBytes(std::string(text)), keepPadding, lineBreaks);
}

Bytes decode(const ul::String& text) {
    ul::TBuffer<unsigned char> out;
    sarn::base64Decode(text, out);
    return toBytes(out);
}

std::string decodeText(const ul::String& text) {
    const Bytes bytes = decode(text);
    return std::string(bytes.begin(), bytes.end());
}

void expectRefused(const ul::String& text) {
    ul::TBuffer<unsigned char> out;
    out.insert(0, "old", 3);
    expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
    EXPECT_EQ(out.getUsed(), 3) << "the used size stays";
}

std::string encodeWithCRLF(const Bytes& bytes) {
    ul::TBuffer<unsigned char> buffer;
    fill(buffer, bytes);
    sarn::base64EncodeBufferWithCRLF(buffer);
    const Bytes text = toBytes(buffer);
    return std::string(text.begin(), text.end());
}

} // namespace

TEST(Base64Encode, PublishedVectors_AreEncodedAndDecoded) {
    // RFC 4648, section 10.
    const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(encode(bytes), text);
        EXPECT_EQ(decodeText(text), bytes);
    }
}

TEST(Base64Encode, WholeAlphabet_IsThatOfTheStandard) {
    Bytes bytes;
    for (unsigned i = 0; i < 64; i += 4)
        bytes.insert(bytes.end(), {static_cast<unsigned char>(i << 2 | (i + 1) >> 4),
                                   static_cast<unsigned char>((i + 1) << 4 | (i + 2) >> 2),
                                   static_cast<unsigned char>((i + 2) << 6 | (i + 3))});
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(encode(bytes), alphabet);
    EXPECT_EQ(decode(alphabet.c_str()), bytes);
}

TEST(Base64Encode, KeepPaddingFalse_HasAnEffectOnlyWithoutLineBreaks) {
    EXPECT_EQ(encode("hello", true, false), "aGVsbG8=");
    EXPECT_EQ(encode("hello", false, false), "aGVsbG8");
    EXPECT_EQ(encode("hello", false, true), "aGVsbG8=\n");
    EXPECT_EQ(encode("f", false, false), "Zg");
    EXPECT_EQ(encode("foo", false, false), "Zm9v");
    EXPECT_EQ(encode("", false, false), "");
}

TEST(Base64Encode, WithLineBreaks_EndsEveryLineOf64CharactersAndTheLast) {
    const std::string one = encode(makePattern(48), true, true);
    EXPECT_EQ(one.size(), 65U);
    EXPECT_EQ(one.find('\n'), 64U);
    const std::string two = encode(makePattern(49), true, true);
    EXPECT_EQ(two.size(), 64U + 1 + 4 + 1);
    EXPECT_EQ(two.find('\n'), 64U);
    EXPECT_EQ(two.back(), '\n');
    EXPECT_EQ(encode("", true, true), "");
}

TEST(Base64Encode, WithoutLineBreaks_IsOneLine) {
    EXPECT_EQ(encode(makePattern(100000)).find_first_of("\r\n"), std::string::npos);
}

TEST(Base64Encode, NullPointerOfNoBytes_IsNothing) {
    EXPECT_TRUE(sarn::base64Encode(nullptr, 0, true, false).isEmpty());
}

TEST(Base64Encode, NegativeSize_IsTheErrorOfAWriteThatIsNotWhole) {
    for (const int size : {-1, -3, INT_MIN}) {
        for (const bool lineBreaks : {false, true})
            expectError("Internal error: error during base64 encode.",
                        [=] { sarn::base64Encode("x", size, true, lineBreaks); });
    }
}

TEST(Base64Decode, MissingPadding_IsCompleted) {
    EXPECT_EQ(decodeText("aGVsbG8"), "hello");
    EXPECT_EQ(decodeText("aGVsbG8="), "hello");
    EXPECT_EQ(decodeText("Zg"), "f");
    EXPECT_EQ(decodeText("aGVs\r\nbG8\r\n"), "hello") << "the padding goes ahead of the line end";
}

TEST(Base64Decode, WhiteSpace_DoesNotCount) {
    EXPECT_EQ(decodeText("aGVs\r\nbG8=\r\n"), "hello");
    EXPECT_EQ(decodeText("aGVs\nbG8=\n"), "hello");
}

TEST(Base64Decode, TextWithWhiteSpace_FollowsTheRulesForLines) {
    for (const char* const text : {"aGVsbG8=", "aGVs\nbG8=\n", "aGVs\r\nbG8=\r\n", "aGVsbG8=\n", " aGVs bG8=\n"})
        EXPECT_EQ(decodeText(text), "hello") << text;
    for (const char* const text : {"aGVsbG8\n", "aGVsbG8\r\n", "aGVs bG8=", " aGVsbG8=", "aGVs\rbG8=\r"})
        expectRefused(text);
    for (const char* const text : {"Zm8\n", "Zg =="})
        EXPECT_EQ(decodeText(text), "") << text;
}

TEST(Base64Decode, FirstLineOf1024Characters_IsRefusedUnlessItIsAll) {
    const std::string line = encode(makePattern(765));
    EXPECT_EQ(decode((line + "\n").c_str()), makePattern(765)) << "1020 characters";
    const std::string longLine = encode(makePattern(768));
    EXPECT_EQ(decode(longLine.c_str()), makePattern(768));
    expectRefused((longLine + "\n").c_str());
}

TEST(Base64Decode, OneCharacterBeyondWholeGroups_IsRefusedAndNothingDecoded) {
    for (const char* const text : {"a", "aGVsb", "aGVs\r\nb\r\n", "aGVsbG8=a"}) {
        ul::TBuffer<unsigned char> out;
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
        EXPECT_EQ(out.getAllocated(), 0) << text;
    }
}

TEST(Base64Decode, EmptyText_GivesNoBytes) {
    ul::TBuffer<unsigned char> out;
    out.insert(0, "old", 3);
    sarn::base64Decode("", out);
    EXPECT_EQ(out.getUsed(), 0);
    EXPECT_EQ(decodeText("\r\n \t"), "");
}

TEST(Base64Decode, ForeignCharacters_AreRefused) {
    expectRefused("aGVs!G8haGVsbG8h");
    expectRefused(L"\u0161GVsbG8haGVsbG8h");
    expectRefused(L"\uFF21GVsbG8haGVsbG8h");
    expectRefused(L"aGVsbG8h\x000E"); // no white space, so it counts
}

TEST(Base64Decode, LossWithinTheTolerance_IsNotNoticed) {
    // The filter gives what it decoded ahead of the damage, and three bytes may be missing.
    EXPECT_EQ(decodeText("aGV!"), "");
    EXPECT_EQ(decodeText("Zm8\n"), "") << "one line without its end is none to the filter";
}

TEST(Base64Decode, WideCharactersWithAMatchingLowByte_NeverTurnIntoBase64) {
    // U+0161 has the low byte of "a".
    expectRefused(L"\u0161\u0161\u0161\u0161\u0161\u0161\u0161\u0161");
}

TEST(Base64Decode, Result_ReplacesWhatTheBufferHeld) {
    ul::TBuffer<unsigned char> out;
    fill(out, makePattern(100));
    sarn::base64Decode("Zm9v", out);
    EXPECT_EQ(toBytes(out), toBytes(std::string("foo")));
}

TEST(Base64, EveryLengthInBothModes_ComesBackTheSame) {
    std::vector<int> sizes;
    for (int size = 0; size <= 1000; ++size)
        sizes.push_back(size);
    sizes.push_back(1 << 20);
    for (const int size : sizes) {
        const Bytes bytes = makePattern(size);
        for (const bool lineBreaks : {false, true}) {
            for (const bool keepPadding : {false, true})
                EXPECT_EQ(decode(encode(bytes, keepPadding, lineBreaks).c_str()), bytes)
                    << size << (lineBreaks ? " in lines" : "");
        }
    }
}

TEST(Base64EncodeBufferWithCRLF, EndsEveryLineWithBoth) {
    const std::string text = encodeWithCRLF(makePattern(100));
    EXPECT_EQ(text.size(), 142U);
    EXPECT_EQ(text.find("\r\n"), 64U);
    EXPECT_EQ(text.find("\r\n", 66), 130U);
    EXPECT_EQ(text.substr(140), "\r\n");
    std::string joined = text;
    for (std::size_t at; (at = joined.find("\r\n")) != std::string::npos;)
        joined.erase(at, 2);
    EXPECT_EQ(joined, encode(makePattern(100)));
    EXPECT_EQ(decode(text.c_str()), makePattern(100));
}

TEST(Base64EncodeBufferWithCRLF, EmptyBuffer_StaysEmpty) {
    EXPECT_EQ(encodeWithCRLF({}), "");
}

TEST(Base64EncodeBufferWithCRLF, WholeLines_HaveNoEmptyLineBehind) {
    EXPECT_EQ(encodeWithCRLF(makePattern(48)).size(), 66U);
    EXPECT_EQ(encodeWithCRLF(makePattern(96)).size(), 132U);
}

} // namespace sarn_test
