// SPDX-License-Identifier: Apache-2.0
// What streams refuse: ciphers whose calls cannot be chained, bad arguments, calls after their end.
#include "support/cipher_test_data.h"

#include "sarn/host.h"

#include <openssl/evp.h>

namespace sarn_test {

namespace {

/// A key stream that starts anew with each call, and what a host might do wrong.
class OwnCipher : public sarn::CCipher_Null {
public:
    enum class Fault { KeyStream, Fails };
    explicit OwnCipher(Fault fault) : m_fault(fault) {}

    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) override {
        if (m_fault == Fault::Fails && size == 1000)
            throw ul::CError("The device is gone.", "", -1, ul::CProps(), nullptr);
        const int start = append ? out.getUsed() : 0;
        out.setUsed(start + size);
        for (int i = 0; i < size; ++i)
            out.getData()[start + i] = static_cast<unsigned char>(static_cast<const unsigned char*>(data)[i] ^
                                                                  (m_fault == Fault::Fails ? 0 : i));
    }

private:
    Fault m_fault;
};

void expectRefused(const ul::P<sarn::ICipher>& cipher) {
    const TestKey key(cipher->getKeySize());
    expectInvalidArg("CStreamEncryptor", "cipher cannot work in pieces", [&] { sarn::CStreamEncryptor(cipher, key); });
    expectInvalidArg("CStreamDecryptor", "cipher cannot work in pieces", [&] { sarn::CStreamDecryptor(cipher, key); });
}

} // namespace

TEST(CStreamEncryptor, OfACipherThatIsAKeyStream_IsRefused) {
    expectRefused(ul::make<OwnCipher>(OwnCipher::Fault::KeyStream));
}

TEST(CStreamEncryptor, OfAHostsOwnCBCCipher_GivesTheBytesOfOneCall) {
    const ul::P<sarn::ICipher> camellia = ul::make<sarn::COpenSSLCipher>(EVP_camellia_256_cbc(), "camellia256cbc");
    const TestKey key(32);
    sarn::CStreamEncryptor encryptor(camellia, key, makePattern(16));
    ul::TBuffer<unsigned char> inPieces;
    for (int i = 0; i < 100; ++i) {
        const ul::CBytes more = encryptor.update("only copy");
        inPieces.insert(inPieces.getUsed(), more.data(), static_cast<int>(more.size()));
    }
    const ul::CBytes last = encryptor.finish();
    inPieces.insert(inPieces.getUsed(), last.data(), static_cast<int>(last.size()));
    std::string plain;
    for (int i = 0; i < 100; ++i)
        plain += "only copy";
    ul::TBuffer<unsigned char> atOnce;
    camellia->encrypt(key, plain.data(), static_cast<int>(plain.size()), atOnce, false, makePattern(16).data());
    EXPECT_EQ(toBytes(inPieces), toBytes(atOnce));
}

TEST(CStreamEncryptor, AfterItsCipherFailed_IsClosed) {
    sarn::CStreamEncryptor encryptor(ul::make<OwnCipher>(OwnCipher::Fault::Fails), TestKey(0));
    encryptor.update("good");
    expectError("The device is gone.", [&] { encryptor.update(makePattern(1000)); });
    expectErrorOf<ul::CBadStateError>("The cipher stream has ended.", [&] { encryptor.finish(); });
}

TEST(CStreamEncryptor, OfAnUnknownCipherOrABadKeyOrIV_IsRefusedAtOnce) {
    expectError("Unknown cipher id 'rot13'.", [] { sarn::CStreamEncryptor("rot13", TestKey(32)); });
    const ul::P<sarn::ICipher> aes = getAnyCipher("aes256cbc");
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "invalid key size",
                     [&] { sarn::CStreamEncryptor(aes, TestKey(31)); });
    expectInvalidArg("CStreamEncryptor", "invalid IV size",
                     [&] { sarn::CStreamEncryptor(aes, TestKey(32), makePattern(15)); });
    expectInvalidArg("COpenSSLCipher::encryptWithoutPadding", "invalid key size",
                     [&] { sarn::CStreamDecryptor(aes, TestKey(31)); });
    expectInvalidArg("CStreamEncryptor", "cipher cannot be NULL",
                     [&] { sarn::CStreamEncryptor(ul::P<sarn::ICipher>(), TestKey(32)); });
    expectInvalidArg("CStreamDecryptor", "invalid IV size",
                     [&] { sarn::CStreamDecryptor(aes, TestKey(32), makePattern(17)); });
}

TEST(CStreamEncryptor, AfterItsEnd_RefusesEveryCall) {
    const TestKey key(32);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    decryptor.update(encryptor.finish());
    decryptor.finish();
    constexpr char message[] = "The cipher stream has ended.";
    expectErrorOf<ul::CBadStateError>(message, [&] { encryptor.update("more"); });
    expectErrorOf<ul::CBadStateError>(message, [&] { encryptor.finish(); });
    expectErrorOf<ul::CBadStateError>(message, [&] { decryptor.update("more"); });
    expectErrorOf<ul::CBadStateError>(message, [&] { decryptor.finish(); });
}

} // namespace sarn_test
