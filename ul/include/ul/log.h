// SPDX-License-Identifier: Apache-2.0
/// \file
/// The error log.
#pragma once

#include "ul/string.h"

#include <exception>
#include <functional>

namespace ul {

/// Receives one line of the log, without a line end. Any thread may call it, and several may do so at once. The log
/// drops anything that it throws and holds no lock during the call: a handler may log, and may set another handler.
using LogHandler = std::function<void(const String& line)>;

/// Sends the log to `handler`, or to standard error if `handler` is empty, and returns the previous handler. A line
/// that is being logged at that moment may still reach the previous one. Safe from any thread.
UL_EXPORT LogHandler setLogHandler(LogHandler handler);

/// Logs a message. Never throws; safe from any thread until the very end of the process. A message is always one line:
/// a line feed becomes `\n`; any other control character becomes `\x`, its number in hexadecimal, and a semicolon.
UL_EXPORT void logError(const String& message) noexcept;

/// Logs a message, the error that it is about, and a second text if it is not empty; otherwise as logError(const
/// String&). For a CError the line includes the properties, the causes and, for a refused argument, the operation. The
/// what() of any other exception is read as UTF-8, or as Latin-1 if it is not valid UTF-8.
UL_EXPORT void logError(const std::exception& error, const String& message, const String& text) noexcept;

/// Logs an exception that the destructor of class `name` swallowed; otherwise as logError(). `isBug` means that it
/// indicates a programming error.
UL_EXPORT void onExceptionInDestructorIgnored(const char* name, std::exception& error, bool isBug) noexcept;

} // namespace ul
