// SPDX-License-Identifier: Apache-2.0
// What must be at rest while the process is copied.
#pragma once

#include "ul/fork_safe_mutex.h"

namespace ul {

/// The process-wide list of mutexes that fork() waits for.
class ForkGuard {
public:
    /// Has the system call us around each fork(). False if it cannot be told to.
    static bool start() noexcept;
    /// \throws std::bad_alloc if start() fails
    static void add(CForkSafeMutex& mutex);
    static void remove(CForkSafeMutex& mutex) noexcept;

private:
    static void hold();
    static void letGo();
    static bool tryHoldMutexes();
};

/// Keeps CForkDelays of other threads from starting; false if there is one already.
bool tryHoldDelays();
void letDelaysGo();

/// Takes hold of the creation of process-wide objects; false if another thread starts or ends one just now.
bool tryHoldCreation();
void letCreationGo();

/// Takes hold of the log; false if another thread changes its handler just now.
bool tryHoldLog();
void letLogGo();

} // namespace ul
