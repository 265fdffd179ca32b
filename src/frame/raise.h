// SPDX-License-Identifier: Apache-2.0
// The library's errors, raised in one line at the call site.
#pragma once

#include "ul/error.h"

namespace sarn {

/// Raises a ul::CError with an empty second text, code -1 and no cause.
[[noreturn]] void raiseError(const ul::String& message, const ul::CProps& props = ul::CProps());

/// Raises a ul::CInvalidArgError without properties.
/// \param where qualified name of the operation that refuses the argument
[[noreturn]] void raiseInvalidArg(const ul::String& where, const ul::String& message);

} // namespace sarn
