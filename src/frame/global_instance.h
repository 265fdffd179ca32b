// SPDX-License-Identifier: Apache-2.0
// Process-wide instances.
#pragma once

#include "ul/global_slot.h"
#include "ul/pointer.h"

#include <memory>
#include <new>

namespace sarn {

/// Creates what the slot of class `T` holds: a pointer, on the ordinary heap, to a new instance. Null if there is no
/// memory for the pointer.
template <class T>
void* createInstance() {
    std::unique_ptr<ul::P<T>> holder(new (std::nothrow) ul::P<T>());
    if (!holder)
        return nullptr;
    *holder = ul::make<T>();
    return holder.release();
}

/// Destroys what createInstance() returned. An exception that escapes from the instance's release ends the process.
template <class T>
void destroyInstance(void* holder) noexcept {
    delete static_cast<ul::P<T>*>(holder);
}

/// The process-wide instance of `T`, created on first use. Safe from any thread.
/// \param slot the one slot of the class
template <class T>
const ul::P<T>& getInstance(ul::CSafeGlobalSlot& slot) {
    return *static_cast<const ul::P<T>*>(slot.use(createInstance<T>, destroyInstance<T>));
}

} // namespace sarn
