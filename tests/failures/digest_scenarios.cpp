// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/digest_test_data.h"

namespace sarn_test {

namespace {

Run runDigest(const std::string& id) {
    const ul::P<sarn::IDigest> digest = createDigest(id);
    return [=] {
        digest->reset();
        feed(*digest, makePattern(100));
        feed(*digest, makePattern(3000));
        return finish(*digest);
    };
}

Run runCreate(const std::string& id) {
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType(id.c_str());
    return [=] {
        const ul::P<sarn::IDigest> digest = type->createDigest();
        feed(*digest, makePattern(10));
        return finish(*digest);
    };
}

Run runStore(const std::string& id) {
    const ul::P<sarn::IDigest> digest = createDigest(id);
    feed(*digest, makePattern(100));
    return [=] { return storeState(*digest); };
}

Run runResume(const std::string& id) {
    const ul::P<sarn::IDigest> first = createDigest(id);
    feed(*first, makePattern(100));
    const Bytes state = storeState(*first);
    const ul::P<sarn::IDigest> digest = createDigest(id);
    return [=] {
        loadState(*digest, state);
        feed(*digest, makePattern(100));
        return finish(*digest);
    };
}

} // namespace

Scenarios makeDigestScenarios() {
    const std::vector<std::string> errors = {"Error initializing OpenSSL digest.", "Error updating OpenSSL digest.",
                                             "Error finalizing OpenSSL digest."};
    Scenarios scenarios;
    for (const std::string id : digestIDs) {
        scenarios.push_back({"Digest_" + id, errors, [=] { return runDigest(id); }});
        scenarios.push_back({"CreateDigest_" + id, errors, [=] { return runCreate(id); }, {}, {}, true});
        scenarios.push_back({"StoreState_" + id, errors, [=] { return runStore(id); }});
        scenarios.push_back({"LoadState_" + id, errors, [=] { return runResume(id); }});
    }
    return scenarios;
}

} // namespace sarn_test
