// SPDX-License-Identifier: Apache-2.0
// Leaks a signer: the leak sanitizer must report its key.
#include "support/key_files.h"

#include "sarn/signature.h"

#include <thread>

// The stack of the thread is gone at the end, and with it every copy of the pointer.
int main() {
    std::thread([] {
        const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(sarn_test::readKey("rsa1024"), "");
        signer->addRef();
    }).join();
}
