// SPDX-License-Identifier: Apache-2.0
/// \file
/// Process-wide objects, created on first use.
#pragma once

#include "ul/export.h"

#include <atomic>
#include <cstdint>

namespace ul {

/// A place for one object that is created on first use. Constant-initialised: it costs nothing at load and may be used
/// by any other initialiser.
///
/// Declare it static. The object lives until clear(), which nobody calls by itself: at the end of the process static
/// destructors, and threads that outlive main, may still use it.
///
/// Two slots whose `create` functions use each other's slot wait for each other for ever if two threads start with
/// them at the same moment.
class UL_EXPORT CSafeGlobalSlot {
public:
    constexpr CSafeGlobalSlot() noexcept = default;
    CSafeGlobalSlot(const CSafeGlobalSlot&) = delete;
    CSafeGlobalSlot& operator=(const CSafeGlobalSlot&) = delete;

    /// The object, created by `create` if there is none yet. Threads that come first together wait for the one that
    /// creates; all see the finished object. `destroy` receives the object in clear(); null
    /// if there is nothing to do then.
    /// If `create` throws, the slot stays empty and the next call tries again.
    /// \throws CError "Global object could not be created." if `create` returns null; CError "Global object is used
    ///         while it is being created." if `create` comes back here; whatever `create` throws.
    void* use(void* (*create)(), void (*destroy)(void*)) {
        void* const object = m_object.load(std::memory_order_acquire);
        return object ? object : createOnce(create, destroy);
    }

    /// Gives the object, if there is one, to `destroy` and leaves the slot empty. No other thread may use the slot, or
    /// the object, meanwhile. For tests, and for hosts that end a module of their own.
    void clear() noexcept;

private:
    void* createOnce(void* (*create)(), void (*destroy)(void*));

    std::atomic<void*> m_object{nullptr};
    void (*m_destroy)(void*) = nullptr;
    // The thread that is inside `create`, 0 for none.
    std::uint64_t m_creator = 0;
};

} // namespace ul
