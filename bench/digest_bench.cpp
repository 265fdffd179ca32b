// SPDX-License-Identifier: Apache-2.0
// Each digest beside the calls of libcrypto and zlib that it stands for, whole and update alone; combined digests
// beside their components run on the same slices.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "comparison.h"
#include "families.h"

#include <sarn/digest.h>

#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include <algorithm>
#include <memory>
#include <vector>

#include <zlib.h>

namespace bench {

namespace {

using Bytes = std::vector<unsigned char>;

/// A hash of libcrypto without anything around it.
template <class CTX, int DigestSize, int (*Init)(CTX*), int (*Update)(CTX*, const void*, std::size_t),
          int (*Final)(unsigned char*, CTX*)>
struct RawHash {
    void init() { Init(&context); }
    void update(const unsigned char* data, int size) { Update(&context, data, static_cast<std::size_t>(size)); }
    void finish() { Final(result, &context); }

    CTX context;
    unsigned char result[DigestSize];
};

/// A checksum of zlib.
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

template <class Raw>
void compareDigest(const std::string& id, int size) {
    const auto raw = std::make_shared<Raw>();
    const auto data = std::make_shared<Bytes>(static_cast<std::size_t>(size), static_cast<unsigned char>(5));
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id.c_str());
    const ul::P<sarn::IDigest> digest = type->createDigest();
    raw->init();
    compare(
        id + "/create+update+finish/" + std::to_string(size), size,
        [=] {
            const auto context = std::make_unique<Raw>();
            context->init();
            context->update(data->data(), size);
            context->finish();
        },
        [=] {
            const ul::P<sarn::IDigest> own = type->createDigest();
            own->update(data->data(), size);
            own->finish();
        });
    compare(
        id + "/update/" + std::to_string(size), size, [=] { raw->update(data->data(), size); },
        [=] { digest->update(data->data(), size); });
}

} // namespace

void registerDigests() {
    for (const int size : {16, 64, 1024, 8192, 1 << 20}) {
        compareDigest<RawMD4>("md4", size);
        compareDigest<RawMD5>("md5", size);
        compareDigest<RawSHA1>("sha1", size);
        compareDigest<RawSHA256>("sha256", size);
        compareDigest<RawAdler32>("adler32", size);
        compareDigest<RawCRC32>("crc32", size);
        compareDigest<RawPair<RawMD4, RawSHA1>>("md4-sha1", size);
        compareDigest<RawPair<RawPair<RawMD4, RawSHA1>, RawAdler32>>("md4-sha1-adler32", size);
    }
}

} // namespace bench
