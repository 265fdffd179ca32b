// SPDX-License-Identifier: Apache-2.0
// Private helpers: process-wide objects, and overlaps of bytes with a buffer.
#include "frame/global_instance.h"
#include "frame/overlap.h"
#include "support/expect.h"

#include <cstdlib>

namespace sarn_test {

namespace {

/// Counts its living objects. The next `failures` constructions fail.
class Instance : public ul::CBase {
public:
    Instance() {
        if (failures > 0) {
            --failures;
            throw std::runtime_error("not yet");
        }
        ++living;
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;
    ~Instance() override { --living; }

    static inline int living = 0;
    static inline int failures = 0;
};

ul::CSafeGlobalSlot slot;

} // namespace

TEST(GetInstance, WhoseConstructorThrows_PassesTheErrorOnAndTriesAgain) {
    Instance::failures = 2;
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW(sarn::getInstance<Instance>(slot), std::runtime_error);
    EXPECT_TRUE(sarn::getInstance<Instance>(slot));
    slot.clear();
}

TEST(GetInstance, TheSlot_OwnsOneReference_AndAnInstanceThatTheHostHoldsOutlivesIt) {
    ul::P<Instance> held = sarn::getInstance<Instance>(slot);
    EXPECT_EQ(held, sarn::getInstance<Instance>(slot));
    held = nullptr;
    EXPECT_EQ(Instance::living, 1);
    held = sarn::getInstance<Instance>(slot);
    slot.clear();
    EXPECT_EQ(Instance::living, 1);
    held = nullptr;
    EXPECT_EQ(Instance::living, 0);
}

TEST(DestroyInstance, OfNull_DoesNothing) {
    sarn::destroyInstance<Instance>(nullptr);
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

TEST(Overlaps, BytesBesideTheBlock_AreOutside) {
    const ul::TBuffer<unsigned char> buffer(16, -1);
    const unsigned char* const block = buffer.getData();
    EXPECT_TRUE(sarn::overlaps(block, 1, buffer));
    EXPECT_TRUE(sarn::overlaps(block + 15, 1, buffer));
    EXPECT_TRUE(sarn::overlaps(block - 1, 2, buffer));
    EXPECT_FALSE(sarn::overlaps(block + 16, 1, buffer));
    EXPECT_FALSE(sarn::overlaps(block - 1, 1, buffer));
}

TEST(Overlaps, NoBytesOrABufferWithoutABlock_OverlapNothing) {
    const ul::TBuffer<unsigned char> buffer(16, -1);
    EXPECT_FALSE(sarn::overlaps(buffer.getData() + 8, 0, buffer));
    EXPECT_FALSE(sarn::overlaps(buffer.getData(), 1, ul::TBuffer<unsigned char>()));
}

} // namespace sarn_test
