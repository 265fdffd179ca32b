// SPDX-License-Identifier: Apache-2.0
// Each cipher operation beside the calls of libcrypto that it stands for: new context, reset, init, update, final,
// reset, free.
#include "comparison.h"
#include "families.h"

#include <sarn/cipher.h>

#include <openssl/evp.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace bench {

namespace {

using Bytes = std::vector<unsigned char>;
using Buffer = ul::TBuffer<unsigned char>;

struct CipherPair {
    const char* id;
    const EVP_CIPHER* raw;
};

/// Ends the program if a call failed: its time would mean nothing.
void check(int result) {
    if (result <= 0)
        std::abort();
}

struct Fixture {
    Fixture(const CipherPair& pair, int dataSize)
        : raw(pair.raw),
          cipher(sarn::CCipherManager::get()->getCipher(pair.id)),
          key(cipher->getKeySize(), -1),
          iv(16, 3),
          data(static_cast<std::size_t>(dataSize), 5),
          rawOut(data.size() + 64),
          size(dataSize) {
        std::fill_n(key.getData(), key.getUsed(), static_cast<unsigned char>(7));
        cipher->encrypt(key, data.data(), size, encrypted, false, iv.data());
    }

    const EVP_CIPHER* raw;
    ul::P<sarn::ICipher> cipher;
    ul::TCryptBuffer<unsigned char> key;
    Bytes iv;
    Bytes data;
    Bytes rawOut;
    int size;
    Buffer out;
    Buffer encrypted;
};

void encryptRaw(Fixture& f, bool isPadded) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX_reset(context);
    int first = 0;
    int last = 0;
    check(EVP_EncryptInit(context, f.raw, f.key.getData(), f.iv.data()));
    if (!isPadded)
        check(EVP_CIPHER_CTX_set_padding(context, 0));
    check(EVP_EncryptUpdate(context, f.rawOut.data(), &first, f.data.data(), f.size));
    check(EVP_EncryptFinal(context, f.rawOut.data() + first, &last));
    EVP_CIPHER_CTX_reset(context);
    EVP_CIPHER_CTX_free(context);
}

void decryptRaw(Fixture& f) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX_reset(context);
    int first = 0;
    int last = 0;
    check(EVP_DecryptInit(context, f.raw, f.key.getData(), f.iv.data()));
    check(EVP_DecryptUpdate(context, f.rawOut.data(), &first, f.encrypted.getData(), f.encrypted.getUsed()));
    check(EVP_DecryptFinal(context, f.rawOut.data() + first, &last));
    EVP_CIPHER_CTX_reset(context);
    EVP_CIPHER_CTX_free(context);
}

void compareCipher(const CipherPair& pair, int size) {
    const auto f = std::make_shared<Fixture>(pair, size);
    const auto name = [&](const char* operation) {
        return std::string(pair.id) + "/" + operation + "/" + std::to_string(size);
    };
    compare(
        name("encrypt"), size, [f] { encryptRaw(*f, true); },
        [f] { f->cipher->encrypt(f->key, f->data.data(), f->size, f->out, false, f->iv.data()); });
    compare(
        name("decrypt"), size, [f] { decryptRaw(*f); },
        [f] {
            f->cipher->decrypt(f->key, f->encrypted.getData(), f->encrypted.getUsed(), f->out, false, f->iv.data());
        });
    compare(
        name("encryptWithoutPadding"), size, [f] { encryptRaw(*f, false); },
        [f] { f->cipher->encryptWithoutPadding(f->key, f->data.data(), f->size, f->out, false, f->iv.data()); });
}

} // namespace

void registerCiphers() {
    const CipherPair ciphers[] = {{"aes256cbc", EVP_aes_256_cbc()},
                                  {"aes128cbc", EVP_aes_128_cbc()},
                                  {"bfcbc", EVP_bf_cbc()},
                                  {"cast128cbc", EVP_cast5_cbc()}};
    for (const CipherPair& cipher : ciphers) {
        for (const int size : {16, 256, 4096, 65536, 1 << 20})
            compareCipher(cipher, size);
    }
}

} // namespace bench
