// SPDX-License-Identifier: Apache-2.0
#include "ul/mutex.h"

#include "errors/raise.h"
#include "threads/thread_identity.h"

#include "ul/log.h"

namespace ul {

IMutex::~IMutex() = default;

CMutex::CMutex() noexcept = default;

CMutex::~CMutex() = default;

void CMutex::lock() {
    const std::uint64_t caller = getThreadIdentity();
    if (m_owner.load(std::memory_order_relaxed) != caller) {
        m_mutex.lock();
        m_owner.store(caller, std::memory_order_relaxed);
    }
    ++m_depth;
}

bool CMutex::tryLock() {
    const std::uint64_t caller = getThreadIdentity();
    if (m_owner.load(std::memory_order_relaxed) != caller) {
        if (!m_mutex.try_lock())
            return false;
        m_owner.store(caller, std::memory_order_relaxed);
    }
    ++m_depth;
    return true;
}

void CMutex::unlock() {
    if (m_owner.load(std::memory_order_relaxed) != getThreadIdentity())
        raiseError("Mutex is not locked by the calling thread.");
    if (--m_depth == 0) {
        m_owner.store(0, std::memory_order_relaxed);
        m_mutex.unlock();
    }
}

CMutexLock::CMutexLock(IMutex* mutex) : m_mutex(mutex) {
    if (m_mutex)
        m_mutex->lock();
}

CMutexLock::~CMutexLock() {
    if (!m_mutex)
        return;
    try {
        m_mutex->unlock();
    } catch (std::exception& error) {
        onExceptionInDestructorIgnored("ul::CMutexLock", error, true);
    }
}

} // namespace ul
