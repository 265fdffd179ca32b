// SPDX-License-Identifier: Apache-2.0
// Process-wide instances.
#pragma once

#include "sarn/export.h"

#include "ul/global_slot.h"
#include "ul/pointer.h"

#include <memory>
#include <new>

namespace sarn {

/// The process-wide instance of `T`. Instantiate it explicitly and exported for each `T`, so that every module finds
/// the one slot of the process.
template <class T>
class TGlobalInstance {
public:
    /// The instance, created on first use. Safe from any thread.
    static const ul::P<T>& get() {
        static ul::CSafeGlobalSlot g_pInstanceSlot;
        const void* const holder = g_pInstanceSlot.use(&create, &destroy);
        // Behind the first use, so that instances die in the reverse order of their creation.
        static const ul::CSafeGlobalSlotCleaner cleaner(g_pInstanceSlot);
        return *static_cast<const ul::P<T>*>(holder);
    }

private:
    static void* create() {
        std::unique_ptr<ul::P<T>> holder(new (std::nothrow) ul::P<T>());
        if (!holder)
            return nullptr;
        *holder = ul::make<T>();
        return holder.release();
    }

    // An exception that escapes from the instance's release ends the process.
    static void destroy(void* holder) noexcept { delete static_cast<ul::P<T>*>(holder); }
};

} // namespace sarn
