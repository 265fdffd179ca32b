// SPDX-License-Identifier: Apache-2.0
// A static object that is created before every process-wide object uses the library in its destructor, after the end of
// the process has destroyed everything else.
#include "support/key_files.h"
#include "system/modules/module.h"

#include "sarn/hmac.h"
#include "sarn/signature.h"

#include "ul/log.h"

#include <cstdio>
#include <cstdlib>

namespace {

int g_lines = 0;

void check(bool holds, const char* what) {
    if (!holds)
        throw std::runtime_error(what);
}

void logALine() {
    const int before = g_lines;
    ul::logError(ul::getEmptyString());
    check(g_lines == before + 1, "a line of the log did not reach its handler");
}

/// Its destructor runs last.
class LateUser {
public:
    LateUser() = default;
    LateUser(const LateUser&) = delete;
    LateUser& operator=(const LateUser&) = delete;
    ~LateUser() {
        try {
            check(getModule()->useEveryFamily(), "a result is wrong");
            logALine();
            verify();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "after main: %s\n", error.what());
            std::_Exit(1);
        }
    }

    void sign() {
        const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(sarn_test::readKey("rsa2048"), "");
        signer->update("data", 4);
        signer->finish(m_signature);
        m_publicKey = sarn_test::readPublicKey("rsa2048");
    }

    void verify() const {
        const ul::P<sarn::IVerifier> verifier = sarn::createRSA_SHA1()->beginVerify(m_publicKey);
        verifier->update("data", 4);
        check(verifier->finish(m_signature), "a signature does not verify");
    }

private:
    ul::String m_publicKey;
    ul::TBuffer<unsigned char> m_signature;
};

LateUser g_lateUser;

} // namespace

/// With an argument, an HMAC is the first use of libcrypto. It alone does without the process-wide objects.
int main(int count, char**) {
    if (count > 1) {
        ul::TBuffer<unsigned char> out;
        sarn::calcHMAC_SHA1(out, "data", 4, "key", 3);
    }
    ul::setLogHandler([](const ul::String&) { ++g_lines; });
    check(getModule()->useEveryFamily(), "a result is wrong");
    logALine();
    g_lateUser.sign();
    g_lateUser.verify();
}
