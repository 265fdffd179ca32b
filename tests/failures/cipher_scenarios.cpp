// SPDX-License-Identifier: Apache-2.0
#include "failures/scenarios.h"
#include "support/cipher_test_data.h"

namespace sarn_test {

namespace {

using sarn::ICipher;
using Operation = decltype(&ICipher::encrypt);

const Bytes iv = makePattern(16);
const Bytes text = makePattern(100);
const Bytes wholeBlocks = makePattern(96);

/// A buffer after an operation has appended its result to it, or put it into it.
Bytes apply(const std::string& id, Operation operation, const Bytes& input, bool append, const Bytes& givenIV = iv) {
    const ul::P<ICipher> cipher = getAnyCipher(id);
    ul::TBuffer<unsigned char> out;
    fill(out, makePattern(append ? 5 : 0));
    (cipher.get()->*operation)(TestKey(cipher->getKeySize()), input.data(), static_cast<int>(input.size()), out, append,
                               givenIV.empty() ? nullptr : givenIV.data());
    return toBytes(out);
}

/// Encrypts and decrypts, under a random IV if none is given: the plaintext is the same each time.
Bytes restore(const std::string& id, bool append, const Bytes& givenIV) {
    return apply(id, &ICipher::decrypt, apply(id, &ICipher::encrypt, text, false, givenIV), append, givenIV);
}

} // namespace

Scenarios makeCipherScenarios() {
    Scenarios scenarios;
    for (const std::string& id : getCipherIDs()) {
        const auto add = [&](const char* name, const Run& run) { scenarios.push_back({name + ("_" + id), run}); };
        add("Encrypt", [=] { return apply(id, &ICipher::encrypt, text, false); });
        add("EncryptAppended", [=] { return apply(id, &ICipher::encrypt, text, true); });
        add("EncryptUnpadded", [=] { return apply(id, &ICipher::encryptWithoutPadding, text, true); });
        add("DecryptUnpadded", [=] { return apply(id, &ICipher::decryptWithoutPadding, wholeBlocks, false); });
        add("Decrypt", [=] { return restore(id, false, iv); });
        add("DecryptAppended", [=] { return restore(id, true, iv); });
        add("RoundTrip", [=] { return restore(id, false, {}); });
    }
    return scenarios;
}

} // namespace sarn_test
