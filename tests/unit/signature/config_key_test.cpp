// SPDX-License-Identifier: Apache-2.0
// What a key of a signed configuration names.
#include "sarn/signed_config.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace sarn_test {

namespace {

/// Reaches what hosts may derive from.
struct ConfigAccess : sarn::CSignedConfig {
    using sarn::CSignedConfig::splitKey;
};

std::pair<std::string, std::string> split(const char* key) {
    ul::String section;
    ul::String name;
    ConfigAccess::splitKey(key, section, name);
    return {section.toUTF8(), name.toUTF8()};
}

using Parts = std::pair<std::string, std::string>;

} // namespace

TEST(SignedConfigKeys, SplitKey_TakesOneLeadingSlashAndSplitsAtTheNext) {
    EXPECT_EQ(split("/a/b"), Parts("a", "b"));
    EXPECT_EQ(split("a/b"), Parts("a", "b"));
    EXPECT_EQ(split("/a/b/c"), Parts("a", "b/c"));
    EXPECT_EQ(split("b"), Parts("/", "b"));
    EXPECT_EQ(split("/b"), Parts("/", "b"));
    EXPECT_EQ(split("//b"), Parts("", "b"));
    EXPECT_EQ(split("a/"), Parts("a", ""));
    EXPECT_EQ(split(""), Parts("/", ""));
    EXPECT_EQ(split("/"), Parts("/", ""));
    EXPECT_EQ(split("///b"), Parts("", "/b"));
}

} // namespace sarn_test
