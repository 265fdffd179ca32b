// SPDX-License-Identifier: Apache-2.0
// The library decodes texts as libcrypto's filter does.
#include "support/base64_steps.h"
#include "support/expect.h"

#include "sarn/base64.h"

#include <algorithm>
#include <optional>
#include <random>

namespace sarn_test {

namespace {

std::optional<Bytes> decode(const std::wstring& text) {
    Buffer out;
    try {
        sarn::base64Decode(text, out);
    } catch (const ul::CInvalidArgError&) {
        return std::nullopt;
    }
    return toBytes(out);
}

std::wstring encode(const Bytes& bytes, bool lineBreaks) {
    return sarn::base64Encode(bytes.data(), static_cast<int>(bytes.size()), true, lineBreaks);
}

std::wstring repeat(const std::wstring& text, int count) {
    std::wstring result;
    for (; count > 0; --count)
        result += text;
    return result;
}

} // namespace

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
        L"QUJD\v\n", L"QUJD\x000E", L"????", L"!!!", L"\x0161\x0161\x0161\x0161", std::wstring(L"QU\0JD", 5),
    };
    // clang-format on
    for (const std::wstring& text : texts)
        EXPECT_EQ(decode(text), decodeByTheSteps(text)) << ul::String(text).toLatin1();
}

TEST(Base64Filter, RandomAndMutatedTexts_AreDecodedAsTheFilterDecodesThem) {
    std::mt19937 random(4);
    const auto draw = [&random](std::size_t limit) { return random() % limit; };
    const std::wstring seasoning = L" \t\n\r\v\f\x000E==AZaz09+/-_!?\x00E9\x0161\x0141\x20AC\xFF21\xFFFD";
    int decoded = 0;
    for (int round = 0; round < 30000; ++round) {
        const bool isRandom = draw(4) == 0;
        std::wstring text = isRandom ? L"" : encode(makePattern(static_cast<int>(draw(200))), draw(2) == 0);
        for (std::size_t i = draw(isRandom ? 80 : 4); i > 0; --i) {
            const std::size_t at = draw(text.size() + 1);
            const std::size_t dropped = isRandom ? 0 : draw(2);
            text.replace(at, dropped, isRandom ? 1 : draw(2), seasoning[draw(seasoning.size())]);
        }
        const std::optional<Bytes> expected = decodeByTheSteps(text);
        decoded += expected.has_value();
        ASSERT_EQ(decode(text), expected) << round << ": " << ul::String(text).toLatin1();
    }
    EXPECT_GT(decoded, 3000);
    EXPECT_LT(decoded, 27000);
}

} // namespace sarn_test
