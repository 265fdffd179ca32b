// SPDX-License-Identifier: Apache-2.0
// A static object that is older than every process-wide one, and so destroyed after whatever the end of the process
// destroys. Its destructor uses the library.
#include "support/key_files.h"

#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/signature.h"

#include "ul/error.h"
#include "ul/log.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

using Buffer = ul::TBuffer<unsigned char>;

int g_lines = 0;

void check(bool holds, const char* what) {
    if (!holds)
        throw std::runtime_error(what);
}

void encryptUnderARandomIV() {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    ul::TCryptBuffer<unsigned char> key;
    key.init(reinterpret_cast<const unsigned char*>("0123456789abcdef0123456789abcdef"), 32);
    Buffer encrypted;
    Buffer decrypted;
    cipher->encrypt(key, "data", 4, encrypted, false, nullptr);
    cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    check(decrypted.getUsed() == 4, "what was encrypted does not decrypt");
}

void computeADigest() {
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType("md4-sha1-adler32")->createDigest();
    digest->update("data", 4);
    digest->finish();
}

void logALine() {
    const int before = g_lines;
    ul::logError(ul::getEmptyString());
    check(g_lines == before + 1, "a line of the log did not reach its handler");
}

/// Its destructor is the last thing that happens in the process.
class LateUser {
public:
    LateUser() = default;
    LateUser(const LateUser&) = delete;
    LateUser& operator=(const LateUser&) = delete;
    ~LateUser() {
        try {
            encryptUnderARandomIV();
            computeADigest();
            logALine();
            verify();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "after main: %s\n", error.what());
            std::_Exit(1);
        }
    }

    /// Makes what is verified in the end.
    void sign() {
        const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(sarn_test::readKey("rsa2048"), "");
        m_signature.setUsed(signer->getMaxSignatureSize());
        signer->update("data", 4);
        int size = 0;
        signer->finish(m_signature.getData(), size);
        m_signature.setUsed(size);
        m_publicKey = sarn_test::readPublicKey("rsa2048");
    }

    void verify() const {
        const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(m_publicKey);
        verifier->update("data", 4);
        check(verifier->finish(m_signature.getData(), m_signature.getUsed()), "a signature does not verify");
    }

private:
    ul::String m_publicKey;
    Buffer m_signature;
};

LateUser g_lateUser;

} // namespace

int main() {
    ul::setLogHandler([](const ul::String&) { ++g_lines; });
    encryptUnderARandomIV();
    computeADigest();
    logALine();
    g_lateUser.sign();
    g_lateUser.verify();
}
