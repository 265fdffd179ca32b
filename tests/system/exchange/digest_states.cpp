// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"
#include "system/exchange/bundle.h"

namespace sarn_test {

namespace {

// Sizes around the blocks of the hashes and around the longest run of Adler-32 without a division.
constexpr int offsets[] = {0, 1, 55, 56, 63, 64, 65, 127, 128, 1000, 5551, 5552, 5553};

} // namespace

void addDigestStates(Bundle& bundle) {
    const Bytes data = makePattern(6000);
    for (const char* const id : digestIDs) {
        for (const int offset : offsets) {
            const Bytes front = cut(data, offset);
            const ul::P<sarn::IDigest> digest = createDigest(id, front);
            const auto add = [&](const char* kind) {
                bundle.exact["digest/" + (id + ("/" + std::to_string(offset))) + "/" + kind] = storeState(*digest);
            };
            add("running");
            digest->finish();
            add("finished");
            digest->getDigestData();
            add("read");
            digest->reset();
            feed(*digest, front);
            add("reset");
        }
    }
}

} // namespace sarn_test
