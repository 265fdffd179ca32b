// SPDX-License-Identifier: Apache-2.0
// Each cipher operation compared with the calls of libcrypto that it makes: new context, reset, init, update, final,
// reset, free.
#include "comparison.h"
#include "families.h"
#include "peers/peer.h"

#include <sarn/cipher.h>

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace bench {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

struct CipherPair {
    const char* id;
    const EVP_CIPHER* raw;
};

/// Ends the program if a call failed, because its time would mean nothing.
void check(int result) {
    if (result <= 0)
        std::abort();
}

/// IDEA is not in the registry.
ul::P<sarn::ICipher> createCipher(const std::string& id) {
    if (id == "ideacbc")
        return ul::make<sarn::CCipher_IDEACBC>();
    return sarn::CCipherManager::get()->getCipher(id.c_str());
}

struct Fixture {
    Fixture(const CipherPair& pair, int dataSize)
        : raw(pair.raw),
          cipher(createCipher(pair.id)),
          key(cipher->getKeySize(), -1),
          iv(16, 3),
          data(static_cast<std::size_t>(dataSize), 5),
          rawOut(data.size() + 64),
          size(dataSize) {
        std::fill_n(key.getData(), key.getUsed(), static_cast<unsigned char>(7));
        cipher->encrypt(key, data.data(), size, encrypted, false, iv.data());
        cipher->encryptWithoutPadding(key, data.data(), size, blocks, false, iv.data());
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
    Buffer blocks;
};

void encryptRaw(Fixture& f, bool isPadded, unsigned char* out) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX_reset(context);
    int first = 0;
    int last = 0;
    check(EVP_EncryptInit(context, f.raw, f.key.getData(), f.iv.data()));
    if (!isPadded)
        check(EVP_CIPHER_CTX_set_padding(context, 0));
    check(EVP_EncryptUpdate(context, out, &first, f.data.data(), f.size));
    check(EVP_EncryptFinal(context, out + first, &last));
    EVP_CIPHER_CTX_reset(context);
    EVP_CIPHER_CTX_free(context);
}

void decryptRaw(Fixture& f, const Buffer& input, bool isPadded) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX_reset(context);
    int first = 0;
    int last = 0;
    check(EVP_DecryptInit(context, f.raw, f.key.getData(), f.iv.data()));
    if (!isPadded)
        check(EVP_CIPHER_CTX_set_padding(context, 0));
    check(EVP_DecryptUpdate(context, f.rawOut.data(), &first, input.getData(), input.getUsed()));
    check(EVP_DecryptFinal(context, f.rawOut.data() + first, &last));
    EVP_CIPHER_CTX_reset(context);
    EVP_CIPHER_CTX_free(context);
}

Goal getGoal(int size) {
    return size >= 4096 ? atMostTimes(1.01) : size == 16 ? atMostMore(25) : Goal();
}

Bytes toBytes(const Buffer& buffer) {
    return Bytes(buffer.getData(), buffer.getData() + buffer.getUsed());
}

void addCipherPeers(const std::string& name, const std::string& id, bool isEncrypting, const Fixture& f) {
    const Bytes key(f.key.getData(), f.key.getData() + f.key.getUsed());
    const Bytes iv(f.iv.begin(), f.iv.begin() + f.cipher->getIVSize());
    const CipherTask task = {id, isEncrypting, key, iv, isEncrypting ? f.data : toBytes(f.blocks)};
    addPeers(name, isEncrypting ? toBytes(f.blocks) : f.data,
             [&](const Peer& peer, const Result& result) { return peer.cipher(task, result); });
}

void compareCipher(const CipherPair& pair, int size) {
    const auto f = std::make_shared<Fixture>(pair, size);
    const auto name = [&](const char* operation) {
        return std::string(pair.id) + "/" + operation + "/" + std::to_string(size);
    };
    compare(
        name("encrypt"), size, [f] { encryptRaw(*f, true, f->rawOut.data()); },
        [f] { f->cipher->encrypt(f->key, f->data.data(), f->size, f->out, false, f->iv.data()); }, getGoal(size));
    compare(
        name("decrypt"), size, [f] { decryptRaw(*f, f->encrypted, true); },
        [f] {
            f->cipher->decrypt(f->key, f->encrypted.getData(), f->encrypted.getUsed(), f->out, false, f->iv.data());
        },
        getGoal(size));
    compare(
        name("encryptWithoutPadding"), size, [f] { encryptRaw(*f, false, f->rawOut.data()); },
        [f] { f->cipher->encryptWithoutPadding(f->key, f->data.data(), f->size, f->out, false, f->iv.data()); },
        getGoal(size));
    addCipherPeers(name("encryptWithoutPadding"), pair.id, true, *f);
    compare(
        name("decryptWithoutPadding"), size, [f] { decryptRaw(*f, f->blocks, false); },
        [f] {
            f->cipher->decryptWithoutPadding(f->key, f->blocks.getData(), f->blocks.getUsed(), f->out, false,
                                             f->iv.data());
        },
        getGoal(size));
    addCipherPeers(name("decryptWithoutPadding"), pair.id, false, *f);
}

/// With an IV from libcrypto's generator, as in a host without the library.
void compareRandomIV(const CipherPair& pair, int size) {
    const auto f = std::make_shared<Fixture>(pair, size);
    compare(
        std::string(pair.id) + "/random-iv/" + std::to_string(size), size,
        [f] {
            check(RAND_bytes(f->iv.data(), f->cipher->getIVSize()));
            encryptRaw(*f, true, f->rawOut.data());
        },
        [f] { f->cipher->encrypt(f->key, f->data.data(), f->size, f->out, false, nullptr); }, atMostTimes(0.35));
}

void append(const Fixture& f, Buffer& out, int count) {
    for (; count > 0; --count)
        f.cipher->encrypt(f.key, f.data.data(), f.size, out, true, f.iv.data());
}

/// Results appended to one buffer: the last thousand of ten thousand compared with the first, and all with ten buffers.
void compareAppending(const CipherPair& pair) {
    const auto f = std::make_shared<Fixture>(pair, 4096);
    const auto full = std::make_shared<Buffer>();
    append(*f, *full, 10000);
    compare(
        "append 4 KiB, the last 1000 of 10000 (raw: the first)", 4096000,
        [f] {
            Buffer out;
            append(*f, out, 1000);
        },
        [f, full] {
            full->setUsed(full->getUsed() / 10 * 9);
            append(*f, *full, 1000);
        },
        atMostTimes(1.1));
    compare(
        "append 4 KiB, 10000 to a new buffer (raw: to a block)", 40960000,
        [f] {
            constexpr std::size_t resultSize = 4096 + 16;
            const std::unique_ptr<unsigned char[]> block(new unsigned char[10000 * resultSize]);
            for (std::size_t i = 0; i < 10000; ++i)
                encryptRaw(*f, true, block.get() + i * resultSize);
        },
        [f] {
            Buffer out;
            append(*f, out, 10000);
        },
        atMostTimes(1.1));
}

} // namespace

void registerCiphers() {
    const CipherPair ciphers[] = {{"aes256cbc", EVP_aes_256_cbc()},
                                  {"aes128cbc", EVP_aes_128_cbc()},
                                  {"bfcbc", EVP_bf_cbc()},
                                  {"cast128cbc", EVP_cast5_cbc()},
                                  {"ideacbc", EVP_idea_cbc()}};
    for (const CipherPair& cipher : ciphers) {
        for (const int size : getSizes())
            compareCipher(cipher, size);
    }
    compareRandomIV(ciphers[0], 16);
    compareRandomIV(ciphers[1], 16);
    compareAppending(ciphers[0]);
}

} // namespace bench
