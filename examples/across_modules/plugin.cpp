// SPDX-License-Identifier: Apache-2.0
// The plug-in: another module, perhaps loaded at run time, that uses the same library as its host.
#include "plugin.h"

#include <sarn/sarn.h>

void* runJob(const char* cipherID) {
    try {
        sarn::CCipherManager::get()->getCipher(cipherID);
        return nullptr;
    } catch (ul::CError& error) {
        // A copy of the same class, with message, properties and cause. The caller gets one reference.
        const ul::P<ul::CError> copy = error.clone();
        copy->addRef();
        return copy.get();
    }
}
