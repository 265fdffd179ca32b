// SPDX-License-Identifier: Apache-2.0
// A module that uses the library: loading it loads the library.
#include <sarn/digest.h>

extern "C" __attribute__((visibility("default"))) int computeDigest() {
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType("sha1")->createDigest();
    digest->update("abc", 3);
    digest->finish();
    return digest->getDigestData()[0];
}
