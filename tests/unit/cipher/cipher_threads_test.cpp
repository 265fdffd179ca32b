// SPDX-License-Identifier: Apache-2.0
// Ciphers and the registry under many threads. The thread sanitizer's build runs the same tests.
#include "support/cipher_test_data.h"

#include <atomic>
#include <thread>

namespace sarn_test {

namespace {

constexpr int threadCount = 8;

template <class Work>
void runThreads(Work work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST(CipherThreads, OneCipher_UsedByEightThreads_GivesEachItsOwnResult) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    std::atomic<int> wrong{0};
    runThreads([&](int number) {
        const TestKey key(32);
        const Bytes data = makePattern(100 + number);
        for (int i = 0; i < 200; ++i) {
            ul::TBuffer<unsigned char> encrypted;
            ul::TBuffer<unsigned char> decrypted;
            cipher->encrypt(key, data.data(), static_cast<int>(data.size()), encrypted, false, nullptr);
            cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
            wrong += toBytes(decrypted) != data ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(CipherThreads, TheRegistry_UsedByEightThreads_NeverLosesACipher) {
    sarn::CCipherManager manager;
    std::atomic<int> wrong{0};
    runThreads([&](int) {
        for (int i = 0; i < 500; ++i) {
            manager.addCipher(ul::make<sarn::CCipher_Null>().get());
            const ul::P<sarn::ICipher> found = manager.findCipher("null");
            wrong += !found || manager.getCipher("aes128cbc")->getKeySize() != 16 ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0);
}

} // namespace sarn_test
