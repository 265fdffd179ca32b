// SPDX-License-Identifier: Apache-2.0
/// \file
/// Ciphers of libcrypto in CBC mode (NIST SP 800-38A).
#pragma once

#include "sarn/cipher_interface.h"

struct evp_cipher_st;
/// libcrypto's description of a cipher.
typedef struct evp_cipher_st EVP_CIPHER;

namespace sarn {

/// A cipher that uses one of libcrypto's CBC ciphers.
///
/// In addition to its own errors, each operation raises ul::CInvalidArgError "invalid key size" before any other;
/// "invalid input data size" for a negative size; "input data is too large" if the result could exceed 2^31 - 1 bytes;
/// "key overlaps output" if `out` is the key; "input overlaps output" if the input is inside `out` where it would be
/// overwritten before it is read. It raises ul::CError "OpenSSL encrypt init error." if libcrypto refuses the cipher;
/// the decrypting operations raise the same message.
class SARN_EXPORT COpenSSLCipher : public ul::CBase, public virtual ICipher {
public:
    /// \param cipher libcrypto's description of the cipher; it must outlive this object
    /// \param id     the identifier
    /// \throws ul::CInvalidArgError "cipher cannot be NULL"; "cipher is not in CBC mode", also for a cipher that
    ///         authenticates; "IV is too long" if the IV has more than 16 bytes.
    COpenSSLCipher(const EVP_CIPHER* cipher, const ul::String& id);
    COpenSSLCipher(const COpenSSLCipher&);
    COpenSSLCipher(COpenSSLCipher&&);
    COpenSSLCipher& operator=(const COpenSSLCipher&);
    COpenSSLCipher& operator=(COpenSSLCipher&&);
    ~COpenSSLCipher() override;

    ul::String getID() override;
    int getKeySize() const override;
    int getIVSize() const override;
    int getBlockSize() const override;

    /// \throws ul::CError "OpenSSL encrypt error."; "Random bytes are not available." with "reason" if `iv` is null and
    ///         the system provides none.
    void encrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                 ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

    /// \throws ul::CInvalidArgError "invalid input data size" if `iv` is null and the input is shorter than an IV;
    ///         ul::CError "OpenSSL decrypt error.", the usual result of a wrong key or damaged data.
    void decrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                 ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

    /// \throws ul::CInvalidArgError "IV cannot be NULL"; ul::CError "OpenSSL encrypt error."; ul::CError "OpenSSL
    ///         encrypt error: output size does not match expected value" with "outSize" and "expectedOutSize".
    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

    /// \throws ul::CInvalidArgError "IV cannot be NULL", "data size must be a multiple of the block size"; ul::CError
    ///         "OpenSSL decrypt error."; ul::CError "OpenSSL decrypt error: decrypted size does not match expected
    ///         value" with "outSize" and "expectedOutSize".
    void decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

private:
    void checkKey(const ul::TCryptBuffer<unsigned char>& key, const char* where) const;

    const EVP_CIPHER* m_cipher;
    int m_keySize;
    int m_ivSize;
    int m_blockSize;
    ul::String m_id;
    // Zero bytes with which encryptWithoutPadding() completes a partial last block.
    ul::TBuffer<unsigned char> m_zeroBlock;
};

/// "aes256cbc": AES (FIPS 197), key of 32 bytes, IV and blocks of 16.
class SARN_EXPORT CCipher_AES256CBC : public COpenSSLCipher {
public:
    CCipher_AES256CBC();
    CCipher_AES256CBC(const CCipher_AES256CBC&);
    CCipher_AES256CBC(CCipher_AES256CBC&&);
    CCipher_AES256CBC& operator=(const CCipher_AES256CBC&);
    CCipher_AES256CBC& operator=(CCipher_AES256CBC&&);
};

/// "aes128cbc": AES (FIPS 197), key of 16 bytes, IV and blocks of 16.
class SARN_EXPORT CCipher_AES128CBC : public COpenSSLCipher {
public:
    CCipher_AES128CBC();
    CCipher_AES128CBC(const CCipher_AES128CBC&);
    CCipher_AES128CBC(CCipher_AES128CBC&&);
    CCipher_AES128CBC& operator=(const CCipher_AES128CBC&);
    CCipher_AES128CBC& operator=(CCipher_AES128CBC&&);
};

/// "bfcbc": Blowfish, key of 16 bytes, IV and blocks of 8. For old backups.
class SARN_EXPORT CCipher_BlowFishCBC : public COpenSSLCipher {
public:
    CCipher_BlowFishCBC();
    CCipher_BlowFishCBC(const CCipher_BlowFishCBC&);
    CCipher_BlowFishCBC(CCipher_BlowFishCBC&&);
    CCipher_BlowFishCBC& operator=(const CCipher_BlowFishCBC&);
    CCipher_BlowFishCBC& operator=(CCipher_BlowFishCBC&&);
};

/// "cast128cbc": CAST-128 (RFC 2144), key of 16 bytes, IV and blocks of 8. For old backups.
class SARN_EXPORT CCipher_Cast128CBC : public COpenSSLCipher {
public:
    CCipher_Cast128CBC();
    CCipher_Cast128CBC(const CCipher_Cast128CBC&);
    CCipher_Cast128CBC(CCipher_Cast128CBC&&);
    CCipher_Cast128CBC& operator=(const CCipher_Cast128CBC&);
    CCipher_Cast128CBC& operator=(CCipher_Cast128CBC&&);
};

/// "ideacbc": IDEA, key of 16 bytes, IV and blocks of 8. Not registered by default: call CCipherManager::addCipher() if
/// you need it.
class SARN_EXPORT CCipher_IDEACBC : public COpenSSLCipher {
public:
    /// \throws ul::CError "IDEA is not available in this OpenSSL." if libcrypto was built without it.
    CCipher_IDEACBC();
    CCipher_IDEACBC(const CCipher_IDEACBC&);
    CCipher_IDEACBC(CCipher_IDEACBC&&);
    CCipher_IDEACBC& operator=(const CCipher_IDEACBC&);
    CCipher_IDEACBC& operator=(CCipher_IDEACBC&&);
};

} // namespace sarn
