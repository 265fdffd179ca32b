// SPDX-License-Identifier: Apache-2.0
// Uses of the library that can be repeated.
#pragma once

#include "support/expect.h"

namespace sarn_test {

/// Each call does the same with the same objects, which the first call creates, and returns the result.
using Run = std::function<Bytes()>;

struct Scenario : Row {
    Run run;
    /// Whether it verifies a signature. Without memory, libcrypto reports that it does not match.
    bool verifies = false;
    /// Whether only one call of a dependency may fail: the process ends if the destructor of a digest fails as well.
    bool failsOnlyOnce = false;
};

using Scenarios = std::vector<Scenario>;

Scenarios makeCipherScenarios();
Scenarios makeDigestScenarios();
Scenarios makeKeyScenarios();
Scenarios makeSignatureScenarios();
Scenarios makeFileScenarios();

inline Bytes asBytes(bool isMatch) {
    return Bytes(1, isMatch);
}

} // namespace sarn_test
