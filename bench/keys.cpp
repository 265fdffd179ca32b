// SPDX-License-Identifier: Apache-2.0
// HMAC and key derivation beside libcrypto's functions; look-ups, which have no raw counterpart.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "measure.h"
#include "rows.h"

#include <sarn/cipher.h>
#include <sarn/digest.h>
#include <sarn/encoding.h>
#include <sarn/password_key_cache.h>

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <map>
#include <memory>
#include <mutex>

namespace bench {

namespace {

/// The fastest way that the version of libcrypto offers.
void computeRaw(const Bytes& data, unsigned char* out) {
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
    HMAC_CTX* const context = HMAC_CTX_new();
    require(HMAC_Init_ex(context, "key", 3, EVP_sha1(), nullptr) && HMAC_Update(context, data.data(), data.size()) &&
            HMAC_Final(context, out, nullptr));
    HMAC_CTX_free(context);
#else
    require(HMAC(EVP_sha1(), "key", 3, data.data(), data.size(), out, nullptr) != nullptr);
#endif
}

void compareHMAC() {
    ul::TBuffer<unsigned char> out(64, 0);
    for (const int size : getSizes("HMAC")) {
        const Bytes data(static_cast<std::size_t>(size), 5);
        compare(
            "HMAC", size, [&] { computeRaw(data, out.getData()); },
            [&] { sarn::calcHMAC_SHA1(out, data.data(), size, "key", 3); });
    }
}

void compareHMACInTwoThreads() {
    const Bytes data(4096, 5);
    const auto makeRaw = [&] { return [&, out = Bytes(64)]() mutable { computeRaw(data, out.data()); }; };
    const auto makeOurs = [&] {
        return [&, out = ul::TBuffer<unsigned char>()]() mutable {
            sarn::calcHMAC_SHA1(out, data.data(), 4096, "key", 3);
        };
    };
    compareThreads("HMAC, two threads", makeRaw, makeOurs);
}

void compareDerivation() {
    unsigned char key[32];
    const auto* const salt = reinterpret_cast<const unsigned char*>("12345678");
    for (const int iterations : {1, 10, 100, 1000}) {
        if (isSelected("PBKDF2"))
            compare(
                "PBKDF2", iterations,
                [&] { require(PKCS5_PBKDF2_HMAC_SHA1("password", 8, salt, 8, iterations, 32, key) == 1); },
                [&] { sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, salt, 8, iterations, 32, key); });
    }
}

void compareLookUp(const std::string& row, const Work& lookUp) {
    if (isSelected(row))
        compare(
            row, 0, [] { keep(nullptr); }, lookUp);
}

/// The simplest registry.
struct RawRegistry {
    std::shared_ptr<int> get(const std::wstring& id) {
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        return items.find(id)->second;
    }

    std::recursive_mutex mutex;
    std::map<std::wstring, std::shared_ptr<int>> items;
};

void compareLookUpsInTwoThreads(const Work& lookUp) {
    RawRegistry registry;
    for (const wchar_t* const id : {L"aes256cbc", L"aes128cbc", L"bfcbc", L"cast128cbc", L"null"})
        registry.items[id] = std::make_shared<int>(1);
    const std::wstring id = L"aes256cbc";
    compareThreads(
        "look-up, two threads", [&] { return [&] { keep(registry.get(id).get()); }; }, [&] { return lookUp; });
}

} // namespace

void compareKeys() {
    compareHMAC();
    compareHMACInTwoThreads();
    compareDerivation();
}

void compareLookUps() {
    const ul::String cipherID("aes256cbc");
    const ul::String digestID("sha1");
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    sarn::CPasswordKeyCache cache(password);
    for (unsigned long long salt = 0; salt < 16; ++salt)
        cache.getKey(32, salt, 1);
    const Work getCipher = [&] { keep(sarn::CCipherManager::get()->getCipher(cipherID).get()); };
    compareLookUp("look-up of a cipher", getCipher);
    compareLookUp("look-up of a digest", [&] { keep(sarn::CDigestManager::get()->getType(digestID).get()); });
    compareLookUp("cached key", [&] { keep(cache.getKey(32, 7, 1).get()); });
    compareLookUpsInTwoThreads(getCipher);
}

} // namespace bench
