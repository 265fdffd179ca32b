// SPDX-License-Identifier: Apache-2.0
// Prints the memory of one object of each kind.
#include <sarn/cipher.h>
#include <sarn/digest.h>
#include <sarn/password_key_cache.h>
#include <sarn/signature.h>

#include <ul/file.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <malloc.h>

namespace {

void printMemory(const char* name, const std::function<ul::P<ul::IBase>()>& create) {
    constexpr std::size_t count = 1000;
    std::vector<ul::P<ul::IBase>> objects(count);
    objects[0] = create();
    const std::size_t before = mallinfo2().uordblks;
    for (std::size_t i = 1; i < count; ++i)
        objects[i] = create();
    std::printf("%-44s %8zu bytes\n", name, (mallinfo2().uordblks - before) / (count - 1));
}

void printObjects() {
    for (const char* const id : {"md4", "md5", "sha1", "sha256", "adler32", "crc32", "md4-sha1", "md4-sha1-adler32"}) {
        const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id);
        printMemory((std::string("running digest ") + id).c_str(),
                    [&] { return ul::P<ul::IBase>(type->createDigest()); });
    }
    printMemory("cipher aes256cbc", [] { return ul::P<ul::IBase>(ul::make<sarn::CCipher_AES256CBC>()); });
    const std::string keys = SARN_BENCH_KEYS;
    const ul::String privateKey =
        ul::readUTF8TextFile(ul::CWindowsPath((keys + "/rsa2048_for_tests_only.pem").c_str()));
    const ul::String publicKey =
        ul::readUTF8TextFile(ul::CWindowsPath((keys + "/rsa2048_for_tests_only.pub.pem").c_str()));
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createRSA_SHA1();
    printMemory("signer, its RSA key of 2048 bits included",
                [&] { return ul::P<ul::IBase>(algo->beginSign(privateKey, "")); });
    printMemory("verifier, its RSA key of 2048 bits included",
                [&] { return ul::P<ul::IBase>(algo->beginVerify(publicKey)); });
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    printMemory("key cache", [&] { return ul::P<ul::IBase>(ul::make<sarn::CPasswordKeyCache>(password)); });
    sarn::CPasswordKeyCache cache(password);
    unsigned long long salt = 0;
    printMemory("key of 32 bytes in a cache", [&] { return cache.getKey(32, ++salt, 1), ul::P<ul::IBase>(); });
}

} // namespace

int main() {
    printObjects();
}
