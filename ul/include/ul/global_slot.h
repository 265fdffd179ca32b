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
/// Declare it static. The object lives until the slot is cleared, which a CSafeGlobalSlotCleaner beside the slot does
/// when the module is unloaded or the process ends.
class UL_EXPORT CSafeGlobalSlot {
public:
    constexpr CSafeGlobalSlot() noexcept = default;
    CSafeGlobalSlot(const CSafeGlobalSlot&) = delete;
    CSafeGlobalSlot& operator=(const CSafeGlobalSlot&) = delete;

    /// The object, created by `create` if there is none yet. Threads that come first together wait for the one that
    /// creates; all see the finished object. `destroy` receives the object when the slot is cleared.
    /// If `create` throws, the slot stays empty and the next call tries again.
    /// \throws CError "Global object could not be created." if `create` returns null; CError "Global object is used
    ///         while it is being created." if `create` comes back here; whatever `create` throws.
    void* use(void* (*create)(), void (*destroy)(void*)) {
        void* const object = m_object.load(std::memory_order_acquire);
        return object ? object : createOnce(create, destroy);
    }

    /// Destroys the object, if there is one, and leaves the slot empty. No other thread may use the slot meanwhile.
    void clear() noexcept;

private:
    void* createOnce(void* (*create)(), void (*destroy)(void*));

    std::atomic<void*> m_object{nullptr};
    void (*m_destroy)(void*) = nullptr;
    // The thread that is inside `create`, 0 for none.
    std::uint64_t m_creator = 0;
};

/// Clears a slot at its own end. As a local static that is declared behind the first use of the slot it is constructed
/// after the slot's object, so that objects die in the reverse order of their creation, and with the module that
/// declares it.
class UL_EXPORT CSafeGlobalSlotCleaner {
public:
    /// Clears `slot`, which must outlive this object, in the end.
    explicit CSafeGlobalSlotCleaner(CSafeGlobalSlot& slot) noexcept : m_slot(slot) {}
    CSafeGlobalSlotCleaner(const CSafeGlobalSlotCleaner&) = delete;
    CSafeGlobalSlotCleaner& operator=(const CSafeGlobalSlotCleaner&) = delete;
    /// Clears the slot.
    ~CSafeGlobalSlotCleaner() { m_slot.clear(); }

private:
    CSafeGlobalSlot& m_slot;
};

} // namespace ul
