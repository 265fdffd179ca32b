// SPDX-License-Identifier: Apache-2.0
// The functions that the libraries import from others. Tests watch them and make them fail.
//
// The shared libraries are the shipped ones. Only their tables of imported addresses are changed: each call goes to a
// replacement of the same type, which fails or calls the original function.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace sarn_test {

enum class CallKind { Allocation, Memory, Libcrypto, File, Lock };

enum Trait : unsigned {
    /// It cannot fail and is replaced for observation only.
    cannot = 1,
    /// The library ignores its failure on purpose: the result is right without it.
    ignored = 2,
    /// It reports a failure although it has done its work.
    done = 4,
    /// It raises std::bad_alloc.
    throws = 8,
};

struct ImportedCall {
    const char* name;
    CallKind kind;
    void* replacement;
    const ImportedCall** slot;
    /// The result of a failure.
    std::intptr_t failure;
    /// The error number of a failure; 0 for none.
    int error;
    unsigned traits;

    bool has(Trait trait) const { return (traits & trait) != 0; }
};

const std::vector<ImportedCall>& getImportedCalls();

/// Whether an imported function cannot report a failure or belongs to the C++ runtime.
bool cannotFail(const std::string& name);

/// Installs the replacements on the first call. Returns the names of all functions that libul and libsarn import from
/// other libraries.
const std::vector<std::string>& installReplacements();

/// Calls `visit` for each function that a loaded library imports. The start of its name ("libul.") identifies the
/// library. `visit` may change the address through which the function is called.
void visitImports(const std::string& library, const std::function<void(const char* name, void** address)>& visit);

} // namespace sarn_test
