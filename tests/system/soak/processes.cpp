// SPDX-License-Identifier: Apache-2.0
#include "support/threads.h"
#include "system/soak/soak.h"

#include "sarn/digest.h"

#include "ul/random.h"

#include <chrono>
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

using IVs = std::array<IV, 8>;

IV draw() {
    IV iv;
    ul::CMTRand::getGlobal()->randData(iv.data(), static_cast<int>(iv.size()));
    return iv;
}

IVs forkOnce() {
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    // Another thread may have held any lock at the fork, even one of the allocator, so the child does nothing else.
    runInNewProcess([&] {
        IVs ivs;
        for (IV& iv : ivs)
            iv = draw();
        if (::write(ends[1], &ivs, sizeof ivs) != sizeof ivs)
            ::_exit(1);
    });
    ::close(ends[1]);
    IVs ivs;
    const ssize_t count = ::read(ends[0], &ivs, sizeof ivs);
    ::close(ends[0]);
    if (count != sizeof ivs)
        throw std::runtime_error("a child drew too few bytes");
    return ivs;
}

std::vector<IV> forkAtRandomMoments(int count) {
    std::mt19937 random(0);
    std::vector<IV> all{draw()};
    for (int i = 0; i < count; ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
        const IVs ivs = forkOnce();
        all.insert(all.end(), ivs.begin(), ivs.end());
    }
    return all;
}

std::vector<IV> useUntil(const std::atomic<bool>& isOver, const Shared& shared, int seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    std::vector<IV> all;
    while (!isOver) {
        shared.use(random, all);
        // Not each time: the bytes are kept, and a larger process forks more slowly.
        if (random() % 8 == 0)
            all.push_back(draw());
    }
    return all;
}

} // namespace

// This process never uses the library, so each child is like a program that has just started.

void runFirstUses(int count, int threadCount) {
    for (int i = 0; i < count; ++i)
        runInNewProcess([=] { useAtOnce(threadCount); });
}

void runEnds(int count) {
    for (int i = 0; i < count; ++i)
        runInNewProcess(endWhileOthersEncrypt);
}

std::size_t runForks(int count) {
    const Shared shared;
    std::atomic<bool> isOver{false};
    std::mutex mutex;
    std::vector<IV> all;
    // One thread forks while the others use the shared objects.
    runOnThreads(9, [&](int number) {
        struct End {
            ~End() { isOver = true; }
            std::atomic<bool>& isOver;
        } const end{isOver};
        const std::vector<IV> ivs = number == 0 ? forkAtRandomMoments(count) : useUntil(isOver, shared, number);
        const std::lock_guard<std::mutex> lock(mutex);
        all.insert(all.end(), ivs.begin(), ivs.end());
    });
    checkNoneIsRepeated(all);
    return all.size();
}

} // namespace sarn_test
