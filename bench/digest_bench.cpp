// SPDX-License-Identifier: Apache-2.0
// Each digest compared with the calls of libcrypto and zlib that it makes, as a whole and its update alone; combined
// digests compared with their components on the same slices.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "comparison.h"
#include "families.h"
#include "peers/peer.h"

#include <sarn/digest.h>

#include <benchmark/benchmark.h>
#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/sha.h>
#include <zlib.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace bench {

namespace {

/// A hash by raw calls of libcrypto.
template <class CTX, int DigestSize, int (*Init)(CTX*), int (*Update)(CTX*, const void*, std::size_t),
          int (*Final)(unsigned char*, CTX*)>
struct RawHash {
    void init() { Init(&context); }
    void update(const unsigned char* data, int size) { Update(&context, data, static_cast<std::size_t>(size)); }
    void finish() { Final(result, &context); }

    CTX context;
    unsigned char result[DigestSize];
};

/// A checksum by raw calls of zlib.
template <uLong (*Function)(uLong, const Bytef*, uInt)>
struct RawChecksum {
    void init() { value = Function(0, nullptr, 0); }
    void update(const unsigned char* data, int size) { value = Function(value, data, static_cast<uInt>(size)); }
    void finish() { benchmark::DoNotOptimize(value); }

    uLong value;
};

/// Two of them on slices of 2048 bytes.
template <class First, class Second>
struct RawPair {
    void init() {
        first.init();
        second.init();
    }
    void update(const unsigned char* data, int size) {
        for (; size >= 2048; data += 2048, size -= 2048)
            updateBoth(data, 2048);
        updateBoth(data, size);
    }
    void finish() {
        first.finish();
        second.finish();
    }

    void updateBoth(const unsigned char* data, int size) {
        first.update(data, size);
        second.update(data, size);
    }

    First first;
    Second second;
};

using RawMD4 = RawHash<MD4_CTX, 16, MD4_Init, MD4_Update, MD4_Final>;
using RawMD5 = RawHash<MD5_CTX, 16, MD5_Init, MD5_Update, MD5_Final>;
using RawSHA1 = RawHash<SHA_CTX, 20, SHA1_Init, SHA1_Update, SHA1_Final>;
using RawSHA256 = RawHash<SHA256_CTX, 32, SHA256_Init, SHA256_Update, SHA256_Final>;
using RawAdler32 = RawChecksum<adler32>;
using RawCRC32 = RawChecksum<crc32>;

Bytes getDigest(const ul::P<sarn::IDigestType>& type, const Bytes& data) {
    const ul::P<sarn::IDigest> digest = type->createDigest();
    digest->update(data.data(), static_cast<int>(data.size()));
    digest->finish();
    Bytes result(static_cast<std::size_t>(digest->getDigestSize()));
    digest->storeDigestData(result.data());
    return result;
}

/// Several digests of one type in turn, as a host computes them for many files.
template <class Raw>
void compareWhole(const std::string& id, int size, Goal goal) {
    const auto raw = std::make_shared<Raw>();
    const auto data = std::make_shared<Bytes>(static_cast<std::size_t>(size), static_cast<unsigned char>(5));
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id.c_str());
    const ul::P<sarn::IDigest> digest = type->createDigest();
    const std::string name = id + "/digest/" + std::to_string(size);
    compare(
        name, size,
        [=] {
            raw->init();
            raw->update(data->data(), size);
            raw->finish();
        },
        [=] {
            digest->reset();
            digest->update(data->data(), size);
            digest->finish();
        },
        goal);
    addPeers(name, getDigest(type, *data),
             [&](const Peer& peer, const Result& result) { return peer.digest(id, *data, result); });
}

template <class Raw>
void compareCreation(const std::string& id) {
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id.c_str());
    compare(
        id + "/create and end (raw: allocate, init, final)", 0,
        [] {
            const auto context = std::make_unique<Raw>();
            context->init();
            benchmark::DoNotOptimize(context.get());
            context->finish();
        },
        [=] { benchmark::DoNotOptimize(type->createDigest().get()); }, atMostTimes(1.5));
}

template <class Raw>
void compareDigest(const std::string& id, double ratio) {
    for (const int size : getSizes())
        compareWhole<Raw>(id, size, size >= 1024 ? atMostTimes(ratio) : size == 16 ? atMostMore(15) : Goal());
    compareCreation<Raw>(id);
}

} // namespace

void registerDigests() {
    constexpr double single = 1.01;
    constexpr double combined = 1.02;
    compareDigest<RawMD4>("md4", single);
    compareDigest<RawMD5>("md5", single);
    compareDigest<RawSHA1>("sha1", single);
    compareDigest<RawSHA256>("sha256", single);
    compareDigest<RawAdler32>("adler32", single);
    compareDigest<RawCRC32>("crc32", single);
    compareDigest<RawPair<RawMD4, RawSHA1>>("md4-sha1", combined);
    compareDigest<RawPair<RawPair<RawMD4, RawSHA1>, RawAdler32>>("md4-sha1-adler32", combined);
}

} // namespace bench
