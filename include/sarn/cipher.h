// SPDX-License-Identifier: Apache-2.0
/// \file
/// Block ciphers in CBC mode (NIST SP 800-38A), chosen by a short identifier.
#pragma once

#include "sarn/object_model.h"

#include "ul/global_slot.h"
#include "ul/map.h"
#include "ul/mutex.h"

struct evp_cipher_st;
/// libcrypto's description of a cipher.
typedef struct evp_cipher_st EVP_CIPHER;

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
    /// drawn and written ahead of the ciphertext.
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

/// A cipher over one of libcrypto's CBC ciphers.
///
/// Beside the errors of each operation all raise ul::CInvalidArgError "invalid key size" first of all, "invalid input
/// data size" for a negative size, "input data is too large" if the result could exceed 2^31 - 1 bytes, "key overlaps
/// output" if `out` is the key, and "input overlaps output" if the input lies in `out` where it would be overwritten
/// before it is read; ul::CError "OpenSSL encrypt init error." if libcrypto refuses the cipher, on the decrypting paths
/// as well.
class SARN_EXPORT COpenSSLCipher : public ul::CBase, public virtual ICipher {
public:
    /// \param cipher libcrypto's description of the cipher, which must outlive this object
    /// \param id     the identifier
    /// \throws ul::CInvalidArgError "cipher cannot be NULL"; "cipher is not in CBC mode", also of one that
    /// authenticates;
    ///         "IV is too long" if it takes more than 16 bytes
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
    ///         the system has none to give
    void encrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                 ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

    /// \throws ul::CInvalidArgError "invalid input data size" if `iv` is null and the input is shorter than one;
    ///         ul::CError "OpenSSL decrypt error.", the usual result of a wrong key or damaged data
    void decrypt(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                 ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

    /// \throws ul::CInvalidArgError "IV cannot be NULL"; ul::CError "OpenSSL encrypt error."; ul::CError "OpenSSL
    ///         encrypt error: output size does not match expected value" with "outSize" and "expectedOutSize"
    void encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

    /// \throws ul::CInvalidArgError "IV cannot be NULL", "data size must be a multiple of the block size"; ul::CError
    ///         "OpenSSL decrypt error."; ul::CError "OpenSSL decrypt error: decrypted size does not match expected
    ///         value" with "outSize" and "expectedOutSize"
    void decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>& key, const void* data, int size,
                               ul::TBuffer<unsigned char>& out, bool append, const unsigned char* iv) override;

private:
    void checkKey(const ul::TCryptBuffer<unsigned char>& key, const char* where) const;

    const EVP_CIPHER* m_cipher;
    int m_keySize;
    int m_ivSize;
    int m_blockSize;
    ul::String m_id;
    // What encryptWithoutPadding() completes a partial last block with.
    ul::TBuffer<unsigned char> m_zeroBlock;
};

/// "aes256cbc": AES (FIPS 197) with a key of 32 bytes, IV and blocks of 16.
class SARN_EXPORT CCipher_AES256CBC : public COpenSSLCipher {
public:
    CCipher_AES256CBC();
    CCipher_AES256CBC(const CCipher_AES256CBC&);
    CCipher_AES256CBC(CCipher_AES256CBC&&);
    CCipher_AES256CBC& operator=(const CCipher_AES256CBC&);
    CCipher_AES256CBC& operator=(CCipher_AES256CBC&&);
};

/// "aes128cbc": AES (FIPS 197) with a key of 16 bytes, IV and blocks of 16.
class SARN_EXPORT CCipher_AES128CBC : public COpenSSLCipher {
public:
    CCipher_AES128CBC();
    CCipher_AES128CBC(const CCipher_AES128CBC&);
    CCipher_AES128CBC(CCipher_AES128CBC&&);
    CCipher_AES128CBC& operator=(const CCipher_AES128CBC&);
    CCipher_AES128CBC& operator=(CCipher_AES128CBC&&);
};

/// "bfcbc": Blowfish with a key of 16 bytes, IV and blocks of 8. For data of old backups.
class SARN_EXPORT CCipher_BlowFishCBC : public COpenSSLCipher {
public:
    CCipher_BlowFishCBC();
    CCipher_BlowFishCBC(const CCipher_BlowFishCBC&);
    CCipher_BlowFishCBC(CCipher_BlowFishCBC&&);
    CCipher_BlowFishCBC& operator=(const CCipher_BlowFishCBC&);
    CCipher_BlowFishCBC& operator=(CCipher_BlowFishCBC&&);
};

/// "cast128cbc": CAST-128 (RFC 2144) with a key of 16 bytes, IV and blocks of 8. For data of old backups.
class SARN_EXPORT CCipher_Cast128CBC : public COpenSSLCipher {
public:
    CCipher_Cast128CBC();
    CCipher_Cast128CBC(const CCipher_Cast128CBC&);
    CCipher_Cast128CBC(CCipher_Cast128CBC&&);
    CCipher_Cast128CBC& operator=(const CCipher_Cast128CBC&);
    CCipher_Cast128CBC& operator=(CCipher_Cast128CBC&&);
};

/// "ideacbc": IDEA with a key of 16 bytes, IV and blocks of 8. The registry does not offer it by itself: a host that
/// needs it registers an object.
class SARN_EXPORT CCipher_IDEACBC : public COpenSSLCipher {
public:
    /// \throws ul::CError "IDEA is not available in this OpenSSL." if libcrypto was built without it
    CCipher_IDEACBC();
    CCipher_IDEACBC(const CCipher_IDEACBC&);
    CCipher_IDEACBC(CCipher_IDEACBC&&);
    CCipher_IDEACBC& operator=(const CCipher_IDEACBC&);
    CCipher_IDEACBC& operator=(CCipher_IDEACBC&&);
};

/// "null": copies data unchanged, wherever they lie. It takes a key and an initialisation vector of any size and
/// ignores them; its sizes are 0, 0 and a block of 1 byte. It refuses what no cipher can work with, with
/// COpenSSLCipher's messages: a negative size, a result of more than 2^31 - 1 bytes, and the key as `out`.
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

/// The process-wide registry of ciphers by identifier. It starts with "aes256cbc", "aes128cbc", "bfcbc", "cast128cbc"
/// and "null". Identifiers are compared exactly, case included. All operations are safe from any thread, but for
/// dispose() and disposeGlobalInstance().
class SARN_EXPORT CCipherManager : public ul::CBase {
public:
    /// The registry, created on first use.
    static const ul::P<CCipherManager>& get();

    CCipherManager();
    CCipherManager(const CCipherManager&) = delete;
    CCipherManager& operator=(const CCipherManager&) = delete;
    ~CCipherManager() override;

    /// Registers `cipher` under its identifier, in place of the one that stood there. The registry adds a reference of
    /// its own. Other threads wait while getID() and the destructor of the replaced cipher run: neither may wait for a
    /// thread that uses the registry.
    /// \throws ul::CInvalidArgError "cipher cannot be NULL"; whatever getID() of `cipher` throws. The registry is
    ///         unchanged then.
    void addCipher(ICipher* cipher);

    /// The cipher registered under `id`, or null.
    ul::P<ICipher> findCipher(const ul::String& id);

    /// The cipher registered under `id`.
    /// \throws ul::CError "Unknown cipher id '<id>'." if there is none
    ul::P<ICipher> getCipher(const ul::String& id);

protected:
    /// Drops all ciphers. Takes no lock: no other thread may use the registry meanwhile.
    void dispose();

    /// Drops all ciphers of the process-wide registry, which stays empty but for what the host adds. Takes no lock.
    static void disposeGlobalInstance();

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    ul::CMutex m_mutex;
    ul::TMap<ul::String, ul::P<ICipher>> m_ciphers;
};

} // namespace sarn
