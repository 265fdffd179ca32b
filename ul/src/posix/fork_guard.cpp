// SPDX-License-Identifier: Apache-2.0
#include "fork_guard.h"

#include <chrono>
#include <mutex>
#include <new>
#include <thread>

#include <pthread.h>

namespace ul {

namespace {

/// Guards the list. While the process is copied the thread that forks holds it.
std::mutex listMutex;
CForkSafeMutex* firstMutex = nullptr;

/// What has locks of other kinds.
bool tryHoldOthers() {
    if (!tryHoldDelays())
        return false;
    if (tryHoldCreation()) {
        if (tryHoldLog())
            return true;
        letCreationGo();
    }
    letDelaysGo();
    return false;
}

} // namespace

bool ForkGuard::start() noexcept {
    static const bool isRegistered = ::pthread_atfork(hold, letGo, letGo) == 0;
    return isRegistered;
}

void ForkGuard::add(CForkSafeMutex& mutex) {
    if (!start())
        throw std::bad_alloc();
    const std::lock_guard<std::mutex> lock(listMutex);
    mutex.m_next = firstMutex;
    if (firstMutex)
        firstMutex->m_previous = &mutex;
    firstMutex = &mutex;
}

void ForkGuard::remove(CForkSafeMutex& mutex) noexcept {
    const std::lock_guard<std::mutex> lock(listMutex);
    (mutex.m_previous ? mutex.m_previous->m_next : firstMutex) = mutex.m_next;
    if (mutex.m_next)
        mutex.m_next->m_previous = mutex.m_previous;
}

void ForkGuard::hold() {
    // Their holders may be waiting for one of the others, or for the list: nothing is held while waiting.
    for (;;) {
        listMutex.lock();
        if (tryHoldMutexes())
            return;
        listMutex.unlock();
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
}

bool ForkGuard::tryHoldMutexes() {
    CForkSafeMutex* mutex = firstMutex;
    while (mutex && mutex->tryLock())
        mutex = mutex->m_next;
    if (!mutex && tryHoldOthers())
        return true;
    for (CForkSafeMutex* held = firstMutex; held != mutex; held = held->m_next)
        held->unlock();
    return false;
}

void ForkGuard::letGo() {
    letLogGo();
    letCreationGo();
    letDelaysGo();
    for (CForkSafeMutex* mutex = firstMutex; mutex; mutex = mutex->m_next)
        mutex->unlock();
    listMutex.unlock();
}

} // namespace ul
