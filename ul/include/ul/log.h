// SPDX-License-Identifier: Apache-2.0
/// \file
/// The error log.
#pragma once

#include "ul/string.h"

#include <exception>
#include <functional>

namespace ul {

/// Receives one line of the log, without a line end. It may be called from any thread, and from two at once; what it
/// throws is dropped. No lock of the log is held meanwhile: it may log, and set another handler.
using LogHandler = std::function<void(const String& line)>;

/// Sends the log to `handler`, or to standard error if it is empty, and returns the handler so far. Safe from any
/// thread; a line already under way may still reach the old handler.
UL_EXPORT LogHandler setLogHandler(LogHandler handler);

/// Logs a message. Never throws; safe from any thread, until the very end of the process. A line stays one line: a line
/// feed in it becomes `\n`, any other control character `\x`, its number in hexadecimal and a semicolon.
UL_EXPORT void logError(const String& message) noexcept;

/// Logs a message with the error that it is about, and an optional second text, as the other logError() does. Of a
/// CError the properties, the causes and, if an argument was refused, the operation are logged too. The what() of any
/// other exception is read as UTF-8, or as Latin-1 if it is not.
UL_EXPORT void logError(const std::exception& error, const String& message, const String& text) noexcept;

/// Reports an exception that the destructor of class `name` swallowed; `isBug` tells that it points to a mistake in
/// the program. In other respects as logError().
UL_EXPORT void onExceptionInDestructorIgnored(const char* name, std::exception& error, bool isBug) noexcept;

} // namespace ul
