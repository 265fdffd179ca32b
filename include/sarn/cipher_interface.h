// SPDX-License-Identifier: Apache-2.0
/// \file
/// What every cipher offers.
#pragma once

#include "sarn/object_model.h"

namespace sarn {

/// A symmetric cipher. It keeps no state between calls: any number of threads may use one object at once.
///
/// The four data operations share their arguments. All sizes are in bytes and are `int`: a host that has more than
/// 2^31 - 1 bytes works in pieces.
/// - `key`: the key; its used size must be getKeySize(). It is neither copied nor wiped.
/// - `data`, `size`: the input.
/// - `out`: receives the result, before which nothing is touched. The result replaces the content if `append` is
///   false, else it follows what `out` holds. The block grows at most once.
/// - `iv`: initialisation vector of getIVSize() bytes, or null, which each operation reads in its own way. It may lie
///   in `out`.
///
/// `data` may lie in `out` if `out` need not grow and the data end before the place of the result, or start exactly
/// where what is made of them goes: for encrypt() without `iv` that is behind the room for the IV. Of what decrypt() is
/// given without `iv` the first getIVSize() bytes are not data in this sense.
///
/// All operations throw ul::CInvalidArgError for a key of another size, a size below zero or a result of more than
/// 2^31 - 1 bytes, for `data` or `key` in the way of `out`, and for a missing or short `iv`: `out` is untouched then.
/// They throw ul::CError if the data cannot be processed: what `out` held before the result is still there, the used
/// size and the rest are undefined. A wrong key is no error by itself: decrypt() notices it by the padding, which one
/// wrong key in 256 passes by chance.
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
    /// Length of the key in bytes.
    virtual int getKeySize() const = 0;
    /// Length of the initialisation vector in bytes.
    virtual int getIVSize() const = 0;
    /// Length of a cipher block in bytes.
    virtual int getBlockSize() const = 0;

    /// Encrypts and pads to whole blocks with 1 to getBlockSize() bytes (PKCS #7). If `iv` is null a random one is
    /// drawn and written before the ciphertext.
    virtual void encrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                         ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;

    /// Reverses encrypt(). If `iv` is null it is taken from the front of the input.
    virtual void decrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                         ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;

    /// Encrypts and completes a partial last block with zero bytes; the true length is recorded nowhere. `iv` is
    /// required.
    virtual void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                                       ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;

    /// Decrypts whole blocks and removes nothing, not even the zero bytes of encryptWithoutPadding(). `iv` is required.
    virtual void decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                                       ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) = 0;
};

} // namespace sarn
