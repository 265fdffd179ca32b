// SPDX-License-Identifier: Apache-2.0
/// \file
/// The errors that the library's implementations of IDigest share. Its templates need them in hosts, too, which call
/// none of this.
#pragma once

#include "sarn/export.h"

namespace sarn::detail {

/// Throws the ul::CBadStateError of an update() after finish().
[[noreturn]] SARN_EXPORT void raiseDigestIsFinished();

/// Throws the ul::CBadStateError of reading a result before finish().
[[noreturn]] SARN_EXPORT void raiseDigestIsNotFinished();

/// Throws a ul::CError in the library's style: no second text, code -1, no properties, no cause.
[[noreturn]] SARN_EXPORT void raiseDigestError(const char* message);

/// Throws the ul::CInvalidArgError of an update() whose size is negative; `where` is its qualified name.
[[noreturn]] SARN_EXPORT void raiseBadDigestDataSize(const char* where);

} // namespace sarn::detail
