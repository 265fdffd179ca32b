// SPDX-License-Identifier: Apache-2.0
// What the library is used for, each use in a form that can be repeated.
#pragma once

#include "support/table.h"
#include "support/vectors.h"

#include <functional>
#include <string>
#include <vector>

namespace sarn_test {

/// Does the same each time it is called, with the same objects, which the first call makes, and returns what came of
/// it.
using Run = std::function<Bytes()>;

struct Scenario : Row {
    Run run;
    /// Whether it verifies a signature, which does not match when libcrypto has no memory.
    bool verifies = false;
    /// Whether calls of dependencies fail only once: where a digest dies whose end cannot be computed either, the
    /// process is meant to end.
    bool failsOnlyOnce = false;
};

using Scenarios = std::vector<Scenario>;

Scenarios makeCipherScenarios();
Scenarios makeDigestScenarios();
Scenarios makeKeyScenarios();
Scenarios makeSignatureScenarios();
Scenarios makeFileScenarios();

/// What a verification returns, in a form that can be compared.
inline Bytes asBytes(bool isMatch) {
    return Bytes(1, isMatch);
}

} // namespace sarn_test
