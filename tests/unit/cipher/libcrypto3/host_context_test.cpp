// SPDX-License-Identifier: Apache-2.0
// The host's own context of libcrypto 3, from which the library fetches no ciphers, and a libcrypto 3 without its
// legacy module.
#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"
#include "support/log_capture.h"
#include "support/new_process.h"
#include "support/signing.h"

#include "sarn/encoding.h"

#include <gmock/gmock.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

namespace sarn_test {

namespace {

using Names = std::vector<std::string>;

/// The active providers of the host's context. If none was ever loaded, the query activates libcrypto's fallback,
/// "default", as every use of that context does.
Names getHostProviders() {
    Names names;
    OSSL_PROVIDER_do_all(
        nullptr,
        [](OSSL_PROVIDER* provider, void* result) {
            static_cast<Names*>(result)->emplace_back(OSSL_PROVIDER_get0_name(provider));
            return 1;
        },
        &names);
    return names;
}

void useDigests() {
    for (const char* const id : digestIDs)
        EXPECT_FALSE(getDigest(id, makePattern(100)).empty()) << id;
}

void useCiphersAndDigests() {
    for (const CipherSizes& sizes : getRegisteredCiphers())
        EXPECT_TRUE(restoresItsInput(*getAnyCipher(sizes.id))) << sizes.id;
    EXPECT_TRUE(!hasIDEA || restoresItsInput(*getAnyCipher("ideacbc")));
    useDigests();
}

} // namespace

TEST(HostContextDeathTest, CiphersAndDigests_WithOnlyTheNullProviderOfTheHost_Work) {
    expectInNewProcess([] {
        ASSERT_NE(OSSL_PROVIDER_load(nullptr, "null"), nullptr);
        useCiphersAndDigests();
        EXPECT_THAT(getHostProviders(), testing::ElementsAre("null"));
    });
}

TEST(HostContextDeathTest, EveryFamily_WithoutAnyProviderLoaded_LeavesTheLegacyProviderAndTheDefaultContextToTheHost) {
    expectInNewProcess([] {
        OSSL_LIB_CTX* const before = OSSL_LIB_CTX_set0_default(nullptr);
        useCiphersAndDigests();
        sign(sarn::createRSA_SHA1(), readKey("rsa2048"), toBytes("data"));
        Buffer hmac;
        sarn::calcHMAC_SHA1(hmac, "data", 4, "key", 3);
        EXPECT_EQ(OSSL_PROVIDER_available(nullptr, "legacy"), 0);
        EXPECT_THAT(getHostProviders(), testing::ElementsAre("default"));
        EXPECT_EQ(EVP_default_properties_is_fips_enabled(nullptr), 0);
        EXPECT_EQ(OSSL_LIB_CTX_set0_default(nullptr), before);
    });
}

TEST(HostContextDeathTest, ProvidersThatTheHostLoaded_StayLoaded) {
    expectInNewProcess([] {
        OSSL_PROVIDER* const provider = OSSL_PROVIDER_load(nullptr, "legacy");
        ASSERT_NE(provider, nullptr);
        useCiphersAndDigests();
        EXPECT_THAT(getHostProviders(), testing::ElementsAre("legacy"));
        EXPECT_EQ(OSSL_PROVIDER_unload(provider), 1);
        useCiphersAndDigests();
    });
}

/// libcrypto looks for its modules in an empty folder.
TEST(MissingLegacyModuleDeathTest, LegacyCiphers_AreFoundKnowTheirSizesRaiseTheInitErrorAndAreLoggedOnce_AllElseWorks) {
    const TempFolder empty;
    ASSERT_EQ(setenv("OPENSSL_MODULES", empty.getNative().c_str(), 1), 0);
    expectInNewProcess([] {
        const std::string logged = "cannot load its legacy provider, so ";
        const LogCapture log;
        EXPECT_TRUE(restoresItsInput(*getAnyCipher("aes256cbc")));
        EXPECT_TRUE(restoresItsInput(*getAnyCipher("aes128cbc")));
        useDigests();
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
