// SPDX-License-Identifier: Apache-2.0
// Decryption gives the result of libcrypto, which encrypts to the same bytes again.
#include "ciphers.h"
#include "targets.h"

namespace sarn_fuzz {

void fuzzDecrypt(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const ChosenCipher chosen = chooseCipher(input.take());
    const Key key = makeKey(chosen.cipher->getKeySize());
    const std::optional<Bytes> decrypted = tryFill(
        [&](Buffer& out) { chosen.cipher->decrypt(key, input.getData(), input.getSize(), out, false, nullptr); });
    if (input.getSize() < 16) {
        require(!decrypted, "an input shorter than the IV is refused");
        return;
    }
    const Bytes all = input.toBytes();
    const Bytes iv(all.begin(), all.begin() + 16);
    const Bytes ciphertext(all.begin() + 16, all.end());
    require(decrypted == runRaw(chosen.raw, false, true, key, iv, ciphertext), "libcrypto decrypts the same");
    if (!decrypted)
        return;
    const std::optional<Bytes> again = tryFill([&](Buffer& out) {
        chosen.cipher->encrypt(key, decrypted->data(), static_cast<int>(decrypted->size()), out, false, iv.data());
    });
    require(again == ciphertext, "what decrypts encrypts to the same bytes");
}

// Only whole blocks decrypt without padding.
void fuzzDecryptUnpadded(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const ChosenCipher chosen = chooseCipher(input.take());
    const Key key = makeKey(chosen.cipher->getKeySize());
    const Bytes iv = sarn_test::makePattern(16);
    const Bytes ciphertext = input.toBytes();
    const std::optional<Bytes> decrypted = tryFill([&](Buffer& out) {
        chosen.cipher->decryptWithoutPadding(key, input.getData(), input.getSize(), out, false, iv.data());
    });
    require(decrypted.has_value() == (ciphertext.size() % 16 == 0), "whole blocks decrypt, others are refused");
    if (!decrypted)
        return;
    require(decrypted == runRaw(chosen.raw, false, false, key, iv, ciphertext), "libcrypto decrypts the same");
    const std::optional<Bytes> again = tryFill([&](Buffer& out) {
        chosen.cipher->encryptWithoutPadding(key, decrypted->data(), static_cast<int>(decrypted->size()), out, false,
                                             iv.data());
    });
    require(again == ciphertext, "what decrypts encrypts to the same bytes");
}

} // namespace sarn_fuzz
