// SPDX-License-Identifier: Apache-2.0
/// \file
/// A mutex that survives fork().
#pragma once

#include "ul/mutex.h"

namespace ul {

/// A mutex that no other thread holds while the process is copied by fork(): the child finds it free, and what it
/// guards whole. Where there is no fork() it is a CMutex.
///
/// fork() waits until the holders are done. So hold it for short, and never while waiting for another thread, which
/// might be the one that forks. A thread that holds it itself may fork; parent and child hold it then.
class UL_EXPORT CForkSafeMutex : public CMutex {
public:
    /// \throws std::bad_alloc if the system cannot be told of it
    CForkSafeMutex();
    CForkSafeMutex(const CForkSafeMutex&) = delete;
    CForkSafeMutex& operator=(const CForkSafeMutex&) = delete;
    ~CForkSafeMutex() override;

private:
    friend class ForkGuard;

    // The neighbours in the list of all of them.
    CForkSafeMutex* m_previous = nullptr;
    CForkSafeMutex* m_next = nullptr;
};

} // namespace ul
