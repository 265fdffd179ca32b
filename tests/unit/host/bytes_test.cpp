// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "sarn/host.h"

#include <array>
#include <climits>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace sarn_test {

namespace {

Bytes copy(ul::CBytes bytes) {
    return Bytes(bytes.begin(), bytes.end());
}

// Bytes would be lost, added, or in an order that depends on the machine.
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
    ul::TBuffer<unsigned char> buffer(100, 0);
    fill(buffer, expected);
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
}

TEST(CBytes, OfATextLiteral_EndBeforeItsNullCharacter) {
    EXPECT_EQ(copy("ab"), toBytes("ab"));
    EXPECT_EQ(copy(static_cast<const char*>(nullptr)), Bytes());
}

TEST(CBytes, OfNothing_AreEmpty) {
    EXPECT_TRUE(ul::CBytes().empty());
    EXPECT_TRUE(ul::CBytes(nullptr, 0).empty());
    EXPECT_TRUE(ul::CBytes(ul::TBuffer<char>()).empty());
    EXPECT_EQ(ul::CBytes().asText(), "");
}

TEST(CBytes, OfANegativeSize_AreRefused) {
    expectInvalidArg("CBytes", "invalid size", [] { ul::CBytes("abc", -1); });
    expectInvalidArg("CBytes", "invalid size", [] { ul::CBytes("abc", static_cast<signed char>(-128)); });
}

TEST(CBytes, Comparison_LooksAtEachByteAndTheSize) {
    EXPECT_TRUE(ul::CBytes("abc") == "abc");
    EXPECT_TRUE(ul::CBytes() == "");
    EXPECT_TRUE(ul::CBytes("abc") != "abd");
    EXPECT_TRUE(ul::CBytes("abc") != "bbc");
    EXPECT_TRUE(ul::CBytes("abc") != "ab");
}

TEST(CBytes, AsText_AreTheSameBytes) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(ul::CBytes(text).asText(), text);
}

// No byte of these is there: an operation that looked at one would crash.
TEST(CBytes, MoreThanAnIntCounts_AreRefusedByEveryShortForm) {
    const auto* const nowhere = reinterpret_cast<const unsigned char*>(std::size_t{4096});
    const ul::CBytes bytes(nowhere, static_cast<std::size_t>(INT_MAX) + 1);
    const auto key = ul::makeRandomBytes(32);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    const ul::P<sarn::IDigest> digest = sarn::createDigest("sha1");
    const struct {
        const char* where;
        std::function<void()> call;
    } calls[] = {
        {"encrypt", [&] { sarn::encrypt("aes256cbc", key, bytes); }},
        {"decrypt", [&] { sarn::decrypt("aes256cbc", key, bytes); }},
        {"feed", [&] { sarn::digest("sha1", bytes); }},
        {"feed", [&] { sarn::feed(*digest, bytes); }},
        {"hmacSHA1", [&] { sarn::hmacSHA1(key, bytes); }},
        {"base64", [&] { sarn::base64(bytes); }},
        {"deriveKey", [&] { sarn::deriveKey(bytes, "salt", 1, 16); }},
        {"deriveKey", [&] { sarn::deriveKey("password", bytes, 1, 16); }},
        {"loadState", [&] { sarn::loadState(*digest, bytes); }},
        {"toCryptBuffer", [&] { ul::toCryptBuffer(bytes); }},
        {"fromHex", [&] { ul::fromHex(bytes.asText()); }},
        {"CStreamEncryptor::update", [&] { encryptor.update(bytes); }},
        {"CStreamDecryptor::update", [&] { decryptor.update(bytes); }},
    };
    for (const auto& call : calls) {
        SCOPED_TRACE(call.where);
        expectInvalidArg(call.where, "data is too large", call.call);
    }
}

TEST(CBytes, MostBytesThatAnIntCounts_FitAnInt) {
    const auto* const nowhere = reinterpret_cast<const unsigned char*>(std::size_t{4096});
    EXPECT_EQ(ul::CBytes(nowhere, INT_MAX).getIntSize("f"), INT_MAX);
}

TEST(ToCryptBuffer, OfBytes_IsACopy) {
    EXPECT_EQ(toBytes(ul::toCryptBuffer("Jefe")), toBytes("Jefe"));
    EXPECT_EQ(toBytes(ul::toCryptBuffer({})), Bytes());
}

TEST(ToHex, OfEveryByte_IsItsTwoDigits) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = ul::toHex(Bytes{static_cast<unsigned char>(byte)});
        std::string documented = ul::toHexString(0x100 | byte).Mid(1).toLatin1();
        for (char& letter : documented)
            letter = static_cast<char>(std::tolower(letter));
        EXPECT_EQ(text, documented);
        EXPECT_EQ(toBytes(ul::fromHex(text)), Bytes{static_cast<unsigned char>(byte)});
    }
    EXPECT_EQ(ul::toHex({}), "");
}

TEST(FromHex, OfEitherCase_IsTheSame) {
    EXPECT_EQ(toBytes(ul::fromHex("00aBfF9A")), (Bytes{0x00, 0xAB, 0xFF, 0x9A}));
    EXPECT_EQ(toBytes(ul::fromHex("")), Bytes());
}

TEST(FromHex, OfAnythingElse_IsRefused) {
    for (const char* const text :
         {"0", "abc", "0g", "g0", " 00", "00 ", "0x00", "-1", "+1", "@@", "``", "//", "::", "G0", "\xC3\xA4", "1\xC1"})
        expectInvalidArg("fromHex", "invalid hexadecimal text", [&] { ul::fromHex(text); });
}

TEST(Randomize, OfAnIntegerAnArrayAndAStructure_FillsAllOfIt) {
    unsigned long long number = 0;
    std::array<unsigned, 8> array{};
    struct {
        int first[4];
        long long last;
    } both{};
    // That a byte is zero each time has a chance of 1 in 2^80.
    Bytes seen(sizeof number + sizeof array + sizeof both);
    for (int i = 0; i < 10; ++i) {
        ul::randomize(number);
        ul::randomize(array);
        ul::randomize(both);
        std::size_t at = 0;
        const auto note = [&](const void* data, std::size_t size) {
            for (std::size_t j = 0; j < size; ++j)
                seen[at++] |= static_cast<const unsigned char*>(data)[j];
        };
        note(&number, sizeof number);
        note(&array, sizeof array);
        note(&both, sizeof both);
    }
    for (const unsigned char byte : seen)
        EXPECT_NE(byte, 0);
}

TEST(MakeRandomBytes, OfASize_AreThatManyAndOthersEachTime) {
    EXPECT_EQ(ul::makeRandomBytes(0).getUsed(), 0);
    EXPECT_EQ(ul::makeRandomBytes(100).getUsed(), 100);
    EXPECT_NE(toBytes(ul::makeRandomBytes(16)), toBytes(ul::makeRandomBytes(16)));
    expectInvalidArg("TBuffer::setUsed", "invalid size", [] { ul::makeRandomBytes(-1); });
}

} // namespace sarn_test
