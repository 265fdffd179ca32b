// SPDX-License-Identifier: Apache-2.0
// The host: turns what a plug-in's C function hands back into the error that it was.
#include "plugin.h"

#include <sarn/host.h>

#include <iostream>

// Ends normally or with the plug-in's own error.
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
