// SPDX-License-Identifier: Apache-2.0
// The calls that hosts make most. Callgrind counts the instructions of a thousand runs of each.
#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"

#include <valgrind/callgrind.h>

#include <functional>

namespace {

constexpr int repetitions = 1000;

/// Counts `call`, after a few unmarked runs that fill caches and buffers.
void count(const char* name, const std::function<void()>& call) {
    for (int i = 0; i < 100; ++i)
        call();
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < repetitions; ++i)
        call();
    CALLGRIND_DUMP_STATS_AT(name);
}

void countCiphers() {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    ul::TCryptBuffer<unsigned char> key(32, -1);
    std::fill_n(key.getData(), 32, static_cast<unsigned char>(7));
    const unsigned char iv[16] = {1};
    const unsigned char data[16] = {2};
    ul::TBuffer<unsigned char> encrypted;
    cipher->encrypt(key, data, 16, encrypted, false, iv);
    ul::TBuffer<unsigned char> out;
    count("encrypt 16 bytes", [&] { cipher->encrypt(key, data, 16, out, false, iv); });
    count("encrypt 16 bytes under a random IV", [&] { cipher->encrypt(key, data, 16, out, false, nullptr); });
    count("decrypt 16 bytes", [&] { cipher->decrypt(key, encrypted.getData(), 32, out, false, iv); });
    count("encryptWithoutPadding 16 bytes", [&] { cipher->encryptWithoutPadding(key, data, 16, out, false, iv); });
    const ul::String id("aes256cbc");
    count("look up a cipher", [&] { sarn::CCipherManager::get()->getCipher(id); });
}

void countDigests() {
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType("sha1");
    const ul::P<sarn::IDigest> digest = type->createDigest();
    count("update sha1 with 16 bytes", [&] { digest->update("0123456789abcdef", 16); });
    count("create and end sha1", [&] { type->createDigest(); });
    const ul::P<sarn::IDigest> combined = sarn::CDigestManager::get()->getType("md4-sha1-adler32")->createDigest();
    count("update md4-sha1-adler32 with 16 bytes", [&] { combined->update("0123456789abcdef", 16); });
}

void countKeysAndEncodings() {
    ul::TBuffer<unsigned char> out;
    count("HMAC of 16 bytes", [&] { sarn::calcHMAC_SHA1(out, "0123456789abcdef", 16, "key", 3); });
    const unsigned char data[48] = {};
    const ul::String text = sarn::base64Encode(data, 48, true, false);
    count("encode 48 bytes", [&] { sarn::base64Encode(data, 48, true, false); });
    count("decode 64 characters", [&] { sarn::base64Decode(text, out); });
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    sarn::CPasswordKeyCache cache(password);
    count("find a cached key", [&] { cache.getKey(32, 1, 1); });
}

} // namespace

int main() {
    countCiphers();
    countDigests();
    countKeysAndEncodings();
}
