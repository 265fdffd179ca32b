// SPDX-License-Identifier: Apache-2.0
/// \file
/// Mutexes that know their owner.
#pragma once

#include "ul/base.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace ul {

/// A lock.
class UL_EXPORT IMutex : public virtual IBase {
public:
    ~IMutex() override;
    /// Waits until the lock is free and takes it.
    virtual void lock() = 0;
    /// Gives the lock back.
    virtual void unlock() = 0;
};

/// A recursive mutex: the thread that holds it may lock it again and unlocks it as often.
class UL_EXPORT CMutex : public CBase, public virtual IMutex {
public:
    /// A mutex that nobody holds.
    CMutex() noexcept;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;
    ~CMutex() override;

    /// Waits until no other thread holds the mutex and takes it.
    void lock() override;
    /// Takes the mutex unless another thread holds it. Returns whether the calling thread holds it now.
    bool tryLock();
    /// \throws CError "Mutex is not locked by the calling thread." if it is not; the mutex is unchanged then.
    void unlock() override;

private:
    std::mutex m_mutex;
    // 0 while nobody holds the mutex. Only the owner ever finds its own id here, so a relaxed read is enough.
    std::atomic<std::uint64_t> m_owner{0};
    int m_depth = 0;
};

/// Holds a mutex from construction to destruction.
class UL_EXPORT CMutexLock {
public:
    /// Locks `mutex`, which must outlive this object.
    explicit CMutexLock(IMutex& mutex) : CMutexLock(&mutex) {}
    /// Locks nothing if `mutex` is null.
    explicit CMutexLock(IMutex* mutex);
    CMutexLock(const CMutexLock&) = delete;
    CMutexLock& operator=(const CMutexLock&) = delete;
    /// Unlocks it.
    ~CMutexLock();

private:
    IMutex* m_mutex;
};

} // namespace ul
