// SPDX-License-Identifier: Apache-2.0
// The tables of imported addresses of loaded ELF libraries.
#pragma once

#include <functional>
#include <string>

namespace sarn_test {

/// Calls `visit` for each function that a loaded library imports. The start of its name ("libul.") identifies the
/// library. `visit` may change the address through which the function is called.
void visitImports(const std::string& library, const std::function<void(const char* name, void** address)>& visit);

} // namespace sarn_test
