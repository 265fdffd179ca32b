// SPDX-License-Identifier: Apache-2.0
/// \file
/// Bytes to Base64 text and back. All functions are stateless and safe from any thread.
#pragma once

#include "sarn/object_model.h"

namespace sarn {

/// The Base64 text (RFC 4648, section 4) of `size` bytes.
///
/// \param keepPadding false removes the "=" at the end; it has no effect with line breaks, which stand after them
/// \param lineBreaks  true puts a line feed after every 64 characters and after the last one
/// \throws ul::CError "Internal error: error during base64 encode." if `size` is negative or libcrypto fails
SARN_EXPORT ul::String base64Encode(const void* data, int size, bool keepPadding, bool lineBreaks);

/// Decodes Base64 text into `out`, in place of what it held.
///
/// Spaces, tabs, line feeds and carriage returns do not count; missing padding is completed. Text that is not Base64
/// is noticed by the length of the result, with a tolerance of 3 bytes: docs/base64.md says which damage that lets
/// pass.
/// \throws ul::CInvalidArgError "invalid base64 data"; the used size of `out` is unchanged then. ul::CError "Internal
///         error: error during base64 decode." if libcrypto fails
SARN_EXPORT void base64Decode(const ul::String& text, ul::TBuffer<unsigned char>& out);

/// Replaces the bytes in `buffer` by their Base64 text: lines of at most 64 characters, each followed by "\r\n".
/// \throws as base64Encode() does; the buffer is unchanged then
SARN_EXPORT void base64EncodeBufferWithCRLF(ul::TBuffer<unsigned char>& buffer);

} // namespace sarn
