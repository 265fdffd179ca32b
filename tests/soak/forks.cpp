// SPDX-License-Identifier: Apache-2.0
#include "soak/forks.h"

#include "soak/operations.h"

#include "ul/log.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace sarn_soak {

namespace {

constexpr int threadCount = 8;
constexpr unsigned secondsOfAChild = 10;
constexpr int drawnByAChild = 8;

/// What a child does: uses all that is shared and tells which initialisation vectors it drew.
void runChild(const Shared& shared, int pipe, unsigned seed) noexcept {
    ::alarm(secondsOfAChild);
    try {
        std::mt19937 random(seed);
        std::vector<IV> ivs;
        for (int i = 0; i < drawnByAChild; ++i)
            ivs.push_back(shared.drawIV());
        std::vector<IV> others;
        for (int i = 0; i < 40; ++i)
            shared.use(random, others);
        ul::setLogHandler(ul::setLogHandler(ul::LogHandler()));
        const auto size = static_cast<ssize_t>(ivs.size() * sizeof(IV));
        ::_exit(::write(pipe, ivs.data(), static_cast<std::size_t>(size)) == size ? 0 : 1);
    } catch (...) {
        ::_exit(1);
    }
}

std::vector<IV> readIVs(int pipe) {
    std::vector<IV> ivs(drawnByAChild);
    const auto size = static_cast<ssize_t>(ivs.size() * sizeof(IV));
    if (::read(pipe, ivs.data(), static_cast<std::size_t>(size)) != size)
        throw std::runtime_error("a child drew no initialisation vectors");
    return ivs;
}

std::vector<IV> forkOnce(const Shared& shared, unsigned seed) {
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0)
        runChild(shared, ends[1], seed);
    ::close(ends[1]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? "a child hangs"
                                                                                    : "a child failed");
    std::vector<IV> ivs = readIVs(ends[0]);
    ::close(ends[0]);
    return ivs;
}

/// Threads that use all that is shared until the end.
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
            if (random() % 16 == 0)
                ul::setLogHandler(ul::LogHandler());
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
    // Each family has been used once: what libcrypto and the compiler set up at first use is no part of this.
    std::mt19937 random(1);
    std::vector<IV> all;
    for (int i = 0; i < 1000; ++i)
        shared.use(random, all);
    BusyThreads threads(shared);
    for (int i = 0; i < count; ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 300));
        const std::vector<IV> ivs = forkOnce(shared, static_cast<unsigned>(i));
        all.insert(all.end(), ivs.begin(), ivs.end());
    }
    const std::vector<IV>& own = threads.stop();
    all.insert(all.end(), own.begin(), own.end());
    checkNoneIsRepeated(all);
    return all.size();
}

} // namespace sarn_soak
