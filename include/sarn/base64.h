// SPDX-License-Identifier: Apache-2.0
/// \file
/// Base64. All functions are stateless and safe from any thread.
#pragma once

#include "sarn/object_model.h"

namespace sarn {

/// Encodes `size` bytes as Base64 (RFC 4648, section 4).
///
/// \param keepPadding false removes the "=" at the end; ignored with line breaks, because the text then ends in a line
///                    feed
/// \param lineBreaks  true adds a line feed after every 64 characters and at the end
/// \throws ul::CError "Internal error: error during base64 encode." if `size` is negative or libcrypto fails.
SARN_EXPORT ul::String base64Encode(const void* data, int size, bool keepPadding, bool lineBreaks);

/// Decodes Base64 text and replaces the content of `out` by the result.
///
/// Spaces, tabs, line feeds and carriage returns are ignored; missing padding is added. Invalid text is detected only
/// by the length of the result, with a tolerance of 3 bytes: docs/base64.md says which damage passes.
/// \throws ul::CInvalidArgError "invalid base64 data"; ul::CError "Internal error: error during base64 decode." if
///         libcrypto fails. After "invalid base64 data" the used size of `out` is unchanged, but its bytes may be
///         overwritten.
SARN_EXPORT void base64Decode(const ul::String& text, ul::TBuffer<unsigned char>& out);

/// Replaces the bytes in `buffer` by their Base64 text, in lines of at most 64 characters that each end in "\r\n".
/// \throws as base64Encode() does; the buffer is unchanged then. If memory runs out later, part of the text is in it.
SARN_EXPORT void base64EncodeBufferWithCRLF(ul::TBuffer<unsigned char>& buffer);

} // namespace sarn
