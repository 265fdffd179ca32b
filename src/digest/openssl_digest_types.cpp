// SPDX-License-Identifier: Apache-2.0
// The saved state is libcrypto's low-level context, which newer versions deprecate but keep.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "sarn/digest.h"

#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

namespace sarn {

namespace {

// Saved states are exchanged between builds, so the sizes must not vary.
static_assert(sizeof(MD4_CTX) == 92 && sizeof(MD5_CTX) == 92 && sizeof(SHA_CTX) == 96 && sizeof(SHA256_CTX) == 112);

using Digest_MD4 = TDigest_OpenSSL<MD4_CTX, MD4_DIGEST_LENGTH, MD4_Init, MD4_Update, MD4_Final>;
using Digest_MD5 = TDigest_OpenSSL<MD5_CTX, MD5_DIGEST_LENGTH, MD5_Init, MD5_Update, MD5_Final>;
using Digest_SHA1 = TDigest_OpenSSL<SHA_CTX, SHA_DIGEST_LENGTH, SHA1_Init, SHA1_Update, SHA1_Final>;
using Digest_SHA256 = TDigest_OpenSSL<SHA256_CTX, SHA256_DIGEST_LENGTH, SHA256_Init, SHA256_Update, SHA256_Final>;

} // namespace

CDigestType_MD4::CDigestType_MD4() = default;
CDigestType_MD4::CDigestType_MD4(const CDigestType_MD4&) = default;
CDigestType_MD4::CDigestType_MD4(CDigestType_MD4&&) noexcept = default;
CDigestType_MD4& CDigestType_MD4::operator=(const CDigestType_MD4&) = default;
CDigestType_MD4& CDigestType_MD4::operator=(CDigestType_MD4&&) noexcept {
    return *this;
}
CDigestType_MD4::~CDigestType_MD4() = default;

ul::String CDigestType_MD4::getID() {
    return "md4";
}

int CDigestType_MD4::getDigestSize() const {
    return MD4_DIGEST_LENGTH;
}

ul::P<IDigest> CDigestType_MD4::createDigest() {
    return ul::make<Digest_MD4>(this);
}

CDigestType_MD5::CDigestType_MD5() = default;
CDigestType_MD5::CDigestType_MD5(const CDigestType_MD5&) = default;
CDigestType_MD5::CDigestType_MD5(CDigestType_MD5&&) noexcept = default;
CDigestType_MD5& CDigestType_MD5::operator=(const CDigestType_MD5&) = default;
CDigestType_MD5& CDigestType_MD5::operator=(CDigestType_MD5&&) noexcept {
    return *this;
}
CDigestType_MD5::~CDigestType_MD5() = default;

ul::String CDigestType_MD5::getID() {
    return "md5";
}

int CDigestType_MD5::getDigestSize() const {
    return MD5_DIGEST_LENGTH;
}

ul::P<IDigest> CDigestType_MD5::createDigest() {
    return ul::make<Digest_MD5>(this);
}

CDigestType_SHA1::CDigestType_SHA1() = default;
CDigestType_SHA1::CDigestType_SHA1(const CDigestType_SHA1&) = default;
CDigestType_SHA1::CDigestType_SHA1(CDigestType_SHA1&&) noexcept = default;
CDigestType_SHA1& CDigestType_SHA1::operator=(const CDigestType_SHA1&) = default;
CDigestType_SHA1& CDigestType_SHA1::operator=(CDigestType_SHA1&&) noexcept {
    return *this;
}
CDigestType_SHA1::~CDigestType_SHA1() = default;

ul::String CDigestType_SHA1::getID() {
    return "sha1";
}

int CDigestType_SHA1::getDigestSize() const {
    return SHA_DIGEST_LENGTH;
}

ul::P<IDigest> CDigestType_SHA1::createDigest() {
    return ul::make<Digest_SHA1>(this);
}

CDigestType_SHA256::CDigestType_SHA256() = default;
CDigestType_SHA256::CDigestType_SHA256(const CDigestType_SHA256&) = default;
CDigestType_SHA256::CDigestType_SHA256(CDigestType_SHA256&&) noexcept = default;
CDigestType_SHA256& CDigestType_SHA256::operator=(const CDigestType_SHA256&) = default;
CDigestType_SHA256& CDigestType_SHA256::operator=(CDigestType_SHA256&&) noexcept {
    return *this;
}
CDigestType_SHA256::~CDigestType_SHA256() = default;

ul::String CDigestType_SHA256::getID() {
    return "sha256";
}

int CDigestType_SHA256::getDigestSize() const {
    return SHA256_DIGEST_LENGTH;
}

ul::P<IDigest> CDigestType_SHA256::createDigest() {
    return ul::make<Digest_SHA256>(this);
}

} // namespace sarn
