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

/// Random bytes from the operating system's cryptographic generator. The name is history: an initialisation vector
/// must not be predictable, so no generator that can be wound forward stands behind it. Small requests are served from
/// a page that is drawn at once; a byte is wiped there when it is handed out, and a forked process finds the page
/// empty.
class UL_EXPORT CMTRand : public CBase {
public:
    /// The instance that the process shares.
    static const P<CMTRand>& getGlobal();
    /// The mutex that a caller holds while it uses the shared instance.
    static const P<CMutex>& getGlobalInstanceMutex();

    CMTRand();
    CMTRand(const CMTRand&) = delete;
    CMTRand& operator=(const CMTRand&) = delete;
    ~CMTRand() override;

    /// Fills `size` bytes. Safe from any thread, with the mutex above or without, from a
    /// signal handler, and in a process that was forked at any moment: it waits for nobody.
    /// \throws CInvalidArgError "invalid size" if `size` is negative; CError "Random bytes are not available." with
    /// property "reason" if the operating system refuses.
    void randData(unsigned char* data, int size);

private:
    std::unique_ptr<RandomReserve> m_reserve;
};

} // namespace ul
