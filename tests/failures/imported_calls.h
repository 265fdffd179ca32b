// SPDX-License-Identifier: Apache-2.0
// The functions that the libraries import from others, and that tests watch and let fail.
//
// The shared libraries stay as they ship: only their tables of imported addresses are changed, so that each call passes
// a replacement of the same type, which fails when its turn has come and else calls the function it stands for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sarn_test {

enum class CallKind { Allocation, Memory, Libcrypto, File };

/// How the failure of a function differs from that of others.
enum Trait : unsigned {
    /// It cannot fail, and is replaced to be observed.
    cannot = 1,
    /// The library ignores it on purpose: its result is still right.
    ignored = 2,
    /// It is reported although the work is done.
    done = 4,
    /// It is reported as operator new does.
    throws = 8,
};

/// Description of an imported function.
struct ImportedCall {
    const char* name;
    CallKind kind;
    void* replacement;
    const ImportedCall** slot;
    /// What it returns when it fails.
    std::intptr_t failure;
    /// The error number that comes with the failure; 0 if none does.
    int error;
    unsigned traits;

    bool has(Trait trait) const { return (traits & trait) != 0; }
};

/// The functions that are replaced.
const std::vector<ImportedCall>& getImportedCalls();

/// Whether an imported function has no way to report a failure, or belongs to the C++ runtime.
bool cannotFail(const std::string& name);

/// Puts the replacements in place, once. Returns the names of all functions that libul and libsarn import from other
/// libraries.
const std::vector<std::string>& installReplacements();

} // namespace sarn_test
