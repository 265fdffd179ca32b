// SPDX-License-Identifier: Apache-2.0
// The two sessions. A failed construction leaks its context on purpose, reset if the key was at fault: see CSigner.
#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"
#include "frame/raise.h"
#include "signature/dsa_attempts.h"

#include "sarn/signature.h"

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <cstring>

namespace sarn {

namespace {

constexpr char keyCorrupted[] = "OpenSSL key corrupted.";
constexpr char signFailed[] = "OpenSSL sign error.";

/// Creates a context with a running digest.
EVP_MD_CTX* createContext(const EVP_MD* md, const char* initFailed) {
    EVP_MD_CTX* const context = EVP_MD_CTX_new();
    if (!context || !EVP_DigestInit(context, md))
        raiseError(initFailed);
    return context;
}

BioPtr openText(const char* text) {
    return BioPtr(BIO_new_mem_buf(text, static_cast<int>(std::strlen(text))));
}

// Without a callback, libcrypto's readers take their last argument as the passphrase. If that is null they prompt on
// the terminal or read the host's standard input, for a public key too, because any text can claim to be encrypted.

/// Reads a private key from PEM text; null on failure.
EVP_PKEY* readPrivateKey(const char* pem, const char* passphrase) {
    return PEM_read_bio_PrivateKey(openText(pem).get(), nullptr, nullptr,
                                   const_cast<char*>(passphrase ? passphrase : ""));
}

/// Reads a public key from PEM text; null on failure.
EVP_PKEY* readPublicKey(const char* pem) {
    return PEM_read_bio_PUBKEY(openText(pem).get(), nullptr, nullptr, const_cast<char*>(""));
}

void checkKey(const EVP_PKEY* key, EVP_MD_CTX* context) {
    if (!key) {
        EVP_MD_CTX_reset(context);
        raiseError(keyCorrupted);
    }
}

void updateDigest(EVP_MD_CTX* context, const void* data, int size, const char* where, const char* failed) {
    if (size < 0)
        raiseInvalidArg(where, "invalid data size");
    if (!EVP_DigestUpdate(context, data, static_cast<std::size_t>(size)))
        raiseError(failed);
}

} // namespace

COpenSSLSignatureAlgo::CSigner::CSigner(const EVP_MD* md, const char* privateKeyPem, const char* passphrase) {
    const ErrorQueueMark mark;
    m_ctx = createContext(md, "OpenSSL sign init error.");
    KeyPtr key(readPrivateKey(privateKeyPem, passphrase));
    checkKey(key.get(), m_ctx);
    limitAttempts(key.get());
    m_key = key.release();
}

COpenSSLSignatureAlgo::CSigner::CSigner(const CSigner&) = default;
COpenSSLSignatureAlgo::CSigner& COpenSSLSignatureAlgo::CSigner::operator=(const CSigner&) = default;

COpenSSLSignatureAlgo::CSigner::~CSigner() {
    freeSession(m_ctx, m_key);
}

int COpenSSLSignatureAlgo::CSigner::getMaxSignatureSize() const {
    // libcrypto 3.5 queues an error for a key of size 0.
    const ErrorQueueMark mark;
    return EVP_PKEY_size(m_key);
}

void COpenSSLSignatureAlgo::CSigner::update(const void* data, int size) {
    updateDigest(m_ctx, data, size, "COpenSSLSignatureAlgo::CSigner::update", signFailed);
}

void COpenSSLSignatureAlgo::CSigner::finish(void* signature, int& size) {
    const auto largest = static_cast<unsigned>(getMaxSignatureSize());
    unsigned length = 0;
    const ErrorQueueMark mark;
    // libcrypto 3.0 reports success for a key of size 0. It also reports success, with a negative length, if it has no
    // memory to encode a DSA signature.
    if (largest == 0 || EVP_SignFinal(m_ctx, static_cast<unsigned char*>(signature), &length, m_key) <= 0 ||
        length > largest)
        raiseError(signFailed);
    size = static_cast<int>(length);
}

COpenSSLSignatureAlgo::CVerifier::CVerifier(const EVP_MD* md, const char* publicKeyPem) {
    const ErrorQueueMark mark;
    m_ctx = createContext(md, "OpenSSL verify init error.");
    m_key = readPublicKey(publicKeyPem);
    checkKey(m_key, m_ctx);
}

COpenSSLSignatureAlgo::CVerifier::CVerifier(const CVerifier&) = default;
COpenSSLSignatureAlgo::CVerifier& COpenSSLSignatureAlgo::CVerifier::operator=(const CVerifier&) = default;

COpenSSLSignatureAlgo::CVerifier::~CVerifier() {
    freeSession(m_ctx, m_key);
}

void COpenSSLSignatureAlgo::CVerifier::update(const void* data, int size) {
    updateDigest(m_ctx, data, size, "COpenSSLSignatureAlgo::CVerifier::update", "OpenSSL verify update error.");
}

bool COpenSSLSignatureAlgo::CVerifier::finish(const void* signature, int size) {
    // No signature has a negative size: libcrypto says so, but may read the first byte.
    const void* const bytes = size > 0 ? signature : "";
    const ErrorQueueMark mark;
    const int result =
        EVP_VerifyFinal(m_ctx, static_cast<const unsigned char*>(bytes), static_cast<unsigned>(size), m_key);
    if (result == -1)
        raiseError("OpenSSL verify error.");
    return result == 1;
}

} // namespace sarn
