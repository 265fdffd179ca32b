// SPDX-License-Identifier: Apache-2.0
// Digests beside the calls of libcrypto and zlib that they make; combined digests beside their components, one after
// the other on the same slices.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "measure.h"
#include "rows.h"

#include <sarn/digest.h>

#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/sha.h>
#include <zlib.h>

#include <tuple>

namespace bench {

namespace {

template <class CTX, int DigestSize, int (*Init)(CTX*), int (*Update)(CTX*, const void*, std::size_t),
          int (*Final)(unsigned char*, CTX*)>
struct RawHash {
    void init() { Init(&context); }
    void update(const unsigned char* data, int size) { Update(&context, data, static_cast<std::size_t>(size)); }
    void finish() {
        unsigned char result[DigestSize];
        Final(result, &context);
    }

    CTX context;
};

template <uLong (*Function)(uLong, const Bytef*, uInt)>
struct RawChecksum {
    void init() { value = Function(0, nullptr, 0); }
    void update(const unsigned char* data, int size) { value = Function(value, data, static_cast<uInt>(size)); }
    void finish() { keep(&value); }

    uLong value;
};

using RawMD4 = RawHash<MD4_CTX, 16, MD4_Init, MD4_Update, MD4_Final>;
using RawMD5 = RawHash<MD5_CTX, 16, MD5_Init, MD5_Update, MD5_Final>;
using RawSHA1 = RawHash<SHA_CTX, 20, SHA1_Init, SHA1_Update, SHA1_Final>;
using RawSHA256 = RawHash<SHA256_CTX, 32, SHA256_Init, SHA256_Update, SHA256_Final>;
using RawAdler32 = RawChecksum<adler32>;
using RawCRC32 = RawChecksum<crc32>;

/// Components that digest slices of 2048 bytes in turn, as a combined digest does.
template <class... Parts>
struct RawCombination {
    void init() {
        std::apply([](auto&... part) { (part.init(), ...); }, parts);
    }
    void update(const unsigned char* data, int size) {
        for (; size > 2048; data += 2048, size -= 2048)
            updateEach(data, 2048);
        updateEach(data, size);
    }
    void updateEach(const unsigned char* data, int size) {
        std::apply([=](auto&... part) { (part.update(data, size), ...); }, parts);
    }

    std::tuple<Parts...> parts;
};

template <class Raw>
void compareUpdates(const std::string& id) {
    const std::string row = id + " update";
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType(id.c_str())->createDigest();
    Raw raw;
    for (const int size : getSizes(row)) {
        const Bytes data(static_cast<std::size_t>(size), 5);
        // Both start with an empty block: a part of one would have to be filled up in each update.
        raw.init();
        digest->reset();
        compare(
            row, size, [&] { raw.update(data.data(), size); }, [&] { digest->update(data.data(), size); });
    }
}

template <class Raw>
Work makeRawWhole(const Bytes& data) {
    return [&data] {
        Raw raw;
        raw.init();
        raw.update(data.data(), static_cast<int>(data.size()));
        raw.finish();
    };
}

Work makeWhole(const ul::P<sarn::IDigestType>& type, const Bytes& data) {
    return [&data, type] {
        const ul::P<sarn::IDigest> digest = type->createDigest();
        digest->update(data.data(), static_cast<int>(data.size()));
        digest->finish();
    };
}

template <class Raw>
void compareWholes(const std::string& id) {
    const std::string row = id + " create, update, finish";
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id.c_str());
    for (const int size : getSizes(row)) {
        const Bytes data(static_cast<std::size_t>(size), 5);
        compare(row, size, makeRawWhole<Raw>(data), makeWhole(type, data));
    }
}

template <class Raw>
void compareDigest(const std::string& id) {
    compareUpdates<Raw>(id);
    compareWholes<Raw>(id);
}

} // namespace

void compareDigests() {
    compareDigest<RawMD4>("md4");
    compareDigest<RawMD5>("md5");
    compareDigest<RawSHA1>("sha1");
    compareDigest<RawSHA256>("sha256");
    compareWholes<RawAdler32>("adler32");
    compareWholes<RawCRC32>("crc32");
    compareUpdates<RawCombination<RawMD4, RawSHA1>>("md4-sha1");
    compareUpdates<RawCombination<RawMD4, RawSHA1, RawAdler32>>("md4-sha1-adler32");
    const Bytes data(4096, 5);
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType("sha1");
    compareThreads(
        "digest, two threads", [&] { return makeRawWhole<RawSHA1>(data); }, [&] { return makeWhole(type, data); });
}

} // namespace bench
