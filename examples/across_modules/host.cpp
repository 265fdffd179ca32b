// SPDX-License-Identifier: Apache-2.0
// The host: turns what a plug-in's C function hands back into the error that it was.
#include "plugin.h"

#include <sarn/sarn.h>

#include <iostream>

// Ends normally or with the plug-in's own error.
void callPlugin(const char* cipherID) {
    auto* const raw = static_cast<ul::CError*>(runJob(cipherID));
    if (!raw)
        return;
    const ul::P<ul::CError> error(raw);
    raw->release(); // the reference that came with it; `error` has one of its own
    error->throwClone();
}

int main() {
    for (const char* const id : {"aes256cbc", "rot13"}) {
        try {
            callPlugin(id);
            std::cout << id << ": worked\n";
        } catch (const ul::CError& error) {
            std::cout << id << ": " << error.what() << "\n";
        }
    }
}
