// SPDX-License-Identifier: Apache-2.0
// The base library's errors, raised in one line at the call site.
#pragma once

#include "ul/error.h"

namespace ul {

/// Raises a CError with this message and these properties only.
[[noreturn]] void raiseError(const String& message, const CProps& props = CProps());

/// Raises a CInvalidArgError without properties.
[[noreturn]] void raiseInvalidArg(const String& where, const String& message);

/// Raises a CFileError with the operating system's reason for `code`.
[[noreturn]] void raiseFileError(const String& operation, const String& path, int code);

/// Raises a CFileError with a reason of the library, which has no number.
[[noreturn]] void raiseFileError(const String& operation, const String& path, const String& reason);

/// The operating system's text for an error number, without a full stop.
String describeSystemError(int code);

} // namespace ul
