// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

#include <climits>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Operation = void (sarn::ICipher::*)(const ul::TCryptBuffer<unsigned char>&, const void*, int, Buffer&, bool,
                                          const unsigned char*);

const Operation operations[] = {&sarn::ICipher::encrypt, &sarn::ICipher::decrypt, &sarn::ICipher::encryptWithoutPadding,
                                &sarn::ICipher::decryptWithoutPadding};
const char* const names[] = {"CCipher_Null::encrypt", "CCipher_Null::decrypt", "CCipher_Null::encryptWithoutPadding",
                             "CCipher_Null::decryptWithoutPadding"};

} // namespace

TEST(CCipher_Null, Sizes_AreTheDocumentedOnes) {
    sarn::CCipher_Null cipher;
    EXPECT_TRUE(cipher.getID() == "null");
    EXPECT_EQ(cipher.getKeySize(), 0);
    EXPECT_EQ(cipher.getIVSize(), 0);
    EXPECT_EQ(cipher.getBlockSize(), 1);
}

TEST(CCipher_Null, EveryOperation_ReplacesOrAppendsTheInput) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("null");
    const ul::TCryptBuffer<unsigned char> noKey;
    for (const Operation operation : operations) {
        Buffer out;
        fill(out, toBytes("old"));
        ((*cipher).*operation)(noKey, "input", 5, out, true, nullptr);
        EXPECT_EQ(toBytes(out), toBytes("oldinput"));
        ((*cipher).*operation)(noKey, "input", 5, out, false, nullptr);
        EXPECT_EQ(toBytes(out), toBytes("input"));
        ((*cipher).*operation)(noKey, nullptr, 0, out, true, nullptr);
        EXPECT_EQ(toBytes(out), toBytes("input"));
        ((*cipher).*operation)(noKey, nullptr, 0, out, false, nullptr);
        EXPECT_EQ(out.getUsed(), 0);
    }
}

TEST(CCipher_Null, EveryOperation_IgnoresKeyAndIv) {
    sarn::CCipher_Null cipher;
    const Bytes iv = makePattern(99);
    for (const Operation operation : operations) {
        Buffer out;
        (cipher.*operation)(TestKey(7), "input", 5, out, false, iv.data());
        EXPECT_EQ(toBytes(out), toBytes("input"));
    }
}

TEST(CCipher_Null, InputInTheOutput_IsCopiedRight) {
    sarn::CCipher_Null cipher;
    const ul::TCryptBuffer<unsigned char> noKey;
    Buffer out;
    fill(out, toBytes("abcdef"));
    cipher.encrypt(noKey, out.getData() + 2, 3, out, true, nullptr);
    EXPECT_EQ(toBytes(out), toBytes("abcdefcde"));
    cipher.encrypt(noKey, out.getData() + 4, 5, out, false, nullptr);
    EXPECT_EQ(toBytes(out), toBytes("efcde"));
}

TEST(CCipher_Null, WhatNoCipherCanWorkWith_IsRefusedByEveryOperation_AndNothingIsWritten) {
    sarn::CCipher_Null cipher;
    TestKey key(7);
    Buffer out;
    fill(out, toBytes("old"));
    for (int i = 0; i < 4; ++i) {
        const auto expectRefusal = [&](const char* message, Buffer& target, int size, bool append) {
            expectInvalidArg(names[i], message,
                             [&] { (cipher.*operations[i])(key, "input", size, target, append, nullptr); });
        };
        for (const bool append : {false, true}) {
            expectRefusal("invalid input data size", out, -1, append);
            expectRefusal("invalid input data size", out, INT_MIN, append);
            expectRefusal("key overlaps output", key, 5, append);
            expectRefusal("key overlaps output", key, 0, append);
        }
        expectRefusal("input data is too large", out, INT_MAX - 2, true);
    }
    EXPECT_EQ(toBytes(out), toBytes("old"));
    EXPECT_EQ(toBytes(key), makePattern(7));
}

} // namespace sarn_test
