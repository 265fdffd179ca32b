// SPDX-License-Identifier: Apache-2.0
// The host: raises the error that a C function of the plug-in returns as an object.
#include "plugin.h"

#include <sarn/host.h>

#include <iostream>

// Returns, or raises the error of the plug-in.
void callPlugin(const char* cipherID) {
    const auto error = ul::P<ul::CError>::adopt(static_cast<ul::CError*>(runJob(cipherID)));
    if (error)
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
