// SPDX-License-Identifier: Apache-2.0
// What a forked process finds: mutexes free, or held by the thread that forked.
#include "ul/fork_delay.h"
#include "ul/fork_safe_mutex.h"
#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

namespace {

/// Whether `check` holds in a forked process, which has five seconds for it.
bool holdsInChild(const std::function<bool()>& check) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(5);
        // Not by _exit(), where a sanitizer takes the threads that the child does not have for lost ones.
        ::syscall(SYS_exit_group, check() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// A thread that has a `Scope` over something for a moment. It has it when the constructor returns.
template <class Scope>
class Holder {
public:
    explicit Holder(std::function<std::unique_ptr<Scope>()> make)
        : m_thread([this, make] {
              const std::unique_ptr<Scope> scope = make();
              m_holds = true;
              std::this_thread::sleep_for(std::chrono::milliseconds(50));
              m_isOver = true;
          }) {
        while (!m_holds)
            std::this_thread::yield();
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() { m_thread.join(); }
    bool isOver() const { return m_isOver; }

private:
    std::atomic<bool> m_holds{false};
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

} // namespace

TEST(CForkSafeMutex, Fork_WaitsForTheThreadThatHoldsIt_AndTheChildFindsItFree) {
    ul::CForkSafeMutex first;
    ul::CForkSafeMutex second;
    const Holder<ul::CMutexLock> holder([&] { return std::make_unique<ul::CMutexLock>(first); });
    EXPECT_TRUE(holdsInChild([&] { return first.tryLock() && second.tryLock(); }));
    EXPECT_TRUE(holder.isOver());
    // In another thread: this one may lock what it holds.
    std::thread([&] {
        EXPECT_TRUE(first.tryLock() && second.tryLock()) << "the parent finds them free as well";
        first.unlock();
        second.unlock();
    }).join();
}

TEST(CForkSafeMutex, HeldByTheThreadThatForks_IsHeldByItInBothProcesses) {
    ul::CForkSafeMutex mutex;
    const ul::CMutexLock lock(mutex);
    EXPECT_TRUE(holdsInChild([&] {
        mutex.unlock();
        return mutex.tryLock();
    }));
    mutex.unlock();
    EXPECT_THROW(mutex.unlock(), std::exception) << "it was held once";
    mutex.lock();
}

TEST(CForkSafeMutex, Ended_IsWaitedForNoMore) {
    ul::P<ul::CForkSafeMutex> first = ul::make<ul::CForkSafeMutex>();
    ul::P<ul::CForkSafeMutex> second = ul::make<ul::CForkSafeMutex>();
    ul::P<ul::CForkSafeMutex> third = ul::make<ul::CForkSafeMutex>();
    second = nullptr;
    EXPECT_TRUE(holdsInChild([&] { return first->tryLock() && third->tryLock(); }));
    third = nullptr;
    first = nullptr;
    EXPECT_TRUE(holdsInChild([] { return true; }));
}

TEST(CForkDelay, Fork_WaitsForItsEndInAnotherThread) {
    const Holder<ul::CForkDelay> holder([] { return std::make_unique<ul::CForkDelay>(); });
    EXPECT_TRUE(holdsInChild([] {
        const ul::CForkDelay delay;
        return true;
    }));
    EXPECT_TRUE(holder.isOver());
}

TEST(CForkDelay, OfTheThreadThatForks_DoesNotKeepItFromDoingSo) {
    const ul::CForkDelay outer;
    const ul::CForkDelay inner;
    EXPECT_TRUE(holdsInChild([] {
        const ul::CForkDelay delay;
        return true;
    }));
}

} // namespace sarn_test
