// SPDX-License-Identifier: Apache-2.0
#include "support/digest_test_data.h"
#include "system/exchange/bundle.h"

namespace sarn_test {

namespace {

// Around the blocks of the hashes and around the longest run that Adler-32 takes without a division.
constexpr int offsets[] = {0, 1, 55, 56, 63, 64, 65, 127, 128, 1000, 5551, 5552, 5553};
constexpr int totalSize = 6000;

std::string getName(const char* id, int offset, const char* kind) {
    return std::string("digest/") + id + "/" + std::to_string(offset) + "/" + kind;
}

Bytes getFront(const Bytes& bytes, int size) {
    return Bytes(bytes.begin(), bytes.begin() + size);
}

Bytes getRest(const Bytes& bytes, int size) {
    return Bytes(bytes.begin() + size, bytes.end());
}

} // namespace

void addDigestStates(Bundle& bundle) {
    const Bytes data = makePattern(totalSize);
    for (const char* const id : digestIDs) {
        for (const int offset : offsets) {
            const ul::P<sarn::IDigest> digest = createDigest(id);
            feed(*digest, getFront(data, offset));
            bundle.exact[getName(id, offset, "running")] = storeState(*digest);
            digest->finish();
            bundle.exact[getName(id, offset, "finished")] = storeState(*digest);
            digest->getDigestData();
            bundle.exact[getName(id, offset, "read")] = storeState(*digest);
            digest->reset();
            feed(*digest, getFront(data, offset));
            bundle.exact[getName(id, offset, "reset")] = storeState(*digest);
        }
    }
}

int checkDigestStates(const Bundle& bundle) {
    const Bytes data = makePattern(totalSize);
    int count = 0;
    for (const char* const id : digestIDs) {
        const Bytes whole = getDigest(id, data);
        for (const int offset : offsets) {
            for (const char* const kind : {"running", "reset"}) {
                const std::string name = getName(id, offset, kind);
                const ul::P<sarn::IDigest> digest = createDigest(id);
                require(loadState(*digest, getItem(bundle.exact, name)) == 0, name);
                feed(*digest, getRest(data, offset));
                require(finish(*digest) == whole, name);
            }
            for (const char* const kind : {"finished", "read"}) {
                const std::string name = getName(id, offset, kind);
                const ul::P<sarn::IDigest> digest = createDigest(id);
                require(loadState(*digest, getItem(bundle.exact, name)) == 0, name);
                require(getResult(*digest) == getDigest(id, getFront(data, offset)), name);
            }
            count += 4;
        }
    }
    return count;
}

} // namespace sarn_test
