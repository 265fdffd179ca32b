// SPDX-License-Identifier: Apache-2.0
/// \file
/// Errors of the library's implementations of IDigest. They are public because the templates raise them in hosts; hosts
/// do not call them.
#pragma once

#include "sarn/export.h"

namespace sarn::detail {

/// Raises the ul::CBadStateError of update() after finish().
[[noreturn]] SARN_EXPORT void raiseDigestIsFinished();

/// Raises the ul::CBadStateError of reading a result before finish().
[[noreturn]] SARN_EXPORT void raiseDigestIsNotFinished();

/// Raises a ul::CError without second text, code, properties or cause.
[[noreturn]] SARN_EXPORT void raiseDigestError(const char* message);

/// Raises the ul::CInvalidArgError of update() with a negative size. `where` is its qualified name.
[[noreturn]] SARN_EXPORT void raiseBadDigestDataSize(const char* where);

} // namespace sarn::detail
