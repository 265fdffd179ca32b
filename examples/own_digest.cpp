// SPDX-License-Identifier: Apache-2.0
// Adds a digest type to the registry: SHA-512, whose running state can be saved and resumed.
#define OPENSSL_SUPPRESS_DEPRECATED // libcrypto 3 has these functions but marks them as deprecated

#include <sarn/host.h>

#include <openssl/sha.h>

#include <iostream>

using Digest_SHA512 = sarn::TDigest_OpenSSL<SHA512_CTX, 64, SHA512_Init, SHA512_Update, SHA512_Final>;

class DigestType_SHA512 : public ul::CBase, public virtual sarn::IDigestType {
public:
    ul::String getID() override { return "sha512"; }
    int getDigestSize() const override { return 64; }
    ul::P<sarn::IDigest> createDigest() override { return ul::make<Digest_SHA512>(this); }
};

int main() try {
    const ul::P<sarn::IDigestType> sha512 = ul::make<DigestType_SHA512>();
    sarn::CDigestManager::get()->addType(sha512.get());

    const ul::P<sarn::IDigest> first = sarn::createDigest("sha512");
    sarn::feed(*first, "a");
    const ul::P<sarn::IDigest> second = sarn::createDigest("sha512");
    sarn::loadState(*second, sarn::saveState(*first));
    sarn::feed(*second, "bc");
    std::cout << ul::toHex(sarn::finish(*second)) << "\n"; // the SHA-512 of "abc"
} catch (const std::exception& error) {
    std::cerr << ul::formatError(error) << "\n";
    return 1;
}
