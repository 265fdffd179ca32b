// SPDX-License-Identifier: Apache-2.0
#include "sarn/openssl_init.h"
#include "sarn/signature.h"

#include <openssl/evp.h>

#include <string>

namespace sarn {

namespace {

/// A Latin-1 copy of a text, wiped after the call. It may be secret: a host may even pass a private key to
/// beginVerify() by mistake.
class SecretText {
public:
    explicit SecretText(const ul::String& text) : m_text(text.toLatin1()) {}
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText() { ul::wipe(m_text.data(), m_text.size()); }
    const char* c_str() const noexcept { return m_text.c_str(); }

private:
    std::string m_text;
};

} // namespace

ISigner::ISigner() = default;
ISigner::ISigner(const ISigner&) = default;
ISigner::ISigner(ISigner&&) noexcept = default;
ISigner& ISigner::operator=(const ISigner&) = default;
ISigner& ISigner::operator=(ISigner&&) noexcept = default;
ISigner::~ISigner() = default;

IVerifier::IVerifier() = default;
IVerifier::IVerifier(const IVerifier&) = default;
IVerifier::IVerifier(IVerifier&&) noexcept = default;
IVerifier& IVerifier::operator=(const IVerifier&) = default;
IVerifier& IVerifier::operator=(IVerifier&&) noexcept = default;
IVerifier::~IVerifier() = default;

ISignatureAlgo::ISignatureAlgo() = default;
ISignatureAlgo::ISignatureAlgo(const ISignatureAlgo&) = default;
ISignatureAlgo::ISignatureAlgo(ISignatureAlgo&&) noexcept = default;
ISignatureAlgo& ISignatureAlgo::operator=(const ISignatureAlgo&) = default;
ISignatureAlgo& ISignatureAlgo::operator=(ISignatureAlgo&&) noexcept = default;
ISignatureAlgo::~ISignatureAlgo() = default;

void ISigner::finish(ul::TBuffer<unsigned char>& signature) {
    signature.setUsed(getMaxSignatureSize());
    int size = 0;
    finish(signature.getData(), size);
    signature.setUsed(size);
}

bool IVerifier::finish(const ul::TBuffer<unsigned char>& signature) {
    return finish(signature.getData(), signature.getUsed());
}

COpenSSLSignatureAlgo::COpenSSLSignatureAlgo(const EVP_MD* md) {
    // The two lines of ensureInitialized(), repeated here on purpose: sessions rely on exactly these two objects in
    // this order, even if that function does more one day.
    COpenSSLInit::CThreadStuff::get();
    COpenSSLInit::CCleaner::get();
    m_md = md;
}

COpenSSLSignatureAlgo::COpenSSLSignatureAlgo(const COpenSSLSignatureAlgo&) = default;
COpenSSLSignatureAlgo& COpenSSLSignatureAlgo::operator=(const COpenSSLSignatureAlgo&) = default;
COpenSSLSignatureAlgo::~COpenSSLSignatureAlgo() = default;

ul::P<ISigner> COpenSSLSignatureAlgo::beginSign(const ul::String& privateKey, const ul::String& passphrase) {
    return ul::make<CSigner>(m_md, SecretText(privateKey).c_str(), SecretText(passphrase).c_str());
}

ul::P<IVerifier> COpenSSLSignatureAlgo::beginVerify(const ul::String& publicKey) {
    return ul::make<CVerifier>(m_md, SecretText(publicKey).c_str());
}

// The two are the same on purpose: the key decides the scheme. Hosts call the one that names their kind of key.
ul::P<ISignatureAlgo> createRSA_SHA1() {
    return ul::make<COpenSSLSignatureAlgo>(EVP_sha1());
}

ul::P<ISignatureAlgo> createDSS_SHA1() {
    return ul::make<COpenSSLSignatureAlgo>(EVP_sha1());
}

} // namespace sarn
