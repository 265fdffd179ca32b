// SPDX-License-Identifier: Apache-2.0
// The arguments with which streams call a cipher.
#include "sarn/host.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

/// Copies data in blocks of 16 bytes without an IV, and counts arguments that streams must avoid.
class WatchedCipher : public sarn::CCipher_Null {
public:
    using Key = ul::TCryptBuffer<unsigned char>;
    using Buffer = ul::TBuffer<unsigned char>;

    int getBlockSize() const override { return 16; }

    void encrypt(const Key& key, const void* data, int size, Buffer& out, bool append,
                 const unsigned char* iv) override {
        encryptWithoutPadding(key, data, size, out, append, iv);
    }
    void decrypt(const Key& key, const void* data, int size, Buffer& out, bool append,
                 const unsigned char* iv) override {
        encryptWithoutPadding(key, data, size, out, append, iv);
    }
    void encryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                               const unsigned char* iv) override {
        const unsigned char* const block = append && out.getUsed() > 0 ? out.getData() : nullptr;
        CCipher_Null::encryptWithoutPadding(key, data, size, out, append, iv);
        ++calls;
        movedResults += block && block != out.getData();
        nullIVs += !iv;
    }
    void decryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                               const unsigned char* iv) override {
        encryptWithoutPadding(key, data, size, out, append, iv);
    }

    int calls = 0;
    int movedResults = 0;
    int nullIVs = 0;
};

template <class Stream>
void feedInTwoPieces(const ul::P<WatchedCipher>& cipher) {
    Stream stream(cipher, ul::TCryptBuffer<unsigned char>());
    cipher->calls = cipher->movedResults = 0; // of the stream's own test of the cipher
    stream.update(std::string(40, 'f'));
    stream.update(std::string(100000, 'f'));
    stream.finish();
}

} // namespace

// Bytes of the first call would stay in the block that the second one gives back.
TEST(Streams, MakeRoomForAllResultsOfAPiece) {
    const ul::P<WatchedCipher> cipher = ul::make<WatchedCipher>();
    feedInTwoPieces<sarn::CStreamDecryptor>(cipher);
    EXPECT_EQ(cipher->calls, 4);
    EXPECT_EQ(cipher->movedResults, 0);
    feedInTwoPieces<sarn::CStreamEncryptor>(cipher);
    EXPECT_EQ(cipher->movedResults, 0);
}

// Null means a random IV, and operations without padding refuse it.
TEST(Streams, WithoutAnIV_PassAPointerThatIsNotNull) {
    const ul::P<WatchedCipher> cipher = ul::make<WatchedCipher>();
    feedInTwoPieces<sarn::CStreamEncryptor>(cipher);
    feedInTwoPieces<sarn::CStreamDecryptor>(cipher);
    EXPECT_EQ(cipher->nullIVs, 0);
}

} // namespace sarn_test
