// SPDX-License-Identifier: Apache-2.0
// Keys, passwords and plaintexts stand nowhere in the process once their holders have gone: after each success, and
// after the failure of each allocation and of each call of a dependency on the way.
#include "failures/injection.h"
#include "failures/secret_uses.h"
#include "support/log_capture.h"

#include "ul/buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>

namespace sarn_test {

namespace {

/// Runs it, whatever comes of it.
void runAnyway(const SecretUse& use) {
    try {
        use.run();
    } catch (const std::exception&) {
        // That is a way out, too.
    }
}

class SecretUses : public testing::TestWithParam<SecretUse> {
protected:
    void SetUp() override { runAnyway(GetParam()); }

    void expectGone(const std::string& when) {
        for (const std::string& place : findInMemory(GetParam().secrets())) {
            if (place != "[stack]" || !GetParam().mayStayOnTheStack)
                ADD_FAILURE() << "the secret stands in " << place << " " << when;
        }
    }
};

} // namespace

TEST_P(SecretUses, AreGoneOnEveryWayOut) {
    const LogCapture log;
    expectGone("after a success");
    for (const bool ofAllocations : {false, true}) {
        for (int index = 0; !HasFailure(); ++index) {
            std::string failed;
            {
                const Injection injection(ofAllocations, index, Injection::Duration::Once);
                runAnyway(GetParam());
                if (!injection.hasHappened())
                    break;
                failed = injection.getFirst().name;
            }
            expectGone("after call " + std::to_string(index) + ", " + failed + ", failed");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, SecretUses, testing::ValuesIn(getSecretUses()), getRowName<SecretUse>);

TEST(SecretsSearch, ALineOfAKeyThatIsThere_IsFound) {
    ASSERT_GT(getKeyCanaries().size(), 40u) << "two for each line";
    EXPECT_EQ(findInMemory(getKeyCanaries()), std::vector<std::string>());
    {
        const KeyText key;
        EXPECT_FALSE(findInMemory(getKeyCanaries()).empty());
    }
    EXPECT_EQ(findInMemory(getKeyCanaries()), std::vector<std::string>());
}

TEST(SecretsSearch, ASecretThatIsThere_IsFound) {
    // One of its own: what this test leaves behind is no concern of the others.
    const Canary another(3);
    using Key = ul::TCryptBuffer<unsigned char>;
    Key key(Canary::size, -1);
    another.write(key.getData());
    EXPECT_FALSE(findInMemory({another}).empty());
    // Also half of it, within other bytes.
    Key half(100, -1);
    std::copy_n(key.getData() + 16, 16, half.getData() + 33);
    key = Key();
    const std::vector<std::string> places = findInMemory({another});
    EXPECT_NE(std::find(places.begin(), places.end(), "[heap]"), places.end());
    half = Key();
}

} // namespace sarn_test
