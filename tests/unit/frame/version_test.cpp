// SPDX-License-Identifier: Apache-2.0
#include "sarn/version.h"

#include <gtest/gtest.h>
#include <openssl/crypto.h>

#include <string>

namespace {

TEST(Version, OfTheLoadedLibraries_IsTheOneOfTheHeadersAndTheProject) {
    EXPECT_EQ(SARN_VERSION, sarn::getVersion());
    EXPECT_EQ(UL_VERSION, ul::getVersion());
    EXPECT_STREQ(SARN_PROJECT_VERSION, sarn::getVersionText());
    EXPECT_STREQ(SARN_PROJECT_VERSION, ul::getVersionText());
    const int number = sarn::getVersion();
    EXPECT_EQ(std::to_string(number / 10000) + "." + std::to_string(number / 100 % 100) + "." +
                  std::to_string(number % 100),
              sarn::getVersionText());
}

TEST(Version, OfLibcrypto_IsTheOneOfTheLoadedLibrary) {
    EXPECT_EQ(OpenSSL_version_num(), sarn::getLibcryptoVersion());
    EXPECT_STREQ(OpenSSL_version(OPENSSL_VERSION), sarn::getLibcryptoVersionText());
    EXPECT_EQ(std::string("OpenSSL "), std::string(sarn::getLibcryptoVersionText()).substr(0, 8));
}

} // namespace
