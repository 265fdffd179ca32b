// SPDX-License-Identifier: Apache-2.0
// Streams refuse ciphers whose calls cannot be chained, bad arguments, and calls after their end.
#include "support/cipher_test_data.h"

#include "sarn/host.h"

#include <openssl/evp.h>

namespace sarn_test {

namespace {

/// A cipher of a host that is a key stream, which restarts with each call, that returns too little, or that fails.
class OwnCipher : public sarn::CCipher_Null {
public:
    enum class Fault { KeyStream, Loses, Fails };
    explicit OwnCipher(Fault fault) : m_fault(fault) {}

    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) override {
        if (m_fault == Fault::Fails && size == 1000)
            throw ul::CError("The device is gone.", "", -1, ul::CProps(), nullptr);
        const int start = append ? out.getUsed() : 0;
        size -= m_fault == Fault::Loses;
        out.ensureAllocated(2 * (start + size) + 1);
        out.setUsed(start + size);
        for (int i = 0; i < size; ++i)
            out.getData()[start + i] = static_cast<unsigned char>(static_cast<const unsigned char*>(data)[i] ^
                                                                  (m_fault == Fault::KeyStream ? i : 0));
    }

private:
    const Fault m_fault;
};

/// Output feedback of a host: the last block of the key stream, not of the ciphertext, would be the next IV.
class OutputFeedback : public sarn::CCipher_Null {
public:
    int getIVSize() const override { return 16; }
    int getBlockSize() const override { return 16; }

    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override {
        Bytes keyStream(iv, iv + 16);
        const int start = append ? out.getUsed() : 0;
        out.setUsed(start + size);
        for (int i = 0; i < size; ++i) {
            unsigned char& key = keyStream[static_cast<std::size_t>(i % 16)];
            key = static_cast<unsigned char>(5 * key + 1);
            out.getData()[start + i] = static_cast<unsigned char>(static_cast<const unsigned char*>(data)[i] ^ key);
        }
    }
};

} // namespace

TEST(CStreamEncryptor, OfACipherThatCannotBeChained_IsRefused) {
    class OddSizes : public OwnCipher {
    public:
        OddSizes(int iv, int block) : OwnCipher(Fault::Loses), m_iv(iv), m_block(block) {}
        int getIVSize() const override { return m_iv; }
        int getBlockSize() const override { return m_block; }

    private:
        int m_iv;
        int m_block;
    };
    constexpr char message[] = "cipher cannot work in pieces";
    const ul::P<sarn::ICipher> ciphers[] = {ul::make<OwnCipher>(OwnCipher::Fault::KeyStream),
                                            ul::make<OwnCipher>(OwnCipher::Fault::Loses),
                                            ul::make<OddSizes>(0, 0),
                                            ul::make<OddSizes>(12, 16),
                                            ul::make<OddSizes>(8, 8),
                                            ul::make<OutputFeedback>()};
    for (const ul::P<sarn::ICipher>& cipher : ciphers) {
        expectInvalidArg("CStreamEncryptor", message, [&] { sarn::CStreamEncryptor(cipher, TestKey(0)); });
        expectInvalidArg("CStreamDecryptor", message, [&] { sarn::CStreamDecryptor(cipher, TestKey(0)); });
    }
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
    sarn::CStreamEncryptor encryptor(ul::make<OwnCipher>(OwnCipher::Fault::Fails), TestKey(0));
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
    expectInvalidArg("CStreamDecryptor", "cipher cannot be NULL",
                     [&] { sarn::CStreamDecryptor(ul::P<sarn::ICipher>(), key32, iv16); });
    expectInvalidArg("CStreamDecryptor", "invalid IV size",
                     [&] { sarn::CStreamDecryptor(aes, key32, makePattern(17)); });
}

TEST(CStreamDecryptor, OfAPieceThatIsTooLarge_RefusesIt) {
    sarn::CStreamDecryptor decryptor(getAES256(), key32, iv16);
    for (const std::size_t size : {std::size_t{INT_MAX} + 1, std::size_t{INT_MAX}})
        expectInvalidArg("CStreamDecryptor::update", "data is too large", [&] {
            decryptor.update({key32.getData(), size});
        });
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
