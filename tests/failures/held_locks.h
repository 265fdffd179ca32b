// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failures/call_watch.h"

#include <map>
#include <thread>
#include <utility>

namespace sarn_test {

/// The locks that threads hold through ul::CMutexLock.
class HeldLocks {
public:
    /// The names of its constructor and its destructor among the imported calls.
    static constexpr char lock[] = "_ZN2ul10CMutexLockC1EPNS_6IMutexE";
    static constexpr char unlock[] = "_ZN2ul10CMutexLockD1Ev";

    explicit HeldLocks(CallWatch& watch) {
        watch.after(lock, [this](const Call& call) {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_holders[call.arguments[0]] = {call.arguments[1], std::this_thread::get_id()};
        });
        watch.before(unlock, [this](const Call& call) {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_holders.erase(call.arguments[0]);
        });
    }

    /// Whether another thread holds the mutex that a call is about to lock.
    bool isHeldByAnother(const Call& call) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        for (const auto& [scope, holder] : m_holders) {
            if (holder.first == call.arguments[1] && holder.second != std::this_thread::get_id())
                return true;
        }
        return false;
    }

private:
    std::mutex m_mutex;
    // Mutex and thread by the address of the lock object.
    std::map<std::intptr_t, std::pair<std::intptr_t, std::thread::id>> m_holders;
};

} // namespace sarn_test
