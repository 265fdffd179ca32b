// SPDX-License-Identifier: Apache-2.0
/// \file
/// Random bytes.
#pragma once

#include "ul/base.h"
#include "ul/mutex.h"
#include "ul/pointer.h"

#include <memory>

namespace ul {

class RandomReserve;

/// Random bytes from the operating system's cryptographic generator. Despite its name this is not a Mersenne Twister:
/// an IV must be unpredictable. Small requests are served from a page of bytes drawn in advance. A byte is wiped there
/// as it is handed out, and a forked process finds the page empty.
class UL_EXPORT CMTRand : public CBase {
public:
    /// The instance shared by the process.
    static const P<CMTRand>& getGlobal();
    /// The mutex that callers may hold around calls of the shared instance; randData() does not need it.
    static const P<CMutex>& getGlobalInstanceMutex();

    CMTRand();
    CMTRand(const CMTRand&) = delete;
    CMTRand& operator=(const CMTRand&) = delete;
    ~CMTRand() override;

    /// Fills `size` bytes. It never waits for another thread: safe from any thread, with or without the mutex above,
    /// from a signal handler, and in a process that was forked at any moment.
    /// \throws CInvalidArgError "invalid size" if `size` is negative; CError "Random bytes are not available." with
    ///         property "reason" if the operating system refuses.
    void randData(unsigned char* data, int size);

private:
    std::unique_ptr<RandomReserve> m_reserve;
};

} // namespace ul
