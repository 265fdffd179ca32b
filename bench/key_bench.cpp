// SPDX-License-Identifier: Apache-2.0
// HMAC, key derivation and Base64 compared with raw calls of libcrypto, and the look-up of a cached key.
#include "comparison.h"
#include "families.h"
#include "peers/peer.h"

#include <sarn/encoding.h>
#include <sarn/password_key_cache.h>

#include <benchmark/benchmark.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace bench {

namespace {

/// Encodes `data` by libcrypto's filter.
std::string encodeRaw(const Bytes& data) {
    BIO* const filter = BIO_new(BIO_f_base64());
    BIO* const sink = BIO_new(BIO_s_mem());
    BIO_set_flags(filter, BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter, sink);
    BIO_write(filter, data.data(), static_cast<int>(data.size()));
    BIO_flush(filter);
    char* text = nullptr;
    const long size = BIO_get_mem_data(sink, &text);
    benchmark::DoNotOptimize(text);
    std::string result;
    if (size < 100)
        result.assign(text, static_cast<std::size_t>(size));
    BIO_free_all(filter);
    return result;
}

void decodeRaw(const std::string& text, Bytes& out) {
    BIO* const filter = BIO_new(BIO_f_base64());
    BIO_set_flags(filter, BIO_FLAGS_BASE64_NO_NL);
    BIO_push(filter, BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    benchmark::DoNotOptimize(BIO_read(filter, out.data(), static_cast<int>(out.size())));
    BIO_free_all(filter);
}

void compareHMAC(int size) {
    const auto data = std::make_shared<Bytes>(static_cast<std::size_t>(size), static_cast<unsigned char>(5));
    const auto out = std::make_shared<ul::TBuffer<unsigned char>>();
    const auto rawOut = std::make_shared<Bytes>(64);
    const std::string name = "hmac-sha1/" + std::to_string(size);
    const Bytes key = {'k', 'e', 'y'};
    compare(
        name, size,
        [=] {
            unsigned length = 64;
            HMAC(EVP_sha1(), "key", 3, data->data(), data->size(), rawOut->data(), &length);
        },
        [=] { sarn::calcHMAC_SHA1(*out, data->data(), size, "key", 3); }, atMostTimes(1.01));
    sarn::calcHMAC_SHA1(*out, data->data(), size, "key", 3);
    addPeers(name, Bytes(out->getData(), out->getData() + out->getUsed()),
             [&](const Peer& peer, const Result& result) { return peer.hmacSHA1(key, *data, result); });
}

void compareDerivation(int iterations) {
    const auto key = std::make_shared<Bytes>(32);
    const std::string name = "pbkdf2/" + std::to_string(iterations);
    const auto derive = [=] {
        sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("password", 8, "12345678", 8, iterations, 32, key->data());
    };
    compare(
        name, 32,
        [=] {
            PKCS5_PBKDF2_HMAC_SHA1("password", 8, reinterpret_cast<const unsigned char*>("12345678"), 8, iterations, 32,
                                   key->data());
        },
        derive, iterations >= 1000 ? atMostTimes(1.01) : Goal());
    derive();
    addPeers(name, *key, [&](const Peer& peer, const Result& result) {
        return peer.deriveKey("password", "12345678", iterations, result);
    });
}

void compareBase64(int size) {
    const bool isLarge = size >= 1 << 20;
    const auto data = std::make_shared<Bytes>(static_cast<std::size_t>(size), static_cast<unsigned char>(5));
    const auto decoded = std::make_shared<Bytes>(data->size());
    const auto wide = std::make_shared<ul::String>(sarn::base64Encode(data->data(), size, true, false));
    const auto narrow = std::make_shared<std::string>(wide->toLatin1());
    const auto out = std::make_shared<ul::TBuffer<unsigned char>>();
    const std::string encodeName = "base64-encode/" + std::to_string(size);
    compare(
        encodeName, size, [=] { encodeRaw(*data); },
        [=] { benchmark::DoNotOptimize(sarn::base64Encode(data->data(), size, true, false)); },
        isLarge ? atMostTimes(1.15) : Goal());
    addPeers(encodeName, Bytes(narrow->begin(), narrow->end()),
             [&](const Peer& peer, const Result& result) { return peer.encodeBase64(*data, result); });
    const std::string decodeName = "base64-decode/" + std::to_string(size);
    compare(
        decodeName, size, [=] { decodeRaw(*narrow, *decoded); }, [=] { sarn::base64Decode(*wide, *out); },
        isLarge ? atMostTimes(1.25) : Goal());
    addPeers(decodeName, *data,
             [&](const Peer& peer, const Result& result) { return peer.decodeBase64(*narrow, result); });
}

void compareLookUp() {
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    const ul::P<sarn::CPasswordKeyCache> cache = ul::make<sarn::CPasswordKeyCache>(password);
    const auto mutex = std::make_shared<std::recursive_mutex>();
    const auto map = std::make_shared<std::map<unsigned long long, int>>();
    for (unsigned long long salt = 0; salt < 16; ++salt) {
        cache->getKey(32, salt, 1);
        (*map)[salt] = 1;
    }
    compare(
        "cached-key (beside a recursive mutex and a map)", 32,
        [=] {
            const std::lock_guard<std::recursive_mutex> lock(*mutex);
            benchmark::DoNotOptimize(map->find(7));
        },
        [=] { benchmark::DoNotOptimize(cache->getKey(32, 7, 1)); }, atMost(100));
}

} // namespace

void registerKeys() {
    for (const int size : getSizes())
        compareHMAC(size);
    for (const int iterations : {1, 1000})
        compareDerivation(iterations);
    for (const int size : {1024, 1 << 20})
        compareBase64(size);
    compareLookUp();
}

} // namespace bench
