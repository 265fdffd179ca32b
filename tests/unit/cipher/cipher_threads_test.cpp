// SPDX-License-Identifier: Apache-2.0
// Ciphers under many threads. The thread sanitizer's build runs the same tests.
#include "support/aes256.h"
#include "support/threads.h"

#include "ul/random.h"

#include <atomic>
#include <chrono>

namespace sarn_test {

TEST(CipherThreads, OneCipher_UsedByEightThreads_GivesEachItsOwnResult) {
    runOnThreads(8, [](int number) {
        const Bytes data = makePattern(100 + number);
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(runAES256(decrypting, runAES256(encrypting, data, nullptr), nullptr), data);
    });
}

TEST(CipherThreads, EncryptWithoutIv_WaitsForTheGlobalGeneratorsMutex) {
    std::atomic<bool> isDrawn{false};
    std::thread other;
    {
        const ul::CMutexLock lock(ul::CMTRand::getGlobalInstanceMutex().get());
        other = std::thread([&] {
            runAES256(encrypting, toBytes("data"));
            runAES256(encrypting, toBytes("data"), nullptr);
            isDrawn = true;
        });
        // Gives the thread time to do what it must not: more of it finds more, less of it fails nothing.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(isDrawn);
    }
    other.join();
    EXPECT_TRUE(isDrawn);
}

} // namespace sarn_test
