// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "sarn/base64.h"

#include <climits>

namespace sarn_test {

namespace {

std::string encode(const Bytes& bytes, bool keepPadding = true, bool lineBreaks = false) {
    return sarn::base64Encode(bytes.data(), static_cast<int>(bytes.size()), keepPadding, lineBreaks).toLatin1();
}

std::string encode(const char* text, bool keepPadding = true, bool lineBreaks = false) {
    return encode(toBytes(text), keepPadding, lineBreaks);
}

Bytes decode(const ul::String& text) {
    Buffer out;
    sarn::base64Decode(text, out);
    return toBytes(out);
}

void expectDecoded(std::initializer_list<const char*> texts, const char* result) {
    for (const char* const text : texts)
        EXPECT_EQ(toText(decode(text)), result) << text;
}

void expectRefused(std::initializer_list<ul::String> texts) {
    for (const ul::String& text : texts) {
        SCOPED_TRACE(testing::PrintToString(text));
        Buffer out;
        fill(out, makePattern(3));
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
        EXPECT_EQ(out.getUsed(), 3) << "the used size is unchanged";
    }
}

std::string encodeWithCRLF(const Bytes& bytes) {
    Buffer buffer;
    fill(buffer, bytes);
    sarn::base64EncodeBufferWithCRLF(buffer);
    return toText(toBytes(buffer));
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
        expectDecoded({text}, bytes);
    }
}

TEST(Base64Encode, WholeAlphabet_IsTheOneOfTheStandard) {
    const Bytes bytes = fromHex("00108310518720928b30d38f41149351559761969b71d79f8218a39259a7a29aabb2dbafc31cb3d35db7e3"
                                "9ebbf3dfbf");
    const char* const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(encode(bytes), alphabet);
    EXPECT_EQ(decode(alphabet), bytes);
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
    EXPECT_EQ(encode(makePattern(48), true, true), encode(makePattern(48)) + "\n");
    EXPECT_EQ(encode(makePattern(49), true, true), encode(makePattern(49)).insert(64, "\n") + "\n");
    EXPECT_EQ(encode("", true, true), "");
}

TEST(Base64Encode, WithoutLineBreaks_IsOneLine_AndEmptyForANullPointer) {
    EXPECT_EQ(encode(makePattern(100000)).find_first_of("\r\n"), std::string::npos);
    EXPECT_TRUE(sarn::base64Encode(nullptr, 0, true, false).isEmpty());
}

TEST(Base64Encode, NegativeSize_RaisesTheErrorOfAPartialWrite) {
    for (const int size : {-1, -3, INT_MIN}) {
        for (const bool lineBreaks : {false, true})
            expectError("Internal error: error during base64 encode.",
                        [=] { sarn::base64Encode("x", size, true, lineBreaks); });
    }
}

TEST(Base64Decode, MissingPadding_IsCompletedBeforeTheLineEnd) {
    expectDecoded({"aGVsbG8", "aGVsbG8=", "aGVs\r\nbG8\r\n"}, "hello");
    expectDecoded({"Zg"}, "f");
}

TEST(Base64Decode, TextWithWhiteSpace_FollowsTheRulesForLines) {
    expectDecoded({"aGVsbG8=", "aGVs\nbG8=\n", "aGVs\r\nbG8=\r\n", "aGVsbG8=\n", " aGVs bG8=\n"}, "hello");
    expectRefused({"aGVsbG8\n", "aGVsbG8\r\n", "aGVs bG8=", " aGVsbG8=", "aGVs\rbG8=\r"});
}

TEST(Base64Decode, FirstLineOf1024Characters_IsRefusedUnlessItIsTheOnlyOne) {
    const std::string line = encode(makePattern(765));
    EXPECT_EQ(decode((line + "\n").c_str()), makePattern(765)) << "1020 characters";
    const std::string longLine = encode(makePattern(768));
    EXPECT_EQ(decode(longLine.c_str()), makePattern(768));
    expectRefused({(longLine + "\n").c_str()});
}

TEST(Base64Decode, OneCharacterBeyondWholeGroups_IsRefusedBeforeDecoding) {
    for (const char* const text : {"a", "aGVsb", "aGVs\r\nb\r\n", "aGVsbG8=a"}) {
        Buffer out;
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
        EXPECT_EQ(out.getAllocated(), 0) << text;
    }
}

TEST(Base64Decode, Result_ReplacesTheContentOfTheBuffer_EvenIfItIsEmpty) {
    for (const char* const text : {"foo", ""}) {
        Buffer out;
        fill(out, makePattern(100));
        sarn::base64Decode(encode(text).c_str(), out);
        EXPECT_EQ(toBytes(out), toBytes(text));
    }
    expectDecoded({"\r\n \t"}, "");
}

TEST(Base64Decode, ForeignCharacters_AreRefused_EvenIfTheirLowByteIsBase64) {
    expectRefused({"aGVs!G8haGVsbG8h", L"\u0161GVsbG8haGVsbG8h", L"\uFF21GVsbG8haGVsbG8h"});
    expectRefused({L"aGVsbG8h\x000E"}); // it counts, because it is not white space
    // The low byte of U+0161 is "a".
    expectRefused({L"\u0161\u0161\u0161\u0161\u0161\u0161\u0161\u0161"});
}

TEST(Base64Decode, LossWithinTheTolerance_IsNotNoticed) {
    // The filter returns the bytes before the damage, and three bytes may be missing. It does not decode a single line
    // that is not whole.
    expectDecoded({"aGV!", "Zm8\n", "Zg =="}, "");
}

TEST(Base64, EveryLengthInBothModes_ComesBackTheSame) {
    for (int size = 0; size <= 1001; ++size) {
        const Bytes bytes = makePattern(size <= 1000 ? size : 1 << 20);
        for (const bool lineBreaks : {false, true}) {
            for (const bool keepPadding : {false, true})
                EXPECT_EQ(decode(encode(bytes, keepPadding, lineBreaks).c_str()), bytes)
                    << size << (lineBreaks ? " in lines" : "");
        }
    }
}

TEST(Base64EncodeBufferWithCRLF, EndsEveryLineWithCRLF_AndLeavesAnEmptyBufferEmpty) {
    const std::pair<int, std::size_t> sizes[] = {{0, 0}, {48, 66}, {96, 132}, {100, 142}};
    for (const auto& [size, textSize] : sizes) {
        const std::string text = encodeWithCRLF(makePattern(size));
        EXPECT_EQ(text.size(), textSize);
        std::string lines = encode(makePattern(size));
        for (std::size_t at = 64; at < lines.size(); at += 66)
            lines.insert(at, "\r\n");
        EXPECT_EQ(text, lines + (size > 0 ? "\r\n" : ""));
        EXPECT_EQ(decode(text.c_str()), makePattern(size));
    }
}

} // namespace sarn_test
