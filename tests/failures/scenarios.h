// SPDX-License-Identifier: Apache-2.0
// What the library is used for, each use in a form that can be repeated.
#pragma once

#include "support/temp_folder.h"
#include "support/vectors.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace sarn_test {

/// Does the same each time it is called, with the same objects, and returns what came of it.
using Run = std::function<Bytes()>;

struct Scenario {
    std::string name;
    /// The messages of the errors that may be told instead of a result; the ones of files start with "Cannot".
    std::vector<std::string> messages;
    std::function<Run()> prepare;
    /// What may come out instead when libcrypto has no memory, a result or an error: it tells of a signature that does
    /// not match then.
    Bytes withoutMemory = {};
    std::string errorWithoutMemory = {};
    /// Whether calls of dependencies fail only once: where a digest dies whose end cannot be computed either, the
    /// process is meant to end.
    bool failsOnlyOnce = false;
};

/// For messages of failures.
inline void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

using Scenarios = std::vector<Scenario>;

Scenarios makeCipherScenarios();
Scenarios makeDigestScenarios();
Scenarios makeKeyScenarios();
Scenarios makeSignatureScenarios();
Scenarios makeFileScenarios();
Scenarios makeJobScenarios();

/// All of them.
const Scenarios& getScenarios();

} // namespace sarn_test
