// SPDX-License-Identifier: Apache-2.0
#include "support/threads.h"
#include "system/soak/soak.h"

#include "ul/random.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace sarn_test {

namespace {

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
