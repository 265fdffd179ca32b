// SPDX-License-Identifier: Apache-2.0
#include "sarn/version.h"

#include <gtest/gtest.h>
#include <openssl/crypto.h>

#include <string>

namespace {

TEST(Version, OfTheLoadedLibraries_IsThatOfTheHeaders) {
    EXPECT_EQ(SARN_VERSION, sarn::getVersion());
    EXPECT_EQ(UL_VERSION, ul::getVersion());
}

TEST(Version, AsText_IsThatOfTheProject) {
    EXPECT_STREQ(SARN_PROJECT_VERSION, sarn::getVersionText());
    EXPECT_STREQ(SARN_PROJECT_VERSION, ul::getVersionText());
}

TEST(Version, AsNumber_HasTwoDigitsForEachPartBehindTheFirst) {
    const std::string text = std::to_string(sarn::getVersion() / 10000) + "." +
                             std::to_string(sarn::getVersion() / 100 % 100) + "." +
                             std::to_string(sarn::getVersion() % 100);
    EXPECT_EQ(text, sarn::getVersionText());
}

TEST(Version, OfLibcrypto_IsThatOfTheOneThatWasLoaded) {
    EXPECT_EQ(OpenSSL_version_num(), sarn::getLibcryptoVersion());
    EXPECT_STREQ(OpenSSL_version(OPENSSL_VERSION), sarn::getLibcryptoVersionText());
    EXPECT_EQ(std::string("OpenSSL "), std::string(sarn::getLibcryptoVersionText()).substr(0, 8));
}

} // namespace
