// SPDX-License-Identifier: Apache-2.0
// Loses a signer that was begun with success: the leak sanitizer has to report its key.
#include "support/key_files.h"

#include "sarn/signature.h"

int main() {
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(sarn_test::readKey("rsa1024"), "");
    // Nobody gives this reference back.
    signer->addRef();
}
