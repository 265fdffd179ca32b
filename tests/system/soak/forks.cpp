// SPDX-License-Identifier: Apache-2.0
#include "system/soak/soak.h"

#include "ul/random.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace sarn_test {

namespace {

constexpr unsigned threadCount = 8;

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
    // Other threads may have held any lock at the fork, the allocator's too, so the child does nothing else.
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

/// Threads that use all that is shared, and draw random bytes, until the end.
class BusyThreads {
public:
    explicit BusyThreads(const Shared& shared) {
        for (unsigned i = 0; i < threadCount; ++i)
            m_threads.emplace_back([this, &shared, i] { work(shared, i); });
    }
    BusyThreads(const BusyThreads&) = delete;
    BusyThreads& operator=(const BusyThreads&) = delete;
    ~BusyThreads() { stop(); }

    /// Stops them. Returns what they drew.
    std::vector<IV>& stop() {
        m_isOver = true;
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
        return m_ivs;
    }

private:
    void work(const Shared& shared, unsigned seed) {
        std::mt19937 random(seed);
        std::vector<IV> ivs;
        while (!m_isOver) {
            shared.use(random, ivs);
            // Not each time: what they draw is kept, and a process forks the slower the more memory it has.
            if (random() % 8 == 0)
                ivs.push_back(draw());
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ivs.insert(m_ivs.end(), ivs.begin(), ivs.end());
    }

    std::atomic<bool> m_isOver{false};
    std::mutex m_mutex;
    std::vector<IV> m_ivs;
    std::vector<std::thread> m_threads;
};

} // namespace

std::size_t runForks(int count) {
    const Shared shared;
    std::mt19937 random(1);
    std::vector<IV> all{draw()};
    BusyThreads threads(shared);
    for (int i = 0; i < count; ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
        const IVs ivs = forkOnce();
        all.insert(all.end(), ivs.begin(), ivs.end());
    }
    const std::vector<IV>& own = threads.stop();
    all.insert(all.end(), own.begin(), own.end());
    checkNoneIsRepeated(all);
    return all.size();
}

} // namespace sarn_test
