// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "sarn/host.h"

#include <cstddef>
#include <string_view>

namespace sarn_test {

namespace {

Bytes copy(ul::CBytes bytes) {
    return Bytes(bytes.begin(), bytes.end());
}

/// More bytes than an int counts. None of them exists: an operation that read one would crash.
const ul::CBytes tooLarge(reinterpret_cast<const unsigned char*>(std::size_t{4096}), std::size_t{INT_MAX} + 1);

// These conversions would lose or add bytes, or order them as the machine does.
static_assert(!std::is_convertible_v<std::vector<int>, ul::CBytes>);
static_assert(!std::is_convertible_v<std::vector<bool>, ul::CBytes>);
static_assert(!std::is_convertible_v<std::wstring, ul::CBytes>);
static_assert(!std::is_convertible_v<ul::String, ul::CBytes>);
static_assert(!std::is_convertible_v<std::nullptr_t, ul::CBytes>);
static_assert(!std::is_convertible_v<char (&)[4], ul::CBytes>);

} // namespace

TEST(CBytes, OfEveryContainerOfBytes_AreItsElements) {
    const Bytes expected = {'a', 0, 'b'};
    const std::string text("a\0b", 3);
    Buffer buffer = makeBuffer(expected);
    ul::TCryptBuffer<char> secret;
    secret.init(text.data(), 3);
    const unsigned char array[] = {'a', 0, 'b'};
    EXPECT_EQ(copy(text), expected);
    EXPECT_EQ(copy(std::string_view(text)), expected);
    EXPECT_EQ(copy(expected), expected);
    EXPECT_EQ(copy(std::vector<char>(text.begin(), text.end())), expected);
    EXPECT_EQ(copy(std::array<signed char, 3>{'a', 0, 'b'}), expected);
    EXPECT_EQ(copy(std::vector<std::byte>{std::byte{'a'}, std::byte{0}, std::byte{'b'}}), expected);
    EXPECT_EQ(copy(buffer), expected);
    EXPECT_EQ(copy(secret), expected);
    EXPECT_EQ(copy(array), expected);
    EXPECT_EQ(copy({array, 3}), expected);
    EXPECT_EQ(copy({"a\0b", 3L}), expected);
    EXPECT_EQ(ul::CBytes(text).asText(), text);
}

TEST(CBytes, OfATextLiteral_EndBeforeItsNullCharacter_AndOfNothing_AreEmpty) {
    EXPECT_EQ(copy("ab"), toBytes("ab"));
    EXPECT_EQ(copy(static_cast<const char*>(nullptr)), Bytes());
    EXPECT_TRUE(ul::CBytes().empty());
    EXPECT_TRUE(ul::CBytes(nullptr, 0).empty());
    EXPECT_TRUE(ul::CBytes(ul::TBuffer<char>()).empty());
    EXPECT_EQ(ul::CBytes().asText(), "");
}

TEST(CBytes, OfANegativeSize_AreRefused) {
    expectInvalidArg("CBytes", "invalid size", [] { ul::CBytes("abc", -1); });
    expectInvalidArg("CBytes", "invalid size", [] { ul::CBytes("abc", static_cast<signed char>(-128)); });
}

TEST(CBytes, OfASizeBeyondAllMemory_AreRefused) {
    constexpr long long size = (1LL << 32) + 1;
    if constexpr (sizeof(std::size_t) < sizeof size)
        expectInvalidArg("CBytes", "data is too large", [] { ul::CBytes("a", size); });
    else
        expectInvalidArg("feed", "data is too large", [] { sarn::feed(*sarn::createDigest("md5"), {"a", size}); });
}

TEST(CBytes, Comparison_LooksAtEachByteAndTheSize) {
    EXPECT_TRUE(ul::CBytes("abc") == "abc");
    EXPECT_TRUE(ul::CBytes() == "");
    EXPECT_TRUE(ul::CBytes("abc") != "abd");
    EXPECT_TRUE(ul::CBytes("abc") != "bbc");
    EXPECT_TRUE(ul::CBytes("ab\0", 3) != "ab");
}

TEST(CBytes, MoreThanAnIntCounts_AreRefusedByEveryShortForm_ButNotOneLess) {
    const auto key = ul::makeRandomBytes(32);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha1");
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"encrypt", [&] { sarn::encrypt("aes256cbc", key, tooLarge); }},
        {"decrypt", [&] { sarn::decrypt("aes256cbc", key, tooLarge); }},
        {"feed", [&] { sarn::digest("sha1", tooLarge); }},
        {"feed", [&] { sarn::feed(*digest, tooLarge); }},
        {"hmacSHA1", [&] { sarn::hmacSHA1(key, tooLarge); }},
        {"base64", [&] { sarn::base64(tooLarge); }},
        {"deriveKey", [&] { sarn::deriveKey(tooLarge, "salt", 1, 16); }},
        {"deriveKey", [&] { sarn::deriveKey("password", tooLarge, 1, 16); }},
        {"loadState", [&] { sarn::loadState(*digest, tooLarge); }},
        {"toCryptBuffer", [&] { ul::toCryptBuffer(tooLarge); }},
        {"fromHex", [&] { ul::fromHex(tooLarge.asText()); }},
        {"CStreamEncryptor::update", [&] { encryptor.update(tooLarge); }},
        {"CStreamDecryptor::update", [&] { decryptor.update(tooLarge); }},
    };
    for (const auto& [where, call] : calls) {
        SCOPED_TRACE(where);
        expectInvalidArg(where, "data is too large", call);
    }
    EXPECT_EQ(ul::CBytes(tooLarge.data(), INT_MAX).getIntSize("f"), INT_MAX);
}

TEST(ToCryptBuffer, OfBytes_IsACopy) {
    EXPECT_EQ(toBytes(ul::toCryptBuffer("Jefe")), toBytes("Jefe"));
    EXPECT_EQ(toBytes(ul::toCryptBuffer({})), Bytes());
}

TEST(ToHex, OfEveryByte_IsItsTwoDigits) {
    for (int byte = 0; byte < 256; ++byte) {
        const Bytes bytes = {static_cast<unsigned char>(byte)};
        EXPECT_EQ(ul::toHex(bytes), toHex(bytes));
        EXPECT_EQ(toBytes(ul::fromHex(ul::toHex(bytes))), bytes);
    }
    EXPECT_EQ(ul::toHex({}), "");
}

TEST(FromHex, OfEitherCase_IsTheSame_AndOfAnythingElse_IsRefused) {
    EXPECT_EQ(toBytes(ul::fromHex("00aBfF9A")), (Bytes{0x00, 0xAB, 0xFF, 0x9A}));
    EXPECT_EQ(toBytes(ul::fromHex("")), Bytes());
    for (const char* const text :
         {"0", "abc", "0g", "g0", " 00", "00 ", "0x00", "-1", "+1", "@@", "``", "//", "::", "G0", "\xC3\xA4", "1\xC1"})
        expectInvalidArg("fromHex", "invalid hexadecimal text", [&] { ul::fromHex(text); });
}

TEST(Randomize, OfAnIntegerAnArrayAndAStructure_FillsAllOfIt) {
    struct {
        unsigned long long number;
        std::array<unsigned, 8> array;
        struct {
            int first[4];
            long long last;
        } both;
    } values{};
    Bytes seen(sizeof values);
    // The probability that one byte is zero each time is 1 in 2^80.
    for (int i = 0; i < 10; ++i) {
        ul::randomize(values.number);
        ul::randomize(values.array);
        ul::randomize(values.both);
        for (std::size_t j = 0; j < seen.size(); ++j)
            seen[j] |= reinterpret_cast<const unsigned char*>(&values)[j];
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 0), 0);
}

TEST(MakeRandomBytes, OfASize_AreThatManyAndDifferEachTime) {
    EXPECT_EQ(ul::makeRandomBytes(0).getUsed(), 0);
    EXPECT_EQ(ul::makeRandomBytes(100).getUsed(), 100);
    EXPECT_NE(toBytes(ul::makeRandomBytes(16)), toBytes(ul::makeRandomBytes(16)));
    expectInvalidArg("TBuffer::setUsed", "invalid size", [] { ul::makeRandomBytes(-1); });
}

} // namespace sarn_test
