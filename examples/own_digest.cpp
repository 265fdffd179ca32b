// SPDX-License-Identifier: Apache-2.0
// Adds a digest type to the registry: SHA-512, whose running state can be saved and resumed like that of any other.
#define OPENSSL_SUPPRESS_DEPRECATED // libcrypto 3 keeps these functions and would rather not have them called

#include <sarn/sarn.h>

#include <ul/hex.h>

#include <openssl/sha.h>

#include <iostream>

using Digest_SHA512 = sarn::TDigest_OpenSSL<SHA512_CTX, 64, SHA512_Init, SHA512_Update, SHA512_Final>;

class DigestType_SHA512 : public ul::CBase, public virtual sarn::IDigestType {
public:
    ul::String getID() override { return "sha512"; }
    int getDigestSize() const override { return 64; }
    ul::P<sarn::IDigest> createDigest() override { return ul::make<Digest_SHA512>(this); }
};

int main() {
    const ul::P<sarn::IDigestType> sha512 = ul::make<DigestType_SHA512>();
    sarn::CDigestManager::get()->addType(sha512.get());
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType("sha512");

    const ul::P<sarn::IDigest> first = type->createDigest();
    first->update("a", 1);
    ul::TBuffer<unsigned char> state;
    ul::CBufferStream buffer(&state, 2.0);
    ul::CDataOutStream out(buffer);
    first->storeState(out);

    const ul::P<sarn::IDigest> second = type->createDigest();
    ul::CBufferInStream bytes(state);
    ul::CDataInStream in(bytes);
    second->loadState(in);
    second->update("bc", 2);
    second->finish();
    std::cout << ul::toHex({second->getDigestData(), second->getDigestSize()}) << "\n"; // that of "abc"
}
