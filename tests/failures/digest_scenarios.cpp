// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

/// Repeats `use` with one digest, which the first call creates.
template <class Use>
Run useDigest(const std::string& id, Use use) {
    return [id, use, digest = ul::P<sarn::IDigest>()]() mutable {
        if (!digest)
            digest = createDigest(id);
        return use(*digest);
    };
}

Bytes digestTwoPieces(sarn::IDigest& digest) {
    digest.reset();
    feed(digest, makePattern(100));
    feed(digest, makePattern(3000));
    return finish(digest);
}

Bytes saveAndResume(sarn::IDigest& digest) {
    digest.reset();
    feed(digest, makePattern(100));
    const Bytes state = storeState(digest);
    feed(digest, makePattern(10));
    loadState(digest, state);
    return finish(digest);
}

} // namespace

Scenarios makeDigestScenarios() {
    Scenarios scenarios;
    for (const std::string id : digestIDs) {
        std::string name = id;
        std::replace(name.begin(), name.end(), '-', '_');
        scenarios.push_back({"Digest_" + name, useDigest(id, digestTwoPieces)});
        scenarios.push_back({"CreateDigest_" + name, [=] { return getDigest(id, makePattern(10)); }, false, true});
        scenarios.push_back({"SaveAndResume_" + name, useDigest(id, saveAndResume)});
    }
    return scenarios;
}

} // namespace sarn_test
