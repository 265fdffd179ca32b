// SPDX-License-Identifier: Apache-2.0
// Errors of this library in one line at the call site.
#pragma once

#include "ul/error.h"

namespace ul {

/// Throws a CError with the given message and properties and nothing else.
[[noreturn]] void raiseError(const String& message, const CProps& props = CProps());

/// Throws a CInvalidArgError without properties.
[[noreturn]] void raiseInvalidArg(const String& where, const String& message);

} // namespace ul
