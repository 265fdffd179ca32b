// SPDX-License-Identifier: Apache-2.0
/// \file
/// The error log.
#pragma once

#include "ul/string.h"

#include <exception>
#include <functional>

namespace ul {

/// Receives one line of the log, without a line end. It may be called from any thread, and from two at once; what it
/// throws is dropped.
using LogHandler = std::function<void(const String& line)>;

/// Sends the log to `handler`, or to standard error if it is empty, and returns the handler so far. Safe from any
/// thread; a line already under way may still reach the old handler.
UL_EXPORT LogHandler setLogHandler(LogHandler handler);

/// Logs a message. Never throws; safe from any thread.
UL_EXPORT void logError(const String& message);

/// Logs a message with the error that it is about, properties and causes included, and an optional second text. Never
/// throws; safe from any thread.
UL_EXPORT void logError(const std::exception& error, const String& message, const String& text);

/// Reports an exception that the destructor of class `name` swallowed; `isBug` tells that it points to a mistake in
/// the program. Never throws; safe from any thread.
UL_EXPORT void onExceptionInDestructorIgnored(const char* name, std::exception& error, bool isBug);

} // namespace ul
