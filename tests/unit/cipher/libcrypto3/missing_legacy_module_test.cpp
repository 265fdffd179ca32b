// SPDX-License-Identifier: Apache-2.0
// libcrypto 3 without its legacy module: only the ciphers of that module fail.
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/log_capture.h"
#include "support/new_process.h"
#include "support/temp_folder.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace sarn_test {

namespace {

const std::string logged = "cannot load its legacy provider, so ";

} // namespace

/// libcrypto looks for its modules in an empty folder.
TEST(MissingLegacyModuleDeathTest, LegacyCiphers_AreFoundKnowTheirSizesRaiseTheInitErrorAndAreLoggedOnce_AllElseWorks) {
    const TempFolder empty;
    ASSERT_EQ(setenv("OPENSSL_MODULES", empty.getNative().c_str(), 1), 0);
    expectInNewProcess([] {
        const LogCapture log;
        EXPECT_TRUE(restoresItsInput(*getAnyCipher("aes256cbc")));
        EXPECT_TRUE(restoresItsInput(*getAnyCipher("aes128cbc")));
        for (const char* const id : digestIDs)
            EXPECT_FALSE(getDigest(id, makePattern(100)).empty()) << id;
        getAnyCipher("bfcbc");
        getAnyCipher("cast128cbc");
        EXPECT_THAT(log.getLines(), testing::ElementsAre(testing::HasSubstr(logged + "BF-CBC will fail."),
                                                         testing::HasSubstr(logged + "CAST5-CBC will fail.")));
        for (const char* const id : {"bfcbc", "cast128cbc", "ideacbc"}) {
            SCOPED_TRACE(id);
            if (std::string(id) == "ideacbc" && !hasIDEA)
                continue;
            const ul::P<sarn::ICipher> cipher = getAnyCipher(id);
            EXPECT_EQ(cipher->getKeySize(), 16);
            EXPECT_EQ(cipher->getIVSize(), 8);
            EXPECT_EQ(cipher->getBlockSize(), 8);
            const Bytes iv = makePattern(8);
            for (const CipherOperation& operation : cipherOperations)
                expectError("OpenSSL encrypt init error.", [&] { runCipher(*cipher, operation, iv, iv.data()); });
        }
    });
    unsetenv("OPENSSL_MODULES");
}

} // namespace sarn_test
