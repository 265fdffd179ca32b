// SPDX-License-Identifier: Apache-2.0
// This process never uses the library, so each child is like a program that has just started.
#include "support/threads.h"
#include "system/soak/soak.h"

#include "sarn/digest.h"
#include "sarn/openssl_init.h"

#include "ul/random.h"

#include <atomic>
#include <cstdlib>

namespace sarn_test {

namespace {

using Addresses = std::array<const void*, 7>;

Addresses getAll() {
    return {sarn::CCipherManager::get().get(),
            sarn::CDigestManager::get().get(),
            sarn::COpenSSLInit::get().get(),
            sarn::COpenSSLInit::CThreadStuff::get().get(),
            sarn::COpenSSLInit::CCleaner::get().get(),
            ul::CMTRand::getGlobal().get(),
            ul::CMTRand::getGlobalInstanceMutex().get()};
}

void useAtOnce(int threadCount) {
    std::vector<Addresses> seen(static_cast<std::size_t>(threadCount));
    runOnThreads(threadCount, [&](int number) {
        seen[static_cast<std::size_t>(number)] = getAll();
        Shared().drawIV();
    });
    for (const Addresses& some : seen) {
        if (some != seen[0])
            throw std::runtime_error("a process-wide object exists twice");
    }
}

[[noreturn]] void endWhileOthersEncrypt() {
    constexpr int threadCount = 4;
    // Never destroyed: the threads use both until the process has ended.
    static const Shared& shared = *new Shared;
    static std::atomic<int> encrypted{0};
    for (int i = 0; i < threadCount; ++i)
        std::thread([] {
            for (;;) {
                shared.drawIV();
                ++encrypted;
            }
        }).detach();
    while (encrypted < 2 * threadCount)
        std::this_thread::yield();
    // As when main returns.
    std::exit(0);
}

} // namespace

void runFirstUses(int count, int threadCount) {
    for (int i = 0; i < count; ++i)
        runInNewProcess([=] { useAtOnce(threadCount); });
}

void runEnds(int count) {
    for (int i = 0; i < count; ++i)
        runInNewProcess(endWhileOthersEncrypt);
}

} // namespace sarn_test
