// SPDX-License-Identifier: Apache-2.0
/// \file
/// Mutexes that know their owner.
#pragma once

#include "ul/base.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace ul {

/// A lock, owned by one thread at a time.
class UL_EXPORT IMutex : public virtual IBase {
public:
    ~IMutex() override;
    /// Waits until the lock is free, then takes it.
    virtual void lock() = 0;
    /// Releases the lock.
    virtual void unlock() = 0;
};

/// A recursive mutex: the thread that holds it may lock it again, and unlocks it as many times.
class UL_EXPORT CMutex : public CBase, public virtual IMutex {
public:
    /// Creates an unlocked mutex.
    CMutex() noexcept;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;
    ~CMutex() override;

    /// Waits until no other thread holds the mutex, then takes it.
    void lock() override;
    /// Takes the mutex unless another thread holds it. Returns whether the calling thread now holds it.
    bool tryLock();
    /// Releases the mutex once.
    /// \throws CError "Mutex is not locked by the calling thread."; the mutex is unchanged then.
    void unlock() override;

private:
    std::mutex m_mutex;
    // 0 while the mutex is free. Only the owner ever finds its own id here, so a relaxed read suffices.
    std::atomic<std::uint64_t> m_owner{0};
    int m_depth = 0;
};

/// Locks a mutex for the lifetime of this object.
class UL_EXPORT CMutexLock {
public:
    /// Locks `mutex`. Requires: `mutex` outlives this object.
    explicit CMutexLock(IMutex& mutex) : CMutexLock(&mutex) {}
    /// Locks `mutex`, or nothing if it is null. Requires: `mutex` outlives this object.
    explicit CMutexLock(IMutex* mutex);
    CMutexLock(const CMutexLock&) = delete;
    CMutexLock& operator=(const CMutexLock&) = delete;
    /// Unlocks the mutex.
    ~CMutexLock();

private:
    IMutex* m_mutex;
};

} // namespace ul
