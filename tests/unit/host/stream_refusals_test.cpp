// SPDX-License-Identifier: Apache-2.0
// Streams refuse ciphers whose calls cannot be chained, bad arguments, and calls after their end.
#include "support/cipher_test_data.h"

#include "sarn/host.h"

#include <openssl/evp.h>

namespace sarn_test {

namespace {

/// A cipher of a host that is a key stream, which restarts with each call, or one that fails.
class OwnCipher : public sarn::CCipher_Null {
public:
    explicit OwnCipher(bool isKeyStream) : m_isKeyStream(isKeyStream) {}

    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) override {
        if (!m_isKeyStream && size == 1000)
            throw ul::CError("The device is gone.", "", -1, ul::CProps(), nullptr);
        const int start = append ? out.getUsed() : 0;
        out.setUsed(start + size);
        for (int i = 0; i < size; ++i)
            out.getData()[start + i] =
                static_cast<unsigned char>(static_cast<const unsigned char*>(data)[i] ^ (m_isKeyStream ? i : 0));
    }

private:
    const bool m_isKeyStream;
};

} // namespace

TEST(CStreamEncryptor, OfACipherThatIsAKeyStream_IsRefused) {
    const ul::P<sarn::ICipher> cipher = ul::make<OwnCipher>(true);
    constexpr char message[] = "cipher cannot work in pieces";
    expectInvalidArg("CStreamEncryptor", message, [&] { sarn::CStreamEncryptor(cipher, TestKey(0)); });
    expectInvalidArg("CStreamDecryptor", message, [&] { sarn::CStreamDecryptor(cipher, TestKey(0)); });
}

TEST(CStreamEncryptor, OfAHostsOwnCBCCipher_GivesTheBytesOfOneCall) {
    const ul::P<sarn::ICipher> camellia = ul::make<sarn::COpenSSLCipher>(EVP_camellia_256_cbc(), "camellia256cbc");
    sarn::CStreamEncryptor encryptor(camellia, key32, iv16);
    std::string plain;
    std::string inPieces;
    for (int i = 0; i < 100; ++i) {
        inPieces += encryptor.update("only copy").asText();
        plain += "only copy";
    }
    inPieces += encryptor.finish().asText();
    EXPECT_EQ(toBytes(inPieces), runCipher(*camellia, encrypting, toBytes(plain), iv16.data()));
}

TEST(CStreamEncryptor, AfterItsCipherFailed_IsClosed) {
    sarn::CStreamEncryptor encryptor(ul::make<OwnCipher>(false), TestKey(0));
    encryptor.update("good");
    expectError("The device is gone.", [&] { encryptor.update(makePattern(1000)); });
    expectErrorOf<ul::CBadStateError>("The cipher stream has ended.", [&] { encryptor.finish(); });
}

TEST(CStreamEncryptor, OfAnUnknownCipherOrABadKeyOrIV_IsRefusedAtOnce) {
    expectError("Unknown cipher id 'rot13'.", [] { sarn::CStreamEncryptor("rot13", key32); });
    const ul::P<sarn::ICipher> aes = getAES256();
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "invalid key size",
                     [&] { sarn::CStreamEncryptor(aes, TestKey(31)); });
    expectInvalidArg("CStreamEncryptor", "invalid IV size", [&] { sarn::CStreamEncryptor(aes, key32, cut(iv16, 15)); });
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "invalid key size",
                     [&] { sarn::CStreamDecryptor(aes, TestKey(31)); });
    expectInvalidArg("CStreamEncryptor", "cipher cannot be NULL",
                     [&] { sarn::CStreamEncryptor(ul::P<sarn::ICipher>(), key32); });
    expectInvalidArg("CStreamDecryptor", "invalid IV size",
                     [&] { sarn::CStreamDecryptor(aes, key32, makePattern(17)); });
}

TEST(CStreamEncryptor, AfterItsEnd_RefusesEveryCall) {
    sarn::CStreamEncryptor encryptor("aes256cbc", key32);
    sarn::CStreamDecryptor decryptor("aes256cbc", key32);
    decryptor.update(encryptor.finish());
    decryptor.finish();
    constexpr char message[] = "The cipher stream has ended.";
    expectErrorOf<ul::CBadStateError>(message, [&] { encryptor.update("more"); });
    expectErrorOf<ul::CBadStateError>(message, [&] { encryptor.finish(); });
    expectErrorOf<ul::CBadStateError>(message, [&] { decryptor.update("more"); });
    expectErrorOf<ul::CBadStateError>(message, [&] { decryptor.finish(); });
}

} // namespace sarn_test
