// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"

namespace sarn_test {

namespace {

Scenarios makeScenarios() {
    Scenarios all;
    for (const auto make : {makeCipherScenarios, makeDigestScenarios, makeKeyScenarios, makeSignatureScenarios,
                            makeFileScenarios, makeJobScenarios}) {
        const Scenarios scenarios = make();
        all.insert(all.end(), scenarios.begin(), scenarios.end());
    }
    return all;
}

} // namespace

const Scenarios& getScenarios() {
    static const Scenarios scenarios = makeScenarios();
    return scenarios;
}

} // namespace sarn_test
