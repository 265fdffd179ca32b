// SPDX-License-Identifier: Apache-2.0
// The library decodes a text as the documented steps with libcrypto's filter do. The result encodes to a text that
// decodes to the same bytes.
#include "sarn/base64.h"

#include "property.h"
#include "support/base64_steps.h"
#include "targets.h"

namespace sarn_fuzz {

namespace {

std::optional<Bytes> decode(const ul::String& text) {
    return tryFill([&](Buffer& out) { sarn::base64Decode(text, out); });
}

} // namespace

void fuzzBase64(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    // Some inputs have characters of more than eight bits, which are not Base64.
    const wchar_t shift = input.take() % 8 == 0 ? 0x80 : 0;
    std::wstring text;
    for (const unsigned char byte : input.toBytes())
        text += static_cast<wchar_t>(byte < 0x80 ? byte : byte + shift);
    const std::optional<Bytes> decoded = decode(text);
    require(decoded == sarn_test::decodeByTheSteps(text), "libcrypto's filter decodes the same");
    if (!decoded)
        return;
    const int length = static_cast<int>(decoded->size());
    for (const bool lineBreaks : {false, true}) {
        const ul::String encoded = sarn::base64Encode(decoded->data(), length, input.take() % 2 == 0, lineBreaks);
        require(decode(encoded) == decoded, "what is encoded decodes to the same bytes");
    }
}

} // namespace sarn_fuzz
