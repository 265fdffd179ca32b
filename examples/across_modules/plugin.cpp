// SPDX-License-Identifier: Apache-2.0
// The plug-in: a module of its own, perhaps loaded at run time, that uses the library as its host does.
#include "plugin.h"

#include <sarn/sarn.h>

void* runJob(const char* cipherID) {
    try {
        sarn::CCipherManager::get()->getCipher(cipherID);
        return nullptr;
    } catch (ul::CError& error) {
        // A copy of the same class, with message, properties and cause. One reference goes to the caller.
        const ul::P<ul::CError> copy = error.clone();
        copy->addRef();
        return copy.get();
    }
}
