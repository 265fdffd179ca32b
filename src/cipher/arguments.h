// SPDX-License-Identifier: Apache-2.0
// Checks of arguments that all ciphers share.
#pragma once

#include "frame/raise.h"

#include "ul/buffer.h"

#include <climits>

namespace sarn {

using Key = ul::TCryptBuffer<unsigned char>;
using Buffer = ul::TBuffer<unsigned char>;

/// The position in `out` where an operation begins to write.
inline int getStart(const Buffer& out, bool append) {
    return append ? out.getUsed() : 0;
}

/// Refuses arguments that no cipher can process.
/// \param where      qualified name of the operation
/// \param start      position in `out` where the operation begins to write
/// \param outputSize number of bytes it may write from there on
inline void checkArguments(const char* where, const Key& key, int size, const Buffer& out, int start,
                           long long outputSize) {
    if (size < 0)
        raiseInvalidArg(where, "invalid input data size");
    if (start + outputSize > INT_MAX)
        raiseInvalidArg(where, "input data is too large");
    if (&key == &out)
        raiseInvalidArg(where, "key overlaps output");
}

} // namespace sarn
