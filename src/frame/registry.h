// SPDX-License-Identifier: Apache-2.0
// The common part of the registries of ciphers and digest types.
#pragma once

#include "frame/raise.h"

#include "ul/map.h"
#include "ul/mutex.h"
#include "ul/pointer.h"
#include "ul/string.h"

namespace sarn {

/// The objects of a registry by identifier.
template <class T>
using TRegistryItems = ul::TMap<ul::String, ul::P<T>>;

/// Registers `item` under its identifier.
/// \param where    qualified name of the operation, which refuses null
/// \param nullText message of that error
template <class T>
void addItem(ul::CMutex& mutex, TRegistryItems<T>& items, T* item, const char* where, const char* nullText) {
    const ul::CMutexLock lock(mutex);
    if (!item)
        raiseInvalidArg(where, nullText);
    items.set(item->getID(), item);
}

/// The item registered under `id`, or null.
template <class T>
ul::P<T> findItem(ul::CMutex& mutex, const TRegistryItems<T>& items, const ul::String& id) {
    const ul::CMutexLock lock(mutex);
    const ul::P<T>* const found = items.find(id);
    return found ? *found : nullptr;
}

/// The item registered under `id`.
/// \throws ul::CError `unknown`, followed by the identifier and "'.", if there is none.
template <class T>
ul::P<T> getItem(ul::CMutex& mutex, const TRegistryItems<T>& items, const ul::String& id, const char* unknown) {
    const ul::CMutexLock lock(mutex);
    const ul::P<T>* const found = items.find(id);
    if (!found)
        raiseError(unknown + id + "'.");
    return *found;
}

} // namespace sarn
