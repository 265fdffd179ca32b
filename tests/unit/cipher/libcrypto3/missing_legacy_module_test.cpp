// SPDX-License-Identifier: Apache-2.0
// libcrypto 3 whose legacy module is not installed: the ciphers that live there fail, nothing else does.
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/log_capture.h"
#include "support/new_process.h"
#include "support/temp_folder.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace sarn_test {

namespace {

const std::vector<const char*> legacyCiphers = {"bfcbc", "cast128cbc", "ideacbc"};

/// Runs `check` in a process that looks for libcrypto's modules in an empty folder.
template <class Check>
void expectWithoutModules(Check check) {
    const TempFolder empty;
    ASSERT_EQ(setenv("OPENSSL_MODULES", empty.getNative().c_str(), 1), 0);
    expectInNewProcess(check);
    unsetenv("OPENSSL_MODULES");
}

TEST(MissingLegacyModuleDeathTest, AES_Works) {
    expectWithoutModules([] {
        EXPECT_TRUE(restoresItsInput(*getAnyCipher("aes256cbc")));
        EXPECT_TRUE(restoresItsInput(*getAnyCipher("aes128cbc")));
    });
}

TEST(MissingLegacyModuleDeathTest, EveryDigest_Works) {
    expectWithoutModules([] {
        for (const char* const id : digestIDs)
            EXPECT_FALSE(getDigest(id, makePattern(100)).empty()) << id;
    });
}

TEST(MissingLegacyModuleDeathTest, LegacyCiphers_AreFoundKnowTheirSizesAndRaiseTheInitError) {
    expectWithoutModules([] {
        for (const char* const id : legacyCiphers) {
            SCOPED_TRACE(id);
            if (std::string(id) == "ideacbc" && !hasIDEA)
                continue;
            const LogCapture log;
            const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
            EXPECT_EQ(cipher->getKeySize(), 16);
            EXPECT_EQ(cipher->getIVSize(), 8);
            EXPECT_EQ(cipher->getBlockSize(), 8);
            const Bytes iv = makePattern(8);
            for (const CipherOperation& operation : cipherOperations) {
                Buffer out;
                expectError("OpenSSL encrypt init error.", [&] {
                    ((*cipher).*operation.function)(TestKey(16), "12345678", 8, out, false, iv.data());
                });
            }
        }
    });
}

TEST(MissingLegacyModuleDeathTest, LegacyCiphers_AreNamedInTheLogOnce) {
    expectWithoutModules([] {
        const LogCapture log;
        for (int i = 0; i < 2; ++i) {
            getAnyCipher("bfcbc");
            getAnyCipher("cast128cbc");
        }
        EXPECT_THAT(
            log.getLines(),
            testing::ElementsAre(testing::HasSubstr("cannot load its legacy provider, so BF-CBC will fail."),
                                 testing::HasSubstr("cannot load its legacy provider, so CAST5-CBC will fail.")));
    });
}

} // namespace

} // namespace sarn_test
