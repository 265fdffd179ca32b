// SPDX-License-Identifier: Apache-2.0
// The process-wide objects that a first use creates, their order, and first uses without memory. Such objects stay
// until the process ends, so each check has a process of its own.
#include "failures/injection.h"
#include "support/log_capture.h"
#include "support/new_process.h"
#include "support/signing.h"

#include "sarn/cipher.h"
#include "sarn/digest.h"
#include "sarn/encoding.h"
#include "sarn/signature.h"

#include <openssl/crypto.h>

namespace sarn_test {

namespace {

using sarn::COpenSSLInit;

struct InitAccess : COpenSSLInit {
    using COpenSSLInit::disposeGlobalInstance;
};

struct CleanerAccess : COpenSSLInit::CCleaner {
    using CCleaner::disposeGlobalInstance;
};

struct ThreadAccess : COpenSSLInit::CThreadStuff {
    using CThreadStuff::disposeGlobalInstance;
    using CThreadStuff::doLock;
};

/// Whether the object of `get` exists. If not, `get` needs memory to create it, and there is none.
template <class Get>
bool isThere(Get get) {
    const AllocationFailure failure(0);
    try {
        get();
    } catch (const ul::CError& error) {
        EXPECT_STREQ(error.what(), "Global object could not be created.");
    }
    return !failure.hasHappened();
}

std::string listInstances() {
    return std::string(isThere(COpenSSLInit::CThreadStuff::get) ? "thread stuff, " : "") +
           (isThere(COpenSSLInit::CCleaner::get) ? "cleaner, " : "") + (isThere(COpenSSLInit::get) ? "anchor, " : "");
}

void failToCreateMD5() {
    CallWatch watch;
    watch.fail("MD5_Init");
    EXPECT_THROW(sarn::CDigestType_MD5().createDigest(), ul::CError);
}

constexpr char companions[] = "thread stuff, cleaner, ";

struct FirstUse : Row {
    std::function<void()> call;
    const char* created;
};

ul::TBuffer<unsigned char> out;
unsigned char key[20];

const FirstUse firstUses[] = {
    {"EnsureInitialized", COpenSSLInit::ensureInitialized, companions},
    {"Get", [] { COpenSSLInit::get(); }, "thread stuff, cleaner, anchor, "},
    {"Cipher", [] { ul::make<sarn::CCipher_AES256CBC>(); }, companions},
    {"CipherThatIsRefused", [] { EXPECT_THROW(sarn::COpenSSLCipher(nullptr, "x"), ul::CError); }, companions},
    {"MD4", [] { sarn::CDigestType_MD4().createDigest(); }, companions},
    {"MD5", [] { sarn::CDigestType_MD5().createDigest(); }, companions},
    {"SHA1", [] { sarn::CDigestType_SHA1().createDigest(); }, companions},
    {"SHA256", [] { sarn::CDigestType_SHA256().createDigest(); }, companions},
    {"MD5WhoseInitFails", failToCreateMD5, companions},
    {"SignatureAlgorithm", [] { sarn::createRSA_SHA1(); }, companions},
    {"Base64Encode", [] { sarn::base64Encode("x", 1, true, true); }, companions},
    {"Base64Decode", [] { sarn::base64Decode("QUJD", out); }, companions},
    {"DeriveKey", [] { sarn::deriveKey_PKCS5_PBKDF2_HMAC_SHA1("p", 1, "s", 1, 1, 20, key); }, companions},
    {"CalcHMAC", [] { sarn::calcHMAC_SHA1(out, "x", 1, "k", 1); }, ""},
    {"DisposalOfTheAnchor", [] { InitAccess::disposeGlobalInstance(); }, ""},
    {"DisposalOfTheCleaner", [] { CleanerAccess::disposeGlobalInstance(); }, "cleaner, "},
    {"DisposalOfTheThreadStuff", [] { ThreadAccess::disposeGlobalInstance(); }, "thread stuff, "},
};

class FirstUseDeathTest : public testing::TestWithParam<FirstUse> {};

/// Tries `action` with memory for one more allocation each time until it succeeds, and calls `check` after each
/// failure. Returns the number of failures.
template <class Action, class Check>
int tryWithMoreMemory(Action action, Check check) {
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
    // libcrypto 3.5 waits for itself for ever if its own first use is out of memory.
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
#endif
    for (int index = 0;; ++index) {
        try {
            const Injection noMore(true, index, Injection::Duration::FromThenOn);
            action();
            return index;
        } catch (const std::exception&) {
            // The next attempt gets further.
        }
        check();
    }
}

} // namespace

TEST_P(FirstUseDeathTest, CreatesWhatItNeedsAndNothingElse) {
    expectInNewProcess([] {
        GetParam().call();
        EXPECT_EQ(listInstances(), GetParam().created);
    });
}

INSTANTIATE_TEST_SUITE_P(All, FirstUseDeathTest, testing::ValuesIn(firstUses), getRowName<FirstUse>);

TEST(FirstUsesDeathTest, CreateTheThreadStuffAndThenTheCleaner) {
    for (void (*const action)() : {&COpenSSLInit::ensureInitialized, +[] { sarn::createRSA_SHA1(); }}) {
        expectInNewProcess([action] {
            std::string created;
            tryWithMoreMemory(action, [&] { created = listInstances(); });
            EXPECT_EQ(created, "thread stuff, ") << "there was a moment at which it was alone";
            EXPECT_EQ(listInstances(), companions);
        });
    }
}

TEST(FirstUsesDeathTest, OfTheAnchor_CreateItBeforeItsCompanions) {
    expectInNewProcess([] {
        {
            const Injection afterHolderAndObject(true, 2, Injection::Duration::FromThenOn);
            EXPECT_ANY_THROW(COpenSSLInit::get());
        }
        EXPECT_EQ(listInstances(), "");
        COpenSSLInit::ensureInitialized();
        EXPECT_TRUE(isThere(COpenSSLInit::get));
    });
}

TEST(FirstUsesDeathTest, WithoutMemory_FreeTheirObjectsAndAreTriedAgain) {
    expectInNewProcess([] {
        CallWatch watch;
        const auto expectNothing = [&] {
            EXPECT_EQ(watch.countLeft("_ZnwmRKSt9nothrow_t", "_ZdlPv"), 0);
            EXPECT_EQ(listInstances(), "");
        };
        EXPECT_GT(tryWithMoreMemory(COpenSSLInit::CThreadStuff::get, expectNothing), 2);
        EXPECT_EQ(listInstances(), "thread stuff, ");
    });
}

TEST(FirstUsesDeathTest, OfARegistryWithoutMemory_RaiseAndAreTriedAgain) {
    expectInNewProcess([] {
        EXPECT_GT(tryWithMoreMemory(sarn::CCipherManager::get, [] {}), 10);
        EXPECT_TRUE(sarn::CCipherManager::get()->findCipher("null"));
    });
}

#if OPENSSL_VERSION_NUMBER < 0x30000000L
TEST(FirstUsesDeathTest, OfADSAKeyWithoutMemory_FreeTheKeyAndAreTriedAgain) {
    expectInNewProcess([] {
        CallWatch watch;
        watch.fail("DSA_meth_dup");
        const ul::P<sarn::ISignatureAlgo> algo = sarn::createDSS_SHA1();
        EXPECT_THROW(algo->beginSign(readKey("dsa1024"), ""), std::bad_alloc);
        EXPECT_EQ(watch.countLeft("PEM_read_bio_PrivateKey", "EVP_PKEY_free"), 0);
        EXPECT_NO_THROW(algo->beginSign(readKey("dsa1024"), ""));
    });
}
#endif

#if OPENSSL_VERSION_NUMBER < 0x30000000L
TEST(FirstUsesDeathTest, OfIDEAThatLibcryptoLacks_IsAnError) {
    expectInNewProcess([] {
        CallWatch watch;
        watch.fail("EVP_idea_cbc");
        expectError("IDEA is not available in this OpenSSL.", [] { ul::make<sarn::CCipher_IDEACBC>(); });
    });
}
#endif

TEST(CThreadStuffWithoutMemory, DoLock_LocksAndUnlocks) {
    ThreadAccess threads;
    const LogCapture log;
    {
        const AllocationFailure failure(0);
        threads.doLock(1, 0);
        threads.doLock(2, 0);
        EXPECT_FALSE(failure.hasHappened());
    }
    EXPECT_TRUE(log.getLines().empty());
}

TEST(CThreadStuffWithoutMemory, DoLock_WhoseLogLineCannotBeMade_ThrowsNothing) {
    ThreadAccess threads;
    const LogCapture log;
    for (const auto& [mode, n] : {std::pair(1, 1), std::pair(2, 0)}) {
        int index = 0;
        for (bool hasFailed = true; hasFailed; ++index) {
            const AllocationFailure failure(index);
            EXPECT_NO_THROW(threads.doLock(mode, n));
            hasFailed = failure.hasHappened();
        }
        EXPECT_GT(index, 1);
    }
}

} // namespace sarn_test
