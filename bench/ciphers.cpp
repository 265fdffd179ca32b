// SPDX-License-Identifier: Apache-2.0
// Ciphers beside the calls of libcrypto that they make: new context, reset, init, update, final, reset, free.
#include "ciphers.h"

#include "rows.h"

#include <openssl/evp.h>
#include <openssl/rand.h>
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
#include <openssl/provider.h>
#endif

#include <algorithm>
#include <utility>

namespace bench {

namespace {

using sarn::ICipher;
using Operation = void (ICipher::*)(const Key&, const void*, int, Buffer&, bool, const unsigned char*);

#if OPENSSL_VERSION_NUMBER >= 0x30000000L
/// Fetches the description once, as a fast host would.
const EVP_CIPHER* describe(const char* name) {
    static OSSL_LIB_CTX* const context = [] {
        OSSL_LIB_CTX* const created = OSSL_LIB_CTX_new();
        require(OSSL_PROVIDER_load(created, "default") && OSSL_PROVIDER_load(created, "legacy"));
        return created;
    }();
    return EVP_CIPHER_fetch(context, name, nullptr);
}
#else
const EVP_CIPHER* describe(const char* name) {
    return EVP_get_cipherbyname(name);
}
#endif

void compareOperation(const std::string& row, const Cipher& cipher, Operation operation, bool isEncrypting,
                      bool isPadded) {
    for (const int size : getSizes(row)) {
        Bytes data(static_cast<std::size_t>(size) + 64, 5);
        Buffer out(size + 64, 0);
        unsigned char* const block = out.getData();
        int inputSize = size;
        if (!isEncrypting) {
            inputSize = cipher.runRaw(true, isPadded, data.data(), size, block);
            std::copy_n(block, inputSize, data.begin());
        }
        compare(
            row, size, [&] { cipher.runRaw(isEncrypting, isPadded, data.data(), inputSize, block); },
            [&] { (*cipher.ours.*operation)(cipher.key, data.data(), inputSize, out, false, cipher.iv); });
        require(out.getData() == block);
    }
}

/// The raw side uses libcrypto's generator, as a host without the library would.
void compareRandomIV(const std::string& row, Cipher& cipher) {
    if (!isSelected(row))
        return;
    const unsigned char data[16] = {};
    Buffer out(64, 0);
    compare(
        row, 16,
        [&] {
            require(RAND_bytes(out.getData(), 16) == 1);
            std::copy_n(out.getData(), 16, cipher.iv);
            cipher.runRaw(true, true, data, 16, out.getData() + 16);
        },
        [&] { cipher.ours->encrypt(cipher.key, data, 16, out, false, nullptr); });
}

/// Each thread has its own output.
void compareInTwoThreads(const std::string& row, const Cipher& cipher, int size) {
    const Bytes data(static_cast<std::size_t>(size), 5);
    const auto makeRaw = [&] {
        return
            [&, out = Bytes(data.size() + 64)]() mutable { cipher.runRaw(true, true, data.data(), size, out.data()); };
    };
    const auto makeOurs = [&] {
        return [&, out = Buffer(size + 64, 0)]() mutable {
            cipher.ours->encrypt(cipher.key, data.data(), size, out, false, cipher.iv);
        };
    };
    compareThreads(row, makeRaw, makeOurs);
}

} // namespace

Cipher::Cipher(const std::string& id, const char* name)
    : ours(id == "ideacbc" ? ul::P<ICipher>(ul::make<sarn::CCipher_IDEACBC>())
                           : sarn::CCipherManager::get()->getCipher(id.c_str())),
      raw(describe(name)),
      key(ours->getKeySize(), -1) {
    std::fill_n(key.getData(), key.getUsed(), static_cast<unsigned char>(7));
}

int Cipher::runRaw(bool isEncrypting, bool isPadded, const void* data, int size, unsigned char* out) const {
    const auto init = isEncrypting ? EVP_EncryptInit : EVP_DecryptInit;
    const auto update = isEncrypting ? EVP_EncryptUpdate : EVP_DecryptUpdate;
    const auto finish = isEncrypting ? EVP_EncryptFinal : EVP_DecryptFinal;
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX_reset(context);
    require(init(context, raw, key.getData(), iv) == 1);
    if (!isPadded)
        EVP_CIPHER_CTX_set_padding(context, 0);
    int first = 0;
    int last = 0;
    require(update(context, out, &first, static_cast<const unsigned char*>(data), size) == 1);
    require(finish(context, out + first, &last) == 1);
    EVP_CIPHER_CTX_reset(context);
    EVP_CIPHER_CTX_free(context);
    return first + last;
}

void compareCiphers() {
    std::vector<std::pair<std::string, const char*>> ciphers = {
        {"aes256cbc", "AES-256-CBC"}, {"aes128cbc", "AES-128-CBC"}, {"bfcbc", "BF-CBC"}, {"cast128cbc", "CAST5-CBC"}};
#ifndef OPENSSL_NO_IDEA
    ciphers.emplace_back("ideacbc", "IDEA-CBC");
#endif
    for (const auto& [id, name] : ciphers) {
        Cipher cipher(id, name);
        compareOperation(id + " encrypt", cipher, &ICipher::encrypt, true, true);
        compareOperation(id + " decrypt", cipher, &ICipher::decrypt, false, true);
        compareOperation(id + " encryptWithoutPadding", cipher, &ICipher::encryptWithoutPadding, true, false);
        compareOperation(id + " decryptWithoutPadding", cipher, &ICipher::decryptWithoutPadding, false, false);
        if (id[0] == 'a')
            compareRandomIV(id + " random IV", cipher);
    }
    compareInTwoThreads("cipher, two threads", Cipher("aes256cbc", "AES-256-CBC"), 4096);
}

} // namespace bench
