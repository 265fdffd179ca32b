// SPDX-License-Identifier: Apache-2.0
/// \file
/// The cipher that leaves data unchanged.
#pragma once

#include "sarn/cipher_interface.h"

namespace sarn {

/// "null": copies data unchanged, even if they overlap `out`. It accepts any key and IV and ignores both. Its key size
/// and IV size are 0, its block size is 1. A negative size, a result of more than 2^31 - 1 bytes and a key that is
/// `out` raise the errors of COpenSSLCipher.
class SARN_EXPORT CCipher_Null : public ul::CBase, public virtual ICipher {
public:
    CCipher_Null();
    CCipher_Null(const CCipher_Null&);
    CCipher_Null(CCipher_Null&&) noexcept;
    CCipher_Null& operator=(const CCipher_Null&);
    CCipher_Null& operator=(CCipher_Null&&) noexcept;
    ~CCipher_Null() override;

    ul::String getID() override;
    int getKeySize() const override;
    int getIVSize() const override;
    int getBlockSize() const override;

    void encrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                 ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;
    void decrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                 ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;
    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;
    void decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;
};

} // namespace sarn
