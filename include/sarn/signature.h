// SPDX-License-Identifier: Apache-2.0
/// \file
/// Signatures over data and files. Keys are PEM texts (RFC 7468); signatures are raw bytes or Base64 text files.
#pragma once

#include "sarn/object_model.h"

#include "ul/path.h"

struct evp_md_st;
/// libcrypto's description of a digest.
typedef struct evp_md_st EVP_MD;
struct evp_md_ctx_st;
/// libcrypto's running digest.
typedef struct evp_md_ctx_st EVP_MD_CTX;
struct evp_pkey_st;
/// libcrypto's key.
typedef struct evp_pkey_st EVP_PKEY;

namespace sarn {

/// A signing session: update() with the data in order, then finish() once. Owned by one thread at a time.
class SARN_EXPORT ISigner : public virtual ul::IBase {
public:
    ISigner();
    ISigner(const ISigner&);
    ISigner(ISigner&&) noexcept;
    ISigner& operator=(const ISigner&);
    ISigner& operator=(ISigner&&) noexcept;
    ~ISigner() override;

    /// Upper bound of the signature's size in bytes.
    virtual int getMaxSignatureSize() const = 0;
    /// Adds `size` bytes of data.
    /// \throws ul::CInvalidArgError "invalid data size" if `size` is negative; ul::CError "OpenSSL sign error."
    virtual void update(const void* data, int size) = 0;
    /// Writes the signature to `signature` and its size in bytes to `size`. Requires: `signature` has room for
    /// getMaxSignatureSize() bytes.
    /// \throws ul::CError "OpenSSL sign error."; `size` is unchanged then.
    virtual void finish(void* signature, int& size) = 0;

    /// Replaces the content of a buffer by the signature. After a failure the used size of the buffer is
    /// getMaxSignatureSize().
    /// \throws as the other finish() does.
    void finish(ul::TBuffer<unsigned char>& signature);
};

/// A verifying session: update() with the data in order, then finish() once. Owned by one thread at a time.
class SARN_EXPORT IVerifier : public virtual ul::IBase {
public:
    IVerifier();
    IVerifier(const IVerifier&);
    IVerifier(IVerifier&&) noexcept;
    IVerifier& operator=(const IVerifier&);
    IVerifier& operator=(IVerifier&&) noexcept;
    ~IVerifier() override;

    /// Adds `size` bytes of data.
    /// \throws ul::CInvalidArgError "invalid data size" if `size` is negative; ul::CError "OpenSSL verify update
    ///         error."
    virtual void update(const void* data, int size) = 0;
    /// Whether the `size` bytes at `signature` are a signature of the data. A mismatch is a result, not an error; so is
    /// a negative size under an RSA key.
    /// \throws ul::CError "OpenSSL verify error." if libcrypto fails, as it does for DSA if the bytes are not DER or
    ///         `size` is negative.
    virtual bool finish(const void* signature, int size) = 0;

    /// Whether the used bytes of a buffer are a signature of the data.
    /// \throws as the other finish() does.
    bool finish(const ul::TBuffer<unsigned char>& signature);
};

/// A signature algorithm. It has no state: any number of threads may use one object at once.
class SARN_EXPORT ISignatureAlgo : public virtual ul::IBase {
public:
    ISignatureAlgo();
    ISignatureAlgo(const ISignatureAlgo&);
    ISignatureAlgo(ISignatureAlgo&&) noexcept;
    ISignatureAlgo& operator=(const ISignatureAlgo&);
    ISignatureAlgo& operator=(ISignatureAlgo&&) noexcept;
    ~ISignatureAlgo() override;

    /// Starts a signing session with a private key, traditional or PKCS #8. `passphrase` (as Latin-1) decrypts an
    /// encrypted key and is otherwise ignored. The library never prompts for one.
    /// \throws ul::CError "OpenSSL sign init error.", "OpenSSL key corrupted.".
    virtual ul::P<ISigner> beginSign(const ul::String& privateKey, const ul::String& passphrase) = 0;
    /// Starts a verifying session with a public key (SubjectPublicKeyInfo; not a certificate, not encrypted).
    /// \throws ul::CError "OpenSSL verify init error.", "OpenSSL key corrupted.".
    virtual ul::P<IVerifier> beginVerify(const ul::String& publicKey) = 0;
};

/// Signatures by libcrypto. The digest is given here; the key decides the scheme: RSA (PKCS #1 v1.5, RFC 8017), DSA
/// (FIPS 186), or another with which libcrypto signs digests, such as EC. A key of any other kind can be read, but
/// signing with it raises "OpenSSL sign error." and verifying "OpenSSL verify error.".
class SARN_EXPORT COpenSSLSignatureAlgo : public ul::CBase, public virtual ISignatureAlgo {
public:
    class CSigner;
    class CVerifier;

    /// \param md libcrypto's description of the digest, not null; it must outlive this object and its sessions
    explicit COpenSSLSignatureAlgo(const EVP_MD* md);
    COpenSSLSignatureAlgo(const COpenSSLSignatureAlgo&);
    COpenSSLSignatureAlgo& operator=(const COpenSSLSignatureAlgo&);
    ~COpenSSLSignatureAlgo() override;

    ul::P<ISigner> beginSign(const ul::String& privateKey, const ul::String& passphrase) override;
    ul::P<IVerifier> beginVerify(const ul::String& publicKey) override;

private:
    const EVP_MD* m_md;
};

/// A signing session with its key and its running digest. Copying is not supported: the copy frees both a second time,
/// which is undefined behaviour.
///
/// The members are plain pointers because a failed construction must leave the context unfreed, and no destructor runs
/// then. That CBase is a virtual base, unlike in the algorithm, is part of the layout that hosts are compiled against.
class SARN_EXPORT COpenSSLSignatureAlgo::CSigner : public virtual ul::CBase, public virtual ISigner {
public:
    /// Reads the key from PEM text and starts the digest.
    /// \throws ul::CError as ISignatureAlgo::beginSign() does.
    CSigner(const EVP_MD* md, const char* privateKeyPem, const char* passphrase);
    CSigner(const CSigner&);
    CSigner& operator=(const CSigner&);
    ~CSigner() override;

    int getMaxSignatureSize() const override;
    void update(const void* data, int size) override;
    void finish(void* signature, int& size) override;
    using ISigner::finish;

private:
    EVP_PKEY* m_key;
    EVP_MD_CTX* m_ctx;
};

/// A verifying session with its key and its running digest. Copying is not supported, and the members are plain
/// pointers, as for CSigner.
class SARN_EXPORT COpenSSLSignatureAlgo::CVerifier : public virtual ul::CBase, public virtual IVerifier {
public:
    /// Reads the key from PEM text and starts the digest.
    /// \throws ul::CError as ISignatureAlgo::beginVerify() does.
    CVerifier(const EVP_MD* md, const char* publicKeyPem);
    CVerifier(const CVerifier&);
    CVerifier& operator=(const CVerifier&);
    ~CVerifier() override;

    void update(const void* data, int size) override;
    bool finish(const void* signature, int size) override;
    using IVerifier::finish;

private:
    EVP_PKEY* m_key;
    EVP_MD_CTX* m_ctx;
};

/// Creates an algorithm for signatures over SHA-1 with RSA keys. It is the same as createDSS_SHA1(): the key decides
/// the scheme.
SARN_EXPORT ul::P<ISignatureAlgo> createRSA_SHA1();
/// Creates an algorithm for signatures over SHA-1 with DSA keys.
SARN_EXPORT ul::P<ISignatureAlgo> createDSS_SHA1();

/// Signs a file with an unencrypted private key. The file is read in pieces of 8192 bytes. Safe from any thread, like
/// the functions below.
/// \throws ul::CFileError; ul::CError as ISignatureAlgo::beginSign() and ISigner do.
SARN_EXPORT void createFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path,
                                              const ul::String& privateKey, ul::TBuffer<unsigned char>& signature);

/// Whether `signature` is a signature of the file.
/// \throws ul::CFileError; ul::CError as ISignatureAlgo::beginVerify() and IVerifier do.
SARN_EXPORT bool verifyFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path,
                                              const ul::String& publicKey, const ul::TBuffer<unsigned char>& signature);

/// Whether the file `signaturePath` contains a signature of the file `path`. The signature is read first.
/// \throws as loadSignatureBase64() and the other verifyFileSignature_RSA_SHA1() do; a missing signature file is a
///         ul::CFileError.
SARN_EXPORT bool verifyFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path,
                                              const ul::String& publicKey,
                                              const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath);

/// Reads a signature file: Base64 text in UTF-8, at most 65536 bytes. A larger file is refused before it is read.
/// \throws ul::CFileError; ul::CError "Invalid UTF-8 text."; as base64Decode() does.
SARN_EXPORT void loadSignatureBase64(const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath,
                                     ul::TBuffer<unsigned char>& signature);

/// Atomically writes or replaces a signature file: Base64 text with padding and line breaks.
/// \throws ul::CFileError.
SARN_EXPORT void storeSignatureBase64(const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath,
                                      const ul::TBuffer<unsigned char>& signature);

} // namespace sarn
