// SPDX-License-Identifier: Apache-2.0
#include "support/cipher_test_data.h"

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;
using Operation = void (sarn::ICipher::*)(const ul::TCryptBuffer<unsigned char>&, const void*, int, Buffer&, bool,
                                          const unsigned char*);

const Operation operations[] = {&sarn::ICipher::encrypt, &sarn::ICipher::decrypt, &sarn::ICipher::encryptWithoutPadding,
                                &sarn::ICipher::decryptWithoutPadding};

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

TEST(CCipher_Null, NegativeSize_IsRefused_AndNothingIsWritten) {
    sarn::CCipher_Null cipher;
    const ul::TCryptBuffer<unsigned char> noKey;
    Buffer out;
    fill(out, toBytes("old"));
    for (const Operation operation : operations) {
        EXPECT_THROW((cipher.*operation)(noKey, "input", -1, out, true, nullptr), ul::CInvalidArgError);
        EXPECT_THROW((cipher.*operation)(noKey, "input", -1, out, false, nullptr), ul::CInvalidArgError);
    }
    EXPECT_EQ(toBytes(out), toBytes("old"));
}

} // namespace sarn_test
