// SPDX-License-Identifier: Apache-2.0
// Ciphers and the registry under many threads. The thread sanitizer's build runs the same tests.
#include "support/cipher_test_data.h"

#include "ul/random.h"

#include <atomic>
#include <chrono>
#include <functional>
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

/// Gives the other threads time to do what they must not: more of it finds more, less of it fails nothing.
void pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

/// Runs `action` while it is asked for its name, by which it can be looked up.
class AskedCipher : public sarn::CCipher_Null {
public:
    explicit AskedCipher(std::function<void()> action) : m_action(std::move(action)) {}
    ul::String getID() override {
        m_action();
        return "asked";
    }

private:
    std::function<void()> m_action;
};

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

TEST(CipherThreads, FindCipher_WhileAnotherThreadRegisters_WaitsUntilItHas) {
    sarn::CCipherManager manager;
    std::thread other;
    bool isFound = false;
    const auto cipher = ul::make<AskedCipher>([&] {
        other = std::thread([&] { isFound = static_cast<bool>(manager.findCipher("asked")); });
        pause();
    });
    manager.addCipher(cipher.get());
    other.join();
    EXPECT_TRUE(isFound);
}

TEST(CipherThreads, Dispose_WhileAnotherThreadRegisters_DoesNotWaitForIt) {
    struct ManagerAccess : sarn::CCipherManager {
        using sarn::CCipherManager::dispose;
    };
    ManagerAccess manager;
    std::atomic<bool> isAsked{false};
    std::atomic<bool> isDisposed{false};
    const auto cipher = ul::make<AskedCipher>([&] {
        isAsked = true;
        while (!isDisposed)
            std::this_thread::yield();
    });
    std::thread other([&] { manager.addCipher(cipher.get()); });
    while (!isAsked)
        std::this_thread::yield();
    manager.dispose();
    isDisposed = true;
    other.join();
    EXPECT_FALSE(manager.findCipher("null"));
    EXPECT_TRUE(manager.findCipher("asked"));
}

TEST(CipherThreads, EncryptWithoutIv_WaitsForTheGlobalGeneratorsMutex) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("aes256cbc");
    const TestKey key(32);
    const Bytes iv(16);
    std::atomic<bool> isDrawn{false};
    std::thread other;
    {
        const ul::CMutexLock lock(ul::CMTRand::getGlobalInstanceMutex().get());
        other = std::thread([&] {
            ul::TBuffer<unsigned char> out;
            cipher->encrypt(key, "data", 4, out, false, iv.data());
            cipher->encrypt(key, "data", 4, out, false, nullptr);
            isDrawn = true;
        });
        pause();
        EXPECT_FALSE(isDrawn);
    }
    other.join();
    EXPECT_TRUE(isDrawn);
}

} // namespace sarn_test
