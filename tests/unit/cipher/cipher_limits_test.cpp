// SPDX-License-Identifier: Apache-2.0
// Sizes that make no sense, and input that lies in the output buffer.
#include "support/cipher_test_data.h"

#include <algorithm>
#include <climits>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

const TestKey key32(32);
const Bytes iv16 = makePattern(16);

ul::P<sarn::ICipher> getAES256() {
    return sarn::CCipherManager::get()->getCipher("aes256cbc");
}

Bytes encryptElsewhere(const Bytes& data) {
    Buffer out;
    getAES256()->encrypt(key32, data.data(), static_cast<int>(data.size()), out, false, iv16.data());
    return toBytes(out);
}

} // namespace

TEST(CipherLimits, NegativeSize_IsRefusedByEveryOperation_AndNothingIsWritten) {
    const ul::P<sarn::ICipher> cipher = getAES256();
    Buffer out;
    fill(out, {9, 8, 7});
    const unsigned char* const iv = iv16.data();
    expectInvalidArg("COpenSSLCipher::encrypt", "invalid input data size",
                     [&] { cipher->encrypt(key32, "x", -1, out, true, iv); });
    expectInvalidArg("COpenSSLCipher::encrypt", "invalid input data size",
                     [&] { cipher->encrypt(key32, "x", INT_MIN, out, true, nullptr); });
    expectInvalidArg("COpenSSLCipher::decrypt", "invalid input data size",
                     [&] { cipher->decrypt(key32, "x", -1, out, true, iv); });
    expectInvalidArg("COpenSSLCipher::decrypt", "invalid input data size",
                     [&] { cipher->decrypt(key32, "x", -1, out, true, nullptr); });
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "invalid input data size",
                     [&] { cipher->encryptWithoutPadding(key32, "x", -20, out, true, iv); });
    expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "invalid input data size",
                     [&] { cipher->decryptWithoutPadding(key32, "x", -16, out, true, iv); });
    expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "data size must be a multiple of the block size",
                     [&] { cipher->decryptWithoutPadding(key32, "x", -5, out, true, iv); });
    EXPECT_EQ(toBytes(out), (Bytes{9, 8, 7}));
}

TEST(CipherLimits, ResultBeyondTheRangeOfInt_IsRefusedByEveryOperation_AndNothingIsWritten) {
    const ul::P<sarn::ICipher> cipher = getAES256();
    Buffer out;
    fill(out, makePattern(16));
    const unsigned char* const iv = iv16.data();
    expectInvalidArg("COpenSSLCipher::encrypt", "input data is too large",
                     [&] { cipher->encrypt(key32, "x", INT_MAX, out, false, iv); });
    expectInvalidArg("COpenSSLCipher::encrypt", "input data is too large",
                     [&] { cipher->encrypt(key32, "x", INT_MAX - 31, out, true, iv); });
    expectInvalidArg("COpenSSLCipher::encrypt", "input data is too large",
                     [&] { cipher->encrypt(key32, "x", INT_MAX - 31, out, false, nullptr); });
    expectInvalidArg("COpenSSLCipher::decrypt", "input data is too large",
                     [&] { cipher->decrypt(key32, "x", INT_MAX - 15, out, true, iv); });
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "input data is too large",
                     [&] { cipher->encryptWithoutPadding(key32, "x", INT_MAX, out, false, iv); });
    expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "input data is too large",
                     [&] { cipher->decryptWithoutPadding(key32, "x", INT_MAX - 15, out, true, iv); });
    EXPECT_EQ(toBytes(out), makePattern(16));
}

TEST(CipherLimits, InputInPlace_WithRoomForTheResult_IsProcessedRight) {
    const Bytes data = makePattern(40);
    const Bytes expected = encryptElsewhere(data);
    Buffer buffer;
    fill(buffer, data);
    buffer.ensureAllocated(100);
    getAES256()->encrypt(key32, buffer.getData(), 40, buffer, false, iv16.data());
    EXPECT_EQ(toBytes(buffer), expected);
    getAES256()->decrypt(key32, buffer.getData(), buffer.getUsed(), buffer, false, iv16.data());
    EXPECT_EQ(toBytes(buffer), data);
}

TEST(CipherLimits, InputInPlaceWithoutPadding_WithRoomForTheResult_IsProcessedRight) {
    Bytes data = makePattern(40);
    ul::TCryptBuffer<unsigned char> buffer;
    fill(buffer, data);
    buffer.ensureAllocated(100);
    getAES256()->encryptWithoutPadding(key32, buffer.getData(), 40, buffer, false, iv16.data());
    Buffer expected;
    getAES256()->encryptWithoutPadding(key32, data.data(), 40, expected, false, iv16.data());
    EXPECT_EQ(toBytes(buffer), toBytes(expected));
    getAES256()->decryptWithoutPadding(key32, buffer.getData(), 48, buffer, false, iv16.data());
    data.resize(48);
    EXPECT_EQ(toBytes(buffer), data);
}

TEST(CipherLimits, InputInPlaceBehindOtherBytes_WithExactlyTheRoom_IsProcessedRight) {
    const Bytes data = makePattern(40);
    const Bytes ciphertext = encryptElsewhere(data);
    // Four bytes ahead, which stay, and room for 40 bytes and a block.
    Buffer buffer(4 + 40 + 16, 4 + 40);
    std::copy(data.begin(), data.end(), buffer.getData() + 4);
    buffer.setUsed(4);
    ASSERT_EQ(buffer.getAllocated(), 60);
    getAES256()->encrypt(key32, buffer.getData() + 4, 40, buffer, true, iv16.data());
    EXPECT_EQ(Bytes(buffer.getData() + 4, buffer.getData() + buffer.getUsed()), ciphertext);
}

TEST(CipherLimits, InputInPlaceBehindRoomForTheIv_IsProcessedRight) {
    const Bytes data = makePattern(40);
    Buffer buffer(100, 16 + 40);
    std::copy(data.begin(), data.end(), buffer.getData() + 16);
    getAES256()->encrypt(key32, buffer.getData() + 16, 40, buffer, false, nullptr);
    Buffer decrypted;
    getAES256()->decrypt(key32, buffer.getData(), buffer.getUsed(), decrypted, false, nullptr);
    EXPECT_EQ(toBytes(decrypted), data);
}

TEST(CipherLimits, InputAheadOfTheAppendedResult_IsProcessedRight) {
    const Bytes data = makePattern(40);
    Buffer buffer;
    fill(buffer, data);
    buffer.ensureAllocated(200);
    getAES256()->encrypt(key32, buffer.getData(), 40, buffer, true, iv16.data());
    Bytes expected = data;
    const Bytes ciphertext = encryptElsewhere(data);
    expected.insert(expected.end(), ciphertext.begin(), ciphertext.end());
    EXPECT_EQ(toBytes(buffer), expected);
}

TEST(CipherLimits, IvInTheOutput_IsReadBeforeTheBlockMovesOrIsOverwritten) {
    Buffer buffer;
    fill(buffer, iv16);
    const Bytes data = makePattern(1000);
    getAES256()->encrypt(key32, data.data(), 1000, buffer, true, buffer.getData());
    Bytes expected = iv16;
    const Bytes ciphertext = encryptElsewhere(data);
    expected.insert(expected.end(), ciphertext.begin(), ciphertext.end());
    EXPECT_EQ(toBytes(buffer), expected);

    getAES256()->encrypt(key32, data.data(), 1000, buffer, false, buffer.getData());
    EXPECT_EQ(toBytes(buffer), ciphertext);

    ul::TCryptBuffer<unsigned char> wiping;
    fill(wiping, makePattern(64));
    getAES256()->encryptWithoutPadding(key32, data.data(), 16, wiping, false, wiping.getData() + 48);
    Buffer plain;
    const Bytes late = makePattern(64);
    getAES256()->encryptWithoutPadding(key32, data.data(), 16, plain, false, late.data() + 48);
    EXPECT_EQ(toBytes(wiping), toBytes(plain));
}

TEST(CipherLimits, IvInTheOutputOfDecrypt_IsReadBeforeTheBlockMovesOrIsWiped) {
    const Bytes data = makePattern(1000);
    const Bytes padded = encryptElsewhere(data);
    Buffer buffer;
    fill(buffer, iv16);
    getAES256()->decrypt(key32, padded.data(), static_cast<int>(padded.size()), buffer, false, buffer.getData());
    EXPECT_EQ(toBytes(buffer), data);

    ul::TCryptBuffer<unsigned char> wiping;
    fill(wiping, iv16);
    getAES256()->decrypt(key32, padded.data(), static_cast<int>(padded.size()), wiping, false, wiping.getData());
    EXPECT_EQ(toBytes(wiping), data);

    // The IV lies behind the result, where a buffer that shrinks is wiped.
    Buffer unpadded;
    getAES256()->encryptWithoutPadding(key32, data.data(), 16, unpadded, false, iv16.data());
    ul::TCryptBuffer<unsigned char> shrinking;
    fill(shrinking, makePattern(64));
    std::copy(iv16.begin(), iv16.end(), shrinking.getData() + 48);
    getAES256()->decryptWithoutPadding(key32, unpadded.getData(), 16, shrinking, false, shrinking.getData() + 48);
    EXPECT_EQ(toBytes(shrinking), Bytes(data.begin(), data.begin() + 16));
}

TEST(CipherLimits, KeyInABufferWithSpareRoom_IsTakenByItsUsedSize) {
    TestKey key(32);
    key.ensureAllocated(100);
    Buffer out;
    getAES256()->encrypt(key, "data", 4, out, false, iv16.data());
    EXPECT_EQ(toBytes(out), encryptElsewhere(toBytes("data")));
    key.setUsed(31);
    expectInvalidArg("COpenSSLCipher::encrypt", "invalid key size",
                     [&] { getAES256()->encrypt(key, "data", 4, out, false, iv16.data()); });
}

TEST(CipherLimits, OverlappingInput_IsRefusedByEveryOperation_AndNothingIsWritten) {
    const ul::P<sarn::ICipher> cipher = getAES256();
    const Bytes data = makePattern(80);
    Buffer buffer;
    fill(buffer, data);
    buffer.ensureAllocated(300);
    unsigned char* const bytes = buffer.getData();
    const unsigned char* const iv = iv16.data();
    const auto expectRefusal = [&](const char* where, auto operation) {
        expectInvalidArg(where, "input overlaps output", operation);
        EXPECT_EQ(toBytes(buffer), data);
    };
    // One byte off the place of the result, to either side; ahead of a generated IV; behind the start when appending.
    expectRefusal("COpenSSLCipher::encrypt", [&] { cipher->encrypt(key32, bytes + 1, 48, buffer, false, iv); });
    expectRefusal("COpenSSLCipher::encrypt", [&] { cipher->encrypt(key32, bytes, 48, buffer, false, nullptr); });
    expectRefusal("COpenSSLCipher::encrypt", [&] { cipher->encrypt(key32, bytes + 70, 20, buffer, true, iv); });
    expectRefusal("COpenSSLCipher::decrypt", [&] { cipher->decrypt(key32, bytes + 16, 48, buffer, false, iv); });
    expectRefusal("COpenSSLCipher::decrypt", [&] { cipher->decrypt(key32, bytes, 48, buffer, false, nullptr); });
    expectRefusal("COpenSSLCipher::encryptWithoutPadding",
                  [&] { cipher->encryptWithoutPadding(key32, bytes + 1, 48, buffer, false, iv); });
    expectRefusal("COpenSSLCipher::decryptWithoutPadding",
                  [&] { cipher->decryptWithoutPadding(key32, bytes + 64, 16, buffer, false, iv); });
}

TEST(CipherLimits, InputInAnOutputThatMustGrow_IsRefused) {
    const Bytes data = makePattern(32);
    Buffer buffer;
    fill(buffer, data);
    ASSERT_EQ(buffer.getAllocated(), 32);
    expectInvalidArg("COpenSSLCipher::encrypt", "input overlaps output",
                     [&] { getAES256()->encrypt(key32, buffer.getData(), 32, buffer, false, iv16.data()); });
    expectInvalidArg("COpenSSLCipher::decrypt", "input overlaps output",
                     [&] { getAES256()->decrypt(key32, buffer.getData(), 32, buffer, false, iv16.data()); });
    EXPECT_EQ(toBytes(buffer), data);
}

TEST(CipherLimits, KeyAsOutput_IsRefused) {
    TestKey key(32);
    expectInvalidArg("COpenSSLCipher::encrypt", "key overlaps output",
                     [&] { getAES256()->encrypt(key, "data", 4, key, false, nullptr); });
    expectInvalidArg("COpenSSLCipher::decrypt", "key overlaps output",
                     [&] { getAES256()->decrypt(key, iv16.data(), 16, key, false, nullptr); });
    for (const int size : {0, 16}) {
        expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "key overlaps output",
                         [&] { getAES256()->encryptWithoutPadding(key, iv16.data(), size, key, false, iv16.data()); });
        expectInvalidArg("COpenSSLCipher::decryptWithoutPadding", "key overlaps output",
                         [&] { getAES256()->decryptWithoutPadding(key, iv16.data(), size, key, false, iv16.data()); });
    }
    EXPECT_EQ(toBytes(key), makePattern(32));
}

TEST(CipherLimits, ManyAppendedResults_CostLinearRoom) {
    Buffer out;
    const Bytes data = makePattern(100);
    int blocksMoved = 0;
    const unsigned char* block = nullptr;
    for (int i = 0; i < 10000; ++i) {
        getAES256()->encrypt(key32, data.data(), 100, out, true, iv16.data());
        blocksMoved += out.getData() != block ? 1 : 0;
        block = out.getData();
    }
    EXPECT_EQ(out.getUsed(), 10000 * 112);
    EXPECT_LT(blocksMoved, 20);
    EXPECT_LT(out.getAllocated(), 3 * out.getUsed());
}

} // namespace sarn_test
