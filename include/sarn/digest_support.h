// SPDX-License-Identifier: Apache-2.0
/// \file
/// What the library's implementations of IDigest share. Its templates need it in hosts, too, which call none of it.
#pragma once

#include "sarn/object_model.h"

#include "ul/data_stream.h"

namespace sarn::detail {

/// Throws the ul::CBadStateError of an update() after finish().
[[noreturn]] SARN_EXPORT void raiseDigestIsFinished();

/// Throws the ul::CBadStateError of reading a result before finish().
[[noreturn]] SARN_EXPORT void raiseDigestIsNotFinished();

/// Throws a ul::CError in the library's style: no second text, code -1, no properties, no cause.
[[noreturn]] SARN_EXPORT void raiseDigestError(const char* message);

/// Throws the ul::CInvalidArgError of an update() whose size is negative; `where` is its qualified name.
[[noreturn]] SARN_EXPORT void raiseBadDigestDataSize(const char* where);

/// Writes the used bytes of a result to a state stream, their number ahead of them.
SARN_EXPORT void storeDigestResult(ul::CDataOutStream& stream, const ul::TBuffer<unsigned char>& result);

/// Reads what storeDigestResult() has written, into an empty buffer. Its block is at least `digestSize` bytes long, and
/// those of them that the stream does not bring are 0. No more memory is taken than the stream brings bytes for.
/// \throws ul::CError "Bad digest result length in state stream." if the length is negative
SARN_EXPORT void loadDigestResult(ul::CDataInStream& stream, ul::TBuffer<unsigned char>& result, int digestSize);

/// Makes `result` what loadDigestResult() has read into `loaded`. If there is no memory for it nothing is changed.
SARN_EXPORT void replaceDigestResult(ul::TBuffer<unsigned char>& result, const ul::TBuffer<unsigned char>& loaded,
                                     int digestSize);

} // namespace sarn::detail
