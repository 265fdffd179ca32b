// SPDX-License-Identifier: Apache-2.0
// Impossible sizes, and input within the output buffer.
#include "support/cipher_test_data.h"

namespace sarn_test {

namespace {

using Secret = ul::TCryptBuffer<unsigned char>;

const unsigned char* const iv = iv16.data();

/// Allocates `room` bytes, copies `data` to `position`, and sets the used size.
template <class AnyBuffer>
void place(AnyBuffer& buffer, int room, const Bytes& data, int position, int used) {
    buffer.ensureAllocated(room);
    buffer.setUsed(position + static_cast<int>(data.size()));
    std::copy(data.begin(), data.end(), buffer.getData() + position);
    buffer.setUsed(used);
}

} // namespace

TEST(CipherLimits, NegativeSize_IsRefusedByEveryOperation_AndNothingIsWritten) {
    FilledBuffer out;
    constexpr char badSize[] = "invalid input data size";
    expectRefused(encrypting, badSize, "x", -1, out, true, iv);
    expectRefused(encrypting, badSize, "x", INT_MIN, out, true, nullptr);
    expectRefused(decrypting, badSize, "x", -1, out, true, iv);
    expectRefused(decrypting, badSize, "x", -1, out, true, nullptr);
    expectRefused(encryptingUnpadded, badSize, "x", -20, out, true, iv);
    expectRefused(decryptingUnpadded, badSize, "x", -16, out, true, iv);
    expectRefused(decryptingUnpadded, "data size must be a multiple of the block size", "x", -5, out, true, iv);
    EXPECT_TRUE(out.isUntouched());
}

TEST(CipherLimits, ResultBeyondTheRangeOfInt_IsRefusedByEveryOperation_AndNothingIsWritten) {
    Buffer out = makeBuffer(makePattern(16));
    constexpr char tooLarge[] = "input data is too large";
    expectRefused(encrypting, tooLarge, "x", INT_MAX, out, false, iv);
    expectRefused(encrypting, tooLarge, "x", INT_MAX - 31, out, true, iv);
    expectRefused(encrypting, tooLarge, "x", INT_MAX - 31, out, false, nullptr);
    expectRefused(decrypting, tooLarge, "x", INT_MAX - 15, out, true, iv);
    expectRefused(encryptingUnpadded, tooLarge, "x", INT_MAX, out, false, iv);
    expectRefused(decryptingUnpadded, tooLarge, "x", INT_MAX - 15, out, true, iv);
    EXPECT_EQ(toBytes(out), makePattern(16));
}

TEST(CipherLimits, InputInPlace_WithRoomForTheResult_IsProcessedRight) {
    const Bytes data = makePattern(40);
    const std::pair<CipherOperation, CipherOperation> pairs[] = {{encrypting, decrypting},
                                                                 {encryptingUnpadded, decryptingUnpadded}};
    for (const auto& [encrypt, decrypt] : pairs) {
        Secret buffer;
        place(buffer, 100, data, 0, 40);
        runAES256(encrypt, buffer.getData(), 40, buffer, false, iv);
        const Bytes encrypted = toBytes(buffer);
        EXPECT_EQ(encrypted, runAES256(encrypt, data));
        runAES256(decrypt, buffer.getData(), buffer.getUsed(), buffer, false, iv);
        EXPECT_EQ(toBytes(buffer), runAES256(decrypt, encrypted));
    }
}

TEST(CipherLimits, InputInPlaceAfterOtherBytes_WithJustEnoughRoom_IsProcessedRight) {
    const Bytes data = makePattern(40);
    // Four bytes, which stay, then room for 40 bytes and a block.
    Buffer buffer(4 + 40 + 16, 0);
    place(buffer, 0, data, 4, 4);
    ASSERT_EQ(buffer.getAllocated(), 60);
    runAES256(encrypting, buffer.getData() + 4, 40, buffer, true, iv);
    EXPECT_EQ(Bytes(buffer.getData() + 4, buffer.getData() + buffer.getUsed()), runAES256(encrypting, data));
}

TEST(CipherLimits, InputInPlaceAfterRoomForTheIv_IsProcessedRight) {
    const Bytes data = makePattern(40);
    Buffer buffer;
    place(buffer, 100, data, 16, 56);
    runAES256(encrypting, buffer.getData() + 16, 40, buffer, false, nullptr);
    EXPECT_EQ(runAES256(decrypting, toBytes(buffer), nullptr), data);
}

TEST(CipherLimits, InputBeforeTheAppendedResult_IsProcessedRight) {
    const Bytes data = makePattern(40);
    Buffer buffer;
    place(buffer, 200, data, 0, 40);
    runAES256(encrypting, buffer.getData(), 40, buffer, true, iv);
    EXPECT_EQ(toBytes(buffer), join(data, runAES256(encrypting, data)));
}

TEST(CipherLimits, IvInTheOutput_IsReadBeforeTheBlockMovesOrIsOverwrittenOrWiped) {
    const Bytes data = makePattern(1000);
    const Bytes encrypted = runAES256(encrypting, data);
    Buffer buffer = makeBuffer(iv16);
    runAES256(encrypting, data.data(), 1000, buffer, true, buffer.getData());
    EXPECT_EQ(toBytes(buffer), join(iv16, encrypted));
    runAES256(encrypting, data.data(), 1000, buffer, false, buffer.getData());
    EXPECT_EQ(toBytes(buffer), encrypted);

    Buffer plain;
    Secret wiped;
    for (Buffer* const decrypted : {&plain, static_cast<Buffer*>(&wiped)}) {
        fill(*decrypted, iv16);
        runAES256(decrypting, encrypted.data(), static_cast<int>(encrypted.size()), *decrypted, false,
                  decrypted->getData());
        EXPECT_EQ(toBytes(*decrypted), data);
    }
    // The IV follows the result, where a buffer is wiped when it shrinks.
    for (const CipherOperation& operation : {encryptingUnpadded, decryptingUnpadded}) {
        Secret shrinking;
        place(shrinking, 0, iv16, 48, 64);
        runAES256(operation, data.data(), 16, shrinking, false, shrinking.getData() + 48);
        EXPECT_EQ(toBytes(shrinking), runAES256(operation, cut(data, 16)));
    }
}

TEST(CipherLimits, KeyInABufferWithSpareRoom_HasTheUsedSize) {
    TestKey key(32);
    key.ensureAllocated(100);
    Buffer out;
    getAES256()->encrypt(key, "data", 4, out, false, iv);
    EXPECT_EQ(toBytes(out), runAES256(encrypting, toBytes("data")));
    key.setUsed(31);
    expectRefused(encrypting, "invalid key size", "data", 4, out, false, iv, key);
}

TEST(CipherLimits, OverlappingInput_IsRefusedByEveryOperation_AndNothingIsWritten) {
    Buffer buffer;
    place(buffer, 300, makePattern(80), 0, 80);
    const auto expectOverlap = [&buffer](const CipherOperation& operation, int position, int size, bool append,
                                         const unsigned char* givenIV) {
        expectRefused(operation, "input overlaps output", buffer.getData() + position, size, buffer, append, givenIV);
        EXPECT_EQ(toBytes(buffer), makePattern(80));
    };
    // One byte before or after the result; at the place of a random IV; partly and wholly in the appended result.
    expectOverlap(encrypting, 1, 48, false, iv);
    expectOverlap(encrypting, 0, 48, false, nullptr);
    expectOverlap(encrypting, 70, 20, true, iv);
    expectOverlap(encrypting, 90, 20, true, iv);
    expectOverlap(decrypting, 16, 48, false, iv);
    expectOverlap(decrypting, 0, 48, false, nullptr);
    expectOverlap(encryptingUnpadded, 1, 48, false, iv);
    expectOverlap(decryptingUnpadded, 64, 16, false, iv);
}

TEST(CipherLimits, InputInAnOutputThatMustGrow_IsRefused) {
    Buffer buffer = makeBuffer(makePattern(32));
    ASSERT_EQ(buffer.getAllocated(), 32);
    for (const CipherOperation& operation : {encrypting, decrypting})
        expectRefused(operation, "input overlaps output", buffer.getData(), 32, buffer, false, iv);
    EXPECT_EQ(toBytes(buffer), makePattern(32));
}

TEST(CipherLimits, KeyAsOutput_IsRefused) {
    TestKey key(32);
    for (const CipherOperation& operation : cipherOperations)
        for (const int size : {0, 16})
            expectRefused(operation, "key overlaps output", iv, size, key, false, iv, key);
    for (const CipherOperation& operation : {encrypting, decrypting})
        expectRefused(operation, "key overlaps output", iv, 16, key, false, nullptr, key);
    EXPECT_EQ(toBytes(key), makePattern(32));
}

} // namespace sarn_test
