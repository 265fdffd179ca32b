// SPDX-License-Identifier: Apache-2.0
// Process-wide instances.
#pragma once

#include "ul/global_slot.h"
#include "ul/pointer.h"

#include <memory>
#include <new>

namespace sarn {

/// Creates the content of the slot of class `T`: a pointer, on the ordinary heap, to a new instance. Returns null if
/// there is no memory for the pointer.
template <class T>
void* createInstance() {
    std::unique_ptr<ul::P<T>> holder(new (std::nothrow) ul::P<T>());
    if (!holder)
        return nullptr;
    *holder = ul::make<T>();
    return holder.release();
}

/// Destroys the result of createInstance(). An exception from the instance's release() terminates the process.
template <class T>
void destroyInstance(void* holder) noexcept {
    delete static_cast<ul::P<T>*>(holder);
}

/// The process-wide instance of `T`. It is created on first use. Safe from any thread.
/// \param slot the slot of the class
template <class T>
const ul::P<T>& getInstance(ul::CSafeGlobalSlot& slot) {
    return *static_cast<const ul::P<T>*>(slot.use(createInstance<T>, destroyInstance<T>));
}

} // namespace sarn
