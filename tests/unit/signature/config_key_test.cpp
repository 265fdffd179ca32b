// SPDX-License-Identifier: Apache-2.0
// What a key of a signed configuration names.
#include "support/print.h"

#include "sarn/signed_config.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

/// Reaches what hosts may derive from.
struct ConfigAccess : sarn::CSignedConfig {
    using sarn::CSignedConfig::splitKey;
};

} // namespace

TEST(SignedConfigKeys, SplitKey_TakesOneLeadingSlashAndSplitsAtTheNext) {
    const char* const keys[][3] = {{"/a/b", "a", "b"}, {"a/b", "a", "b"}, {"/a/b/c", "a", "b/c"}, {"b", "/", "b"},
                                   {"/b", "/", "b"},   {"//b", "", "b"},  {"a/", "a", ""},        {"", "/", ""},
                                   {"/", "/", ""},     {"///b", "", "/b"}};
    for (const auto& [key, expectedSection, expectedName] : keys) {
        ul::String section;
        ul::String name;
        ConfigAccess::splitKey(key, section, name);
        EXPECT_EQ(section, expectedSection) << key;
        EXPECT_EQ(name, expectedName) << key;
    }
}

} // namespace sarn_test
