// SPDX-License-Identifier: Apache-2.0
#include "frame/global_instance.h"

#include "ul/base.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

namespace sarn_test {

namespace {

/// Counts its living objects and those that were ever begun, and refuses to be constructed as often as `failures` says.
/// `Tag` keeps the tests apart.
template <int Tag>
class Instance : public ul::CBase {
public:
    Instance() {
        ++constructions;
        if (failures > 0) {
            --failures;
            throw std::runtime_error("not yet");
        }
        ++living;
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;
    ~Instance() override { --living; }

    static inline int constructions = 0;
    static inline int living = 0;
    static inline int failures = 0;
};

} // namespace

TEST(GetInstance, WhoseConstructorThrows_PassesTheErrorOnAndTriesAgain) {
    using Throwing = Instance<1>;
    static ul::CSafeGlobalSlot slot;
    Throwing::failures = 2;
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW(sarn::getInstance<Throwing>(slot), std::runtime_error);
    EXPECT_TRUE(sarn::getInstance<Throwing>(slot));
    EXPECT_EQ(Throwing::constructions, 3);
    slot.clear();
}

TEST(GetInstance, TheSlot_OwnsTheOnlyReference) {
    using Counted = Instance<3>;
    static ul::CSafeGlobalSlot slot;
    {
        const ul::P<Counted> copy = sarn::getInstance<Counted>(slot);
        EXPECT_EQ(copy, sarn::getInstance<Counted>(slot));
    }
    EXPECT_EQ(Counted::living, 1);
    slot.clear();
    EXPECT_EQ(Counted::living, 0);
}

TEST(GetInstance, InstanceThatTheHostHolds_OutlivesTheSlot) {
    using Held = Instance<4>;
    static ul::CSafeGlobalSlot slot;
    ul::P<Held> held = sarn::getInstance<Held>(slot);
    slot.clear();
    EXPECT_EQ(Held::living, 1);
    held = nullptr;
    EXPECT_EQ(Held::living, 0);
}

TEST(DestroyInstance, OfNull_DoesNothing) {
    sarn::destroyInstance<Instance<5>>(nullptr);
}

TEST(DestroyInstanceDeathTest, WhoseReleaseThrows_EndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct Throwing : ul::CBase {
        void deleteThis() override { throw std::runtime_error("cannot end"); }
    };
    EXPECT_DEATH(
        {
            try {
                sarn::destroyInstance<Throwing>(sarn::createInstance<Throwing>());
            } catch (const std::exception&) {
                std::exit(0);
            }
        },
        "");
}

} // namespace sarn_test
