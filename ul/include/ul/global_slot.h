// SPDX-License-Identifier: Apache-2.0
/// \file
/// Process-wide objects, created on first use.
#pragma once

#include "ul/export.h"

#include <atomic>
#include <cstdint>

namespace ul {

/// Holds one object that is created on first use. It is constant-initialised: it costs nothing at load time, and any
/// other initialiser may use it.
///
/// Declare it static. The object lives until clear(), which the library never calls: at the end of the process, static
/// destructors and threads that outlive main may still use the object.
///
/// Two slots deadlock if the `create` function of each uses the other slot and two threads start with them at the same
/// moment.
class UL_EXPORT CSafeGlobalSlot {
public:
    constexpr CSafeGlobalSlot() noexcept = default;
    CSafeGlobalSlot(const CSafeGlobalSlot&) = delete;
    CSafeGlobalSlot& operator=(const CSafeGlobalSlot&) = delete;

    /// Returns the object; `create` makes it if there is none yet. Threads that arrive together wait for the one that
    /// creates it, and all see the finished object. If `create` throws, the slot stays empty and the next call tries
    /// again. `destroy`, which may be null, receives the object in clear().
    /// \throws CError "Global object could not be created." if `create` returns null; CError "Global object is used
    ///         while it is being created." if `create` re-enters the slot; any error of `create`.
    void* use(void* (*create)(), void (*destroy)(void*)) {
        void* const object = m_object.load(std::memory_order_acquire);
        return object ? object : createOnce(create, destroy);
    }

    /// Passes the object, if there is one, to `destroy` and leaves the slot empty. Requires: no other thread uses the
    /// slot or the object during the call. For tests, and for hosts that shut down a module of their own.
    void clear() noexcept;

private:
    void* createOnce(void* (*create)(), void (*destroy)(void*));

    std::atomic<void*> m_object{nullptr};
    void (*m_destroy)(void*) = nullptr;
    // The thread that runs `create`, or 0.
    std::uint64_t m_creator = 0;
};

} // namespace ul
