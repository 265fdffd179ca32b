// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include <climits>

namespace sarn_test {

namespace {

void run(const CipherOperation& operation, const void* data, int size, Buffer& out, bool append,
         const TestKey& key = TestKey(0), const unsigned char* iv = nullptr) {
    ((*getAnyCipher("null")).*operation.function)(key, data, size, out, append, iv);
}

} // namespace

TEST(CCipher_Null, Sizes_AreTheDocumentedOnes) {
    sarn::CCipher_Null cipher;
    EXPECT_EQ(cipher.getID(), "null");
    EXPECT_EQ(cipher.getKeySize(), 0);
    EXPECT_EQ(cipher.getIVSize(), 0);
    EXPECT_EQ(cipher.getBlockSize(), 1);
}

TEST(CCipher_Null, EveryOperation_CopiesOrAppendsTheInput_ForAnyKeyAndIv) {
    for (const CipherOperation& operation : cipherOperations) {
        Buffer out;
        fill(out, toBytes("old"));
        run(operation, "input", 5, out, true);
        EXPECT_EQ(toBytes(out), toBytes("oldinput"));
        run(operation, "input", 5, out, false, TestKey(7), makePattern(99).data());
        EXPECT_EQ(toBytes(out), toBytes("input"));
        run(operation, nullptr, 0, out, true);
        EXPECT_EQ(toBytes(out), toBytes("input"));
        run(operation, nullptr, 0, out, false);
        EXPECT_EQ(out.getUsed(), 0);
    }
}

TEST(CCipher_Null, InputInTheOutput_IsCopiedRight) {
    Buffer out;
    fill(out, toBytes("abcdef"));
    run(encrypting, out.getData() + 2, 3, out, true);
    EXPECT_EQ(toBytes(out), toBytes("abcdefcde"));
    run(encrypting, out.getData() + 4, 5, out, false);
    EXPECT_EQ(toBytes(out), toBytes("efcde"));
}

TEST(CCipher_Null, BadSizesAndTheKeyAsOutput_AreRefusedByEveryOperation_AndNothingIsWritten) {
    TestKey key(7);
    FilledBuffer out;
    for (const CipherOperation& operation : cipherOperations) {
        const auto expectRefusal = [&](const char* message, Buffer& target, int size, bool append) {
            expectInvalidArg(std::string("CCipher_Null::") + operation.name, message,
                             [&] { run(operation, "input", size, target, append, key); });
        };
        for (const bool append : {false, true}) {
            expectRefusal("invalid input data size", out, -1, append);
            expectRefusal("invalid input data size", out, INT_MIN, append);
            expectRefusal("key overlaps output", key, 5, append);
            expectRefusal("key overlaps output", key, 0, append);
        }
        expectRefusal("input data is too large", out, INT_MAX - 2, true);
    }
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(toBytes(key), makePattern(7));
}

} // namespace sarn_test
