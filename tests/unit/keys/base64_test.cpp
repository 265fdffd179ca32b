// SPDX-License-Identifier: Apache-2.0
#include "support/base64_steps.h"
#include "support/expect.h"

#include "sarn/base64.h"

#include <random>

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
        Buffer out = makeBuffer(makePattern(3));
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { sarn::base64Decode(text, out); });
        EXPECT_EQ(out.getUsed(), 3) << "the used size is unchanged";
    }
}

std::string encodeWithCRLF(const Bytes& bytes) {
    Buffer buffer = makeBuffer(bytes);
    buffer.ensureAllocated(buffer.getUsed() + 10);
    sarn::base64EncodeBufferWithCRLF(buffer);
    return toText(toBytes(buffer));
}

std::optional<Bytes> tryToDecode(const std::wstring& text) {
    Buffer out;
    try {
        sarn::base64Decode(text, out);
    } catch (const ul::CInvalidArgError&) {
        return std::nullopt;
    }
    return toBytes(out);
}

std::wstring repeat(const std::wstring& text, int count) {
    std::wstring result;
    for (; count > 0; --count)
        result += text;
    return result;
}

} // namespace

TEST(Base64Encode, PublishedVectors_AreEncodedAndDecoded) {
    // RFC 4648, section 10.
    const char* const texts[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
    for (std::size_t size = 0; size <= 6; ++size) {
        const std::string bytes = std::string("foobar").substr(0, size);
        EXPECT_EQ(encode(toBytes(bytes)), texts[size]);
        expectDecoded({texts[size]}, bytes.c_str());
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
    for (const int size : {-1, -3, INT_MIN})
        for (const bool lineBreaks : {false, true})
            expectError("Internal error: error during base64 encode.",
                        [=] { sarn::base64Encode("x", size, true, lineBreaks); });
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
        Buffer out = makeBuffer(makePattern(100));
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
        for (const bool lineBreaks : {false, true})
            for (const bool keepPadding : {false, true})
                EXPECT_EQ(decode(encode(bytes, keepPadding, lineBreaks).c_str()), bytes)
                    << size << (lineBreaks ? " in lines" : "");
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

TEST(Base64Filter, OddTexts_AreDecodedAsTheFilterDecodesThem) {
    const std::wstring line = repeat(L"QUJD", 16); // 64 characters, 48 bytes
    // clang-format off
    const std::wstring texts[] = {
        L"", L"\n", L"\n\n\nQUJD\n", L"\r\n\r\nQUJD\r\n", L" QUJD", L"QUJD ", L"QU JD", L"QUJD QUJD\n", L"QU\tJD\n",
        L"QUJD\nQUJD", L"QUJD\n\nQUJD\n", L"Q\nU\nJ\nD\n",
        line, line + L"\n", line + L"\n" + line, line + line, line + line + L"\n", line + L" " + line + L"\n",
        repeat(line, 16), repeat(line, 17) + L"\n", repeat(line, 64), repeat(line, 64) + L"\n",
        L"-----BEGIN-----\n" + line + L"\n-----END-----\n",
        L"QUJD=", L"QUI=QUJD", L"QQ==QQ==", L"Q===", L"====", L"QUJD====",
        L"QUJD\v\n", L"\v\f", L"QUJD\x000E", L"????", L"!!!", L"\x0161\x0161\x0161\x0161", std::wstring(L"QU\0JD", 5),
    };
    // clang-format on
    for (const std::wstring& text : texts)
        EXPECT_EQ(tryToDecode(text), decodeByTheSteps(text)) << ul::String(text).toLatin1();
}

TEST(Base64Filter, RandomAndMutatedTexts_AreDecodedAsTheFilterDecodesThem) {
    std::mt19937 random(4);
    const auto draw = [&random](std::size_t limit) { return random() % limit; };
    const std::wstring seasoning = L" \t\n\r\v\f\x000E==AZaz09+/-_!?\x00E9\x0161\x0141\x20AC\xFF21\xFFFD";
    int decoded = 0;
    for (int round = 0; round < 30000; ++round) {
        const bool isRandom = draw(4) == 0;
        std::wstring text;
        if (!isRandom)
            text = ul::String(encode(makePattern(static_cast<int>(draw(200))), true, draw(2) == 0).c_str());
        for (std::size_t i = draw(isRandom ? 80 : 4); i > 0; --i) {
            const std::size_t at = draw(text.size() + 1);
            const std::size_t dropped = isRandom ? 0 : draw(2);
            text.replace(at, dropped, isRandom ? 1 : draw(2), seasoning[draw(seasoning.size())]);
        }
        const std::optional<Bytes> expected = decodeByTheSteps(text);
        decoded += expected.has_value();
        ASSERT_EQ(tryToDecode(text), expected) << round << ": " << ul::String(text).toLatin1();
    }
    EXPECT_GT(decoded, 3000);
    EXPECT_LT(decoded, 27000);
}

} // namespace sarn_test
