// SPDX-License-Identifier: Apache-2.0
/// \file
/// The interface of all ciphers.
#pragma once

#include "sarn/object_model.h"

namespace sarn {

/// A symmetric cipher. It has no state between calls: any number of threads may use one object at once.
///
/// The four data operations share their parameters. All sizes are in bytes and are `int`; a host with more than
/// 2^31 - 1 bytes works in pieces.
/// - `key`: its used size must be getKeySize(). The operation neither keeps nor wipes it.
/// - `data`, `size`: the input.
/// - `out`: receives the result, after its content if `append` is true, in place of it otherwise. Bytes before the
///   result are left untouched. The block grows at most once.
/// - `iv`: IV of getIVSize() bytes, or null, whose meaning is given for each operation. It may be inside `out`.
///
/// `data` may be inside `out` if `out` need not grow and the data end before the place of the result, or start exactly
/// where the bytes made from them go. For encrypt() without `iv` that is after the room for the IV; for decrypt()
/// without `iv` the first getIVSize() bytes of the input do not count as data here.
///
/// Each operation raises ul::CInvalidArgError for a key of the wrong size, a negative size, a result of more than
/// 2^31 - 1 bytes, `data` or `key` that overlap `out` otherwise, a missing `iv` where one is required, and input too
/// short to contain its IV; `out` is unchanged then. It raises ul::CError if the data cannot be processed: `out` keeps
/// its content before the result; the used size and the rest are undefined. A wrong key is not an error in itself:
/// decrypt() detects it by the padding, which is valid by chance for one wrong key in 256.
class SARN_EXPORT ICipher : public virtual ul::IBase {
public:
    ICipher();
    ICipher(const ICipher&);
    ICipher(ICipher&&) noexcept;
    ICipher& operator=(const ICipher&);
    ICipher& operator=(ICipher&&) noexcept;
    ~ICipher() override;

    /// The identifier, for example "aes256cbc".
    virtual ul::String getID() = 0;
    /// Size of the key in bytes.
    virtual int getKeySize() const = 0;
    /// Size of the IV in bytes.
    virtual int getIVSize() const = 0;
    /// Size of a block in bytes.
    virtual int getBlockSize() const = 0;

    /// Encrypts, padding to whole blocks with 1 to getBlockSize() bytes (PKCS #7). If `iv` is null, draws a random IV
    /// and writes it before the ciphertext.
    virtual void encrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                         ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;

    /// Reverses encrypt(). If `iv` is null, the input starts with the IV.
    virtual void decrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                         ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;

    /// Encrypts, completing a partial last block with zero bytes. The length of the input is not recorded. Requires
    /// `iv`.
    virtual void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                                       ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;

    /// Decrypts whole blocks and removes nothing, not even the zero bytes of encryptWithoutPadding(). Requires `iv`.
    virtual void decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                                       ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;
};

} // namespace sarn
