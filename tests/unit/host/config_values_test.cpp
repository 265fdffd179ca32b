// SPDX-License-Identifier: Apache-2.0
#include "support/signing.h"
#include "support/temp_folder.h"

#include "sarn/host.h"

#include <cstdint>
#include <limits>

namespace sarn_test {

namespace {

class ConfigValues : public testing::Test {
protected:
    sarn::CSignedConfig makeConfig(const std::string& text) const {
        const ul::CWindowsPath path = folder.write("a.ini", text);
        writeSignatureFile(path);
        return sarn::CSignedConfig(path, readPublicKey("rsa2048"), false);
    }

    const TempFolder folder;
};

} // namespace

TEST_F(ConfigValues, OfAKey_AreTheValuesOfTheDocumentedOperation) {
    sarn::CSignedConfig config = makeConfig("top=1\n[a]\nb=text\n\xC3\xA4=\xE2\x82\xAC\nempty=\n");
    EXPECT_EQ(sarn::findValue(config, "/a/b").value().toUTF8(), config.getValue("/a/b").toUTF8());
    EXPECT_EQ(sarn::findValue(config, "/a/\xC3\xA4").value().toUTF8(), "\xE2\x82\xAC");
    EXPECT_TRUE(sarn::findValue(config, "/a/empty").value().isEmpty());
    EXPECT_FALSE(sarn::findValue(config, "/a/none"));
}

TEST_F(ConfigValues, WithADefault_AreTheDefaultIfTheKeyIsMissing) {
    const sarn::CSignedConfig config = makeConfig("[a]\nb=text\nempty=\n");
    EXPECT_EQ(sarn::valueOr(config, "/a/b", "other").toUTF8(), "text");
    EXPECT_EQ(sarn::valueOr(config, "/a/empty", "other").toUTF8(), "");
    EXPECT_EQ(sarn::valueOr(config, "/a/none", "\xC3\xA4").toUTF8(), "\xC3\xA4");
    EXPECT_EQ(sarn::valueOr(config, std::string("/a/none"), ul::text("x")).toUTF8(), "x");
}

TEST_F(ConfigValues, ThatAreNumbers_AreConverted) {
    const sarn::CSignedConfig config = makeConfig("[a]\nzero=0\nmost=2147483647\nleast=-2147483648\nbyte=255\n");
    EXPECT_EQ(sarn::valueOr(config, "/a/zero", 7), 0);
    EXPECT_EQ(sarn::valueOr(config, "/a/most", 7), std::numeric_limits<int>::max());
    EXPECT_EQ(sarn::valueOr(config, "/a/least", 7), std::numeric_limits<int>::min());
    EXPECT_EQ(sarn::valueOr(config, "/a/byte", std::uint8_t{7}), 255);
    EXPECT_EQ(sarn::valueOr(config, "/a/none", 7L), 7L);
}

TEST_F(ConfigValues, ThatAreNotNumbersOrDoNotFit_AreRefusedByName) {
    const sarn::CSignedConfig config =
        makeConfig("[a]\nv0=12abc\nv1=\nv2=2147483648\nv3=1.5\nv4=0x10\nv5=+1\nv6=1 2\nv7=\xD9\xA1\nv8=--1\nv9=1e3\n");
    for (int i = 0; i < 10; ++i) {
        const std::string key = "/a/v" + std::to_string(i);
        const std::string message = "Config value '" + key + "' is not a number that fits.";
        expectError(message.c_str(), {"value", sarn::findValue(config, key)->toUTF8()},
                    [&] { sarn::valueOr(config, key, 1); });
    }
    EXPECT_EQ(sarn::valueOr(config, "/a/v2", 1u), 2147483648u);
}

TEST_F(ConfigValues, Keys_InARangeBasedLoop_AreTheKeysOfTheDocumentedOperation) {
    const sarn::CSignedConfig config = makeConfig("top=1\n[a]\nb=2\nc=3\n[d]\ne=4\n");
    std::string all;
    for (const ul::String& key : sarn::getKeys(config))
        all += key.toUTF8() + ";";
    for (const ul::String& key : sarn::getKeys(config, "/a/"))
        all += key.toUTF8() + ";";
    EXPECT_EQ(all, "//top;/a/b;/a/c;/d/e;/a/b;/a/c;");
}

} // namespace sarn_test
