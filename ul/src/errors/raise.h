// SPDX-License-Identifier: Apache-2.0
// Errors of this library in one line at the call site.
#pragma once

#include "ul/error.h"

namespace ul {

/// Throws a CError with the given message and properties and nothing else.
[[noreturn]] void raiseError(const String& message, const CProps& props = CProps());

/// Throws a CInvalidArgError without properties.
[[noreturn]] void raiseInvalidArg(const String& where, const String& message);

/// Throws a CFileError with the operating system's reason for `code`.
[[noreturn]] void raiseFileError(const String& operation, const String& path, int code);

/// The operating system's text for an error number, without a full stop.
String describeSystemError(int code);

} // namespace ul
