// SPDX-License-Identifier: Apache-2.0
// The calls that hosts make most, whose instructions Callgrind or an emulator counts. A name that ends in "with
// libcrypto" makes the script count libcrypto's instructions too. An emulator logs every instruction, so its script
// asks for fewer repetitions: the argument divides them, and calls of which none is left are not made.
#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

// An emulator's log names these two. Between them the instructions of a mark run.
extern "C" {
[[gnu::noinline]] void startCount() {
    CALLGRIND_ZERO_STATS;
}
[[gnu::noinline]] void endCount(const char* mark) {
    CALLGRIND_DUMP_STATS_AT(mark);
}
}

namespace {

int g_divisor = 1;

/// Counts `call`, after unmarked runs that fill caches and buffers.
/// \param mark the number of calls, and their name
void count(const char* mark, const std::function<void()>& call) {
    const int repetitions = std::atoi(mark) / g_divisor;
    if (repetitions == 0)
        return;
    for (int i = 0; i < 1 + repetitions / 10; ++i)
        call();
    startCount();
    for (int i = 0; i < repetitions; ++i)
        call();
    endCount(mark);
    std::puts(mark);
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
    count("1000 encrypt 16 bytes", [&] { cipher->encrypt(key, data, 16, out, false, iv); });
    count("1000 encrypt 16 bytes under a random IV", [&] { cipher->encrypt(key, data, 16, out, false, nullptr); });
    count("1000 decrypt 16 bytes", [&] { cipher->decrypt(key, encrypted.getData(), 32, out, false, iv); });
    count("1000 encryptWithoutPadding 16 bytes", [&] { cipher->encryptWithoutPadding(key, data, 16, out, false, iv); });
    const ul::String id("aes256cbc");
    count("1000 look up a cipher", [&] { sarn::CCipherManager::get()->getCipher(id); });
}

void countDigests() {
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType("sha1");
    const ul::P<sarn::IDigest> digest = type->createDigest();
    count("1000 update sha1 with 16 bytes", [&] { digest->update("0123456789abcdef", 16); });
    count("1000 create and end sha1", [&] { type->createDigest(); });
    const ul::P<sarn::IDigest> combined = sarn::CDigestManager::get()->getType("md4-sha1-adler32")->createDigest();
    count("1000 update md4-sha1-adler32 with 16 bytes", [&] { combined->update("0123456789abcdef", 16); });
}

void countKeysAndEncodings() {
    ul::TBuffer<unsigned char> out;
    count("1000 HMAC of 16 bytes", [&] { sarn::calcHMAC_SHA1(out, "0123456789abcdef", 16, "key", 3); });
    const unsigned char data[48] = {};
    const ul::String text = sarn::base64Encode(data, 48, true, false);
    count("1000 encode 48 bytes", [&] { sarn::base64Encode(data, 48, true, false); });
    count("1000 decode 64 characters", [&] { sarn::base64Decode(text, out); });
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    sarn::CPasswordKeyCache cache(password);
    count("1000 find a cached key", [&] { cache.getKey(32, 1, 1); });
}

/// Checks of keys, which take most of a signature's time when there are any, are calls of libcrypto.
void countSignatures() {
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createDSS_SHA1();
    const ul::String key = ul::readUTF8TextFile(ul::CWindowsPath(SARN_TEST_KEYS "/dsa2048_for_tests_only.pem"));
    ul::TBuffer<unsigned char> signature;
    count("20 sign by DSA, with libcrypto", [&] { algo->beginSign(key, "")->finish(signature); });
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount > 1)
        g_divisor = std::atoi(arguments[1]);
    countCiphers();
    countDigests();
    countKeysAndEncodings();
    countSignatures();
}
