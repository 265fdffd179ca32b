// SPDX-License-Identifier: Apache-2.0
/// \file
/// Signatures over data and files. Keys are PEM texts (RFC 7468), signatures raw bytes or Base64 text files.
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

/// One signing operation: data in order, then one finish(). Owned by one thread at a time.
class SARN_EXPORT ISigner : public virtual ul::IBase {
public:
    ISigner();
    ISigner(const ISigner&);
    ISigner(ISigner&&) noexcept;
    ISigner& operator=(const ISigner&);
    ISigner& operator=(ISigner&&) noexcept;
    ~ISigner() override;

    /// Room in bytes that the signature needs at most.
    virtual int getMaxSignatureSize() const = 0;
    /// Adds `size` bytes of data.
    /// \throws ul::CInvalidArgError "invalid data size" if `size` is negative; ul::CError "OpenSSL sign error."
    virtual void update(const void* data, int size) = 0;
    /// Writes the signature to `signature`, which must have room for getMaxSignatureSize() bytes, and its length to
    /// `size`.
    /// \throws ul::CError "OpenSSL sign error."; `size` is unchanged then
    virtual void finish(void* signature, int& size) = 0;

    /// Puts the signature into a buffer, in place of what that held. If this fails the buffer's used size is
    /// getMaxSignatureSize().
    void finish(ul::TBuffer<unsigned char>& signature);
};

/// One verifying operation: data in order, then one finish(). Owned by one thread at a time.
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
    /// Whether a signature of `size` bytes is one of the data. One that does not match is an answer, not an error.
    /// No signature has a negative size.
    /// \throws ul::CError "OpenSSL verify error." if libcrypto cannot tell
    virtual bool finish(const void* signature, int size) = 0;

    /// The same for the used bytes of a buffer.
    bool finish(const ul::TBuffer<unsigned char>& signature);
};

/// A signature algorithm. It keeps no state: any number of threads may use one object at once.
class SARN_EXPORT ISignatureAlgo : public virtual ul::IBase {
public:
    ISignatureAlgo();
    ISignatureAlgo(const ISignatureAlgo&);
    ISignatureAlgo(ISignatureAlgo&&) noexcept;
    ISignatureAlgo& operator=(const ISignatureAlgo&);
    ISignatureAlgo& operator=(ISignatureAlgo&&) noexcept;
    ~ISignatureAlgo() override;

    /// Starts to sign with a private key, traditional or PKCS #8. The passphrase, Latin-1, serves an encrypted one;
    /// nobody is ever asked for it. \throws ul::CError "OpenSSL sign init error.", "OpenSSL key corrupted."
    virtual ul::P<ISigner> beginSign(const ul::String& privateKey, const ul::String& passphrase) = 0;
    /// Starts to verify with a public key (SubjectPublicKeyInfo; not a certificate, not encrypted).
    /// \throws ul::CError "OpenSSL verify init error.", "OpenSSL key corrupted."
    virtual ul::P<IVerifier> beginVerify(const ul::String& publicKey) = 0;
};

/// Signatures by libcrypto: the digest is given here, the scheme by the kind of key: RSA (PKCS #1 v1.5, RFC 8017), DSA
/// (FIPS 186), or another that libcrypto signs digests with, such as EC. Of kinds that sign no digest keys are read,
/// but signing ends in "OpenSSL sign error." and verifying in "OpenSSL verify error.".
class SARN_EXPORT COpenSSLSignatureAlgo : public ul::CBase, public virtual ISignatureAlgo {
public:
    class CSigner;
    class CVerifier;

    /// \param md libcrypto's description of the digest, not null; it must outlive this object, its signers and
    /// verifiers
    explicit COpenSSLSignatureAlgo(const EVP_MD* md);
    COpenSSLSignatureAlgo(const COpenSSLSignatureAlgo&);
    COpenSSLSignatureAlgo& operator=(const COpenSSLSignatureAlgo&);
    ~COpenSSLSignatureAlgo() override;

    ul::P<ISigner> beginSign(const ul::String& privateKey, const ul::String& passphrase) override;
    ul::P<IVerifier> beginVerify(const ul::String& publicKey) override;

private:
    const EVP_MD* m_md;
};

/// A signer with its key and its running digest. Copying is not supported: the copy would free both a second time,
/// which is undefined behaviour.
///
/// The members are plain pointers: a construction that fails is to leave the context as it is, not freed, and no
/// destructor runs then. That CBase is a virtual base, unlike the algorithm's, is part of the layout that hosts are
/// compiled against.
class SARN_EXPORT COpenSSLSignatureAlgo::CSigner : public virtual ul::CBase, public virtual ISigner {
public:
    /// Reads the key, PEM text, and starts the digest.
    /// \throws ul::CError as ISignatureAlgo::beginSign() does
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

/// A verifier with its key and its running digest. Copying is not supported, and the members are plain, as for CSigner.
class SARN_EXPORT COpenSSLSignatureAlgo::CVerifier : public virtual ul::CBase, public virtual IVerifier {
public:
    /// Reads the key, PEM text, and starts the digest.
    /// \throws ul::CError as ISignatureAlgo::beginVerify() does
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

/// Signatures over SHA-1 with RSA keys. As with createDSS_SHA1() it is the key that decides.
SARN_EXPORT ul::P<ISignatureAlgo> createRSA_SHA1();
/// Signatures over SHA-1 with DSA keys.
SARN_EXPORT ul::P<ISignatureAlgo> createDSS_SHA1();

/// Signs a file with a private key that is not encrypted. The file is read in pieces of 8192 bytes. Safe from any
/// thread, as are the functions below.
/// \throws ul::CFileError; ul::CError as ISignatureAlgo::beginSign() and ISigner do
SARN_EXPORT void createFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path,
                                              const ul::String& privateKey, ul::TBuffer<unsigned char>& signature);

/// Whether `signature` is one of the file.
/// \throws ul::CFileError; ul::CError as ISignatureAlgo::beginVerify() and IVerifier do
SARN_EXPORT bool verifyFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path,
                                              const ul::String& publicKey, const ul::TBuffer<unsigned char>& signature);

/// Whether the signature in the file `signaturePath`, which is read first, is one of the file.
/// \throws ul::CFileError, also for a missing signature file; ul::CInvalidArgError as base64Decode() does; ul::CError
SARN_EXPORT bool verifyFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path,
                                              const ul::String& publicKey,
                                              const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath);

/// Reads a signature file: Base64 text in UTF-8, at most 65536 bytes. A larger file is refused before it is read.
/// \throws ul::CFileError; ul::CError "Invalid UTF-8 text."; ul::CInvalidArgError as base64Decode() does
SARN_EXPORT void loadSignatureBase64(const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath,
                                     ul::TBuffer<unsigned char>& signature);

/// Writes a signature file, with padding and line breaks, in place of one that is there, as a whole.
/// \throws ul::CFileError
SARN_EXPORT void storeSignatureBase64(const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath,
                                      const ul::TBuffer<unsigned char>& signature);

} // namespace sarn
