// SPDX-License-Identifier: Apache-2.0
#include "frame/global_instance.h"
#include "support/expect.h"

#include "ul/base.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace sarn_test {

namespace {

/// An instance whose constructor throws as often as it is told to. `Tag` keeps the tests' slots apart.
template <int Tag>
class Instance : public ul::CBase {
public:
    Instance() {
        ++s_constructions;
        if (s_failures > 0) {
            --s_failures;
            throw std::runtime_error("not yet");
        }
    }

    static inline std::atomic<int> s_constructions{0};
    static inline int s_failures = 0;
};

} // namespace

TEST(TGlobalInstance, Get_WhoseConstructorThrows_PassesTheErrorOnAndTriesAgain) {
    using Throwing = Instance<1>;
    Throwing::s_failures = 2;
    EXPECT_THROW(sarn::TGlobalInstance<Throwing>::get(), std::runtime_error);
    EXPECT_THROW(sarn::TGlobalInstance<Throwing>::get(), std::runtime_error);
    EXPECT_TRUE(sarn::TGlobalInstance<Throwing>::get());
    EXPECT_EQ(Throwing::s_constructions, 3);
}

TEST(TGlobalInstance, Get_FromManyThreadsAtOnce_CreatesOneInstance) {
    using Shared = Instance<2>;
    std::atomic<int> different{0};
    std::vector<std::thread> threads;
    std::atomic<const ul::P<Shared>*> first{nullptr};
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            const ul::P<Shared>* expected = nullptr;
            const ul::P<Shared>* const mine = &sarn::TGlobalInstance<Shared>::get();
            if (!first.compare_exchange_strong(expected, mine) && expected != mine)
                ++different;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(different, 0);
    EXPECT_EQ(Shared::s_constructions, 1);
}

TEST(TGlobalInstance, Get_HoldsOneReferenceAndNoMore) {
    using Counted = Instance<3>;
    // A copy of the pointer may come and go without ending the instance, which the slot owns.
    {
        const ul::P<Counted> copy = sarn::TGlobalInstance<Counted>::get();
        EXPECT_TRUE(copy);
    }
    EXPECT_EQ(sarn::TGlobalInstance<Counted>::get().get(), sarn::TGlobalInstance<Counted>::get().get());
    EXPECT_EQ(Counted::s_constructions, 1);
}

} // namespace sarn_test
