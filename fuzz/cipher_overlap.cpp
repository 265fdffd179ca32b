// SPDX-License-Identifier: Apache-2.0
// Input in the output buffer is processed like input elsewhere, or refused before anything is written.
#include "ciphers.h"
#include "targets.h"

namespace sarn_fuzz {

namespace {

using Operation = void (sarn::ICipher::*)(const Key&, const void*, int, Buffer&, bool, const unsigned char*);

constexpr Operation operations[] = {&sarn::ICipher::encrypt, &sarn::ICipher::decrypt,
                                    &sarn::ICipher::encryptWithoutPadding, &sarn::ICipher::decryptWithoutPadding};

} // namespace

void fuzzCipherOverlap(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const ChosenCipher chosen = chooseCipher(input.take());
    const Key key = makeKey(chosen.cipher->getKeySize());
    const Operation operation = operations[input.take() % 4];
    const Bytes iv = sarn_test::makePattern(16);
    const int allocated = static_cast<int>(input.take());
    Buffer out(allocated, -1);
    const Bytes content = sarn_test::makePattern(allocated);
    std::copy(content.begin(), content.end(), out.getData());
    const int used = allocated == 0 ? 0 : static_cast<int>(input.take()) % (allocated + 1);
    const int start = allocated == 0 ? 0 : static_cast<int>(input.take()) % (allocated + 1);
    const int length = start == allocated ? 0 : static_cast<int>(input.take()) % (allocated - start + 1);
    const bool append = input.take() % 2 == 1;
    out.setUsed(used);

    const Bytes text(content.begin() + start, content.begin() + start + length);
    Buffer elsewhere;
    elsewhere.init(content.data(), used);
    bool isPossible = true;
    try {
        (chosen.cipher.get()->*operation)(key, text.data(), length, elsewhere, append, iv.data());
    } catch (const ul::CError&) {
        isPossible = false;
    }
    try {
        (chosen.cipher.get()->*operation)(key, out.getData() + start, length, out, append, iv.data());
        require(isPossible && toBytes(out) == toBytes(elsewhere), "the result does not depend on where the input lies");
    } catch (const ul::CInvalidArgError&) {
        require(toBytes(out) == Bytes(content.begin(), content.begin() + used), "a refusal leaves the output");
    } catch (const ul::CError&) {
        require(!isPossible, "what fails in place fails elsewhere");
    }
}

} // namespace sarn_fuzz
