// SPDX-License-Identifier: Apache-2.0
/// \file
/// A time in which the process is not copied.
#pragma once

#include "ul/export.h"

namespace ul {

/// While it lives, a fork() of another thread waits. For calls of other libraries that hold locks of their own, which a
/// child would find held by a thread that it does not have. The thread that has it may fork itself. May be nested.
/// Where there is no fork() it does nothing.
class UL_EXPORT CForkDelay {
public:
    CForkDelay() noexcept;
    CForkDelay(const CForkDelay&) = delete;
    CForkDelay& operator=(const CForkDelay&) = delete;
    ~CForkDelay();

private:
    bool m_isCounted = false;
};

} // namespace ul
