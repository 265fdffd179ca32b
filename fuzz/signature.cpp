// SPDX-License-Identifier: Apache-2.0
// With RSA, only the signature itself verifies. With DSA, only signatures of this text verify.
#include "signed_text.h"
#include "targets.h"

namespace sarn_fuzz {

void fuzzSignature(const std::uint8_t* data, std::size_t size) {
    static const std::string text = "the only copy";
    static const Bytes signature = sign(getRSAKey(), text);
    Input input(data, size);
    const bool isRSA = input.take() % 2 == 0;
    const unsigned position = input.take();
    const Bytes bytes = input.toBytes();
    if (!isRSA) {
        require(!verify(getDSAKey(), text, bytes) || !verify(getDSAKey(), "another copy", bytes),
                "a signature signs one text");
        return;
    }
    require(verify(getRSAKey(), text, bytes) == (bytes == signature), "nothing but the signature verifies");
    // The signature with bytes of the input somewhere within it.
    Bytes changed = signature;
    for (std::size_t i = 0; i < bytes.size() && position + i < changed.size(); ++i)
        changed[position + i] = bytes[i];
    require(verify(getRSAKey(), text, changed) == (changed == signature), "nothing but the signature verifies");
}

} // namespace sarn_fuzz
