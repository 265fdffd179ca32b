// SPDX-License-Identifier: Apache-2.0
#include "cipher/cipher_table.h"

#include "frame/error_queue_mark.h"
#include "frame/raise.h"

#include "sarn/openssl_init.h"

#include <openssl/evp.h>

#if OPENSSL_VERSION_NUMBER >= 0x30000000L
#include "ul/log.h"

#include <openssl/provider.h>
#endif

namespace sarn {

namespace {

const EVP_CIPHER* getBuiltInIDEA() {
#ifdef OPENSSL_NO_IDEA
    return nullptr;
#else
    return EVP_idea_cbc();
#endif
}

template <class Cipher>
ul::P<ICipher> create() {
    return ul::make<Cipher>();
}

enum RowIndex { Aes256, Aes128, Blowfish, Cast128, Idea };

// IDEA is not offered: data under it are so old and rare that a host has to register it.
// clang-format off
constexpr std::array<CipherRow, 5> table = {{
    // identifier, libcrypto's name, built-in description, legacy, offered, class
    {"aes256cbc", "AES-256-CBC", EVP_aes_256_cbc, false, true, create<CCipher_AES256CBC>},
    {"aes128cbc", "AES-128-CBC", EVP_aes_128_cbc, false, true, create<CCipher_AES128CBC>},
    {"bfcbc", "BF-CBC", EVP_bf_cbc, true, true, create<CCipher_BlowFishCBC>},
    {"cast128cbc", "CAST5-CBC", EVP_cast5_cbc, true, true, create<CCipher_Cast128CBC>},
    {"ideacbc", "IDEA-CBC", getBuiltInIDEA, true, false, create<CCipher_IDEACBC>},
}};
// clang-format on

#if OPENSSL_VERSION_NUMBER >= 0x30000000L

/// Creates a library context with the default and the legacy provider; null if memory is exhausted. It is never freed:
/// libcrypto may clean up first when the process exits, and freeing it after that would not be safe.
OSSL_LIB_CTX* createLibraryContext() {
    const ErrorQueueMark mark;
    OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
    if (context) {
        OSSL_PROVIDER_load(context, "default");
        // Without the legacy module its ciphers fail when they are used; the others work.
        OSSL_PROVIDER_load(context, "legacy");
    }
    return context;
}

/// The cipher of a name; null if there is no context or the context does not have it.
const EVP_CIPHER* fetch(OSSL_LIB_CTX* context, const char* name) {
    const ErrorQueueMark mark;
    return context ? EVP_CIPHER_fetch(context, name, nullptr) : nullptr;
}

/// Logs once why a cipher will fail: the error raised when it is used cannot say.
void logIfWithoutLegacyProvider(OSSL_LIB_CTX* context, const char* name) {
    if (!OSSL_PROVIDER_available(context, "legacy"))
        ul::logError(ul::String("OpenSSL cannot load its legacy provider, so ") + name + " will fail.");
}

/// Fetches a cipher by name. If that fails, it uses the built-in description, which knows the sizes but looks for an
/// implementation in the host's providers on each use.
const EVP_CIPHER* select(const CipherRow& row) {
    COpenSSLInit::ensureInitialized();
    static OSSL_LIB_CTX* const context = createLibraryContext();
    const EVP_CIPHER* const fetched = fetch(context, row.libcryptoName);
    if (fetched)
        return fetched;
    const EVP_CIPHER* const builtIn = row.getBuiltIn();
    if (context && builtIn && row.isLegacy)
        logIfWithoutLegacyProvider(context, row.libcryptoName);
    return builtIn;
}

#else

const EVP_CIPHER* select(const CipherRow& row) {
    return row.getBuiltIn();
}

#endif

/// The parts of a cipher, looked up once. Valid until the process ends.
template <RowIndex Index>
const EVP_CIPHER* describe() {
    static const EVP_CIPHER* const description = select(table[Index]);
    return description;
}

const EVP_CIPHER* requireIDEA(const EVP_CIPHER* description) {
    if (!description)
        raiseError("IDEA is not available in this OpenSSL.");
    return description;
}

} // namespace

const std::array<CipherRow, 5>& getCipherTable() {
    return table;
}

CCipher_AES256CBC::CCipher_AES256CBC() : COpenSSLCipher(describe<Aes256>(), table[Aes256].id) {}
CCipher_AES256CBC::CCipher_AES256CBC(const CCipher_AES256CBC&) = default;
CCipher_AES256CBC::CCipher_AES256CBC(CCipher_AES256CBC&&) = default;
CCipher_AES256CBC& CCipher_AES256CBC::operator=(const CCipher_AES256CBC&) = default;
CCipher_AES256CBC& CCipher_AES256CBC::operator=(CCipher_AES256CBC&&) = default;

CCipher_AES128CBC::CCipher_AES128CBC() : COpenSSLCipher(describe<Aes128>(), table[Aes128].id) {}
CCipher_AES128CBC::CCipher_AES128CBC(const CCipher_AES128CBC&) = default;
CCipher_AES128CBC::CCipher_AES128CBC(CCipher_AES128CBC&&) = default;
CCipher_AES128CBC& CCipher_AES128CBC::operator=(const CCipher_AES128CBC&) = default;
CCipher_AES128CBC& CCipher_AES128CBC::operator=(CCipher_AES128CBC&&) = default;

CCipher_BlowFishCBC::CCipher_BlowFishCBC() : COpenSSLCipher(describe<Blowfish>(), table[Blowfish].id) {}
CCipher_BlowFishCBC::CCipher_BlowFishCBC(const CCipher_BlowFishCBC&) = default;
CCipher_BlowFishCBC::CCipher_BlowFishCBC(CCipher_BlowFishCBC&&) = default;
CCipher_BlowFishCBC& CCipher_BlowFishCBC::operator=(const CCipher_BlowFishCBC&) = default;
CCipher_BlowFishCBC& CCipher_BlowFishCBC::operator=(CCipher_BlowFishCBC&&) = default;

CCipher_Cast128CBC::CCipher_Cast128CBC() : COpenSSLCipher(describe<Cast128>(), table[Cast128].id) {}
CCipher_Cast128CBC::CCipher_Cast128CBC(const CCipher_Cast128CBC&) = default;
CCipher_Cast128CBC::CCipher_Cast128CBC(CCipher_Cast128CBC&&) = default;
CCipher_Cast128CBC& CCipher_Cast128CBC::operator=(const CCipher_Cast128CBC&) = default;
CCipher_Cast128CBC& CCipher_Cast128CBC::operator=(CCipher_Cast128CBC&&) = default;

CCipher_IDEACBC::CCipher_IDEACBC() : COpenSSLCipher(requireIDEA(describe<Idea>()), table[Idea].id) {}
CCipher_IDEACBC::CCipher_IDEACBC(const CCipher_IDEACBC&) = default;
CCipher_IDEACBC::CCipher_IDEACBC(CCipher_IDEACBC&&) = default;
CCipher_IDEACBC& CCipher_IDEACBC::operator=(const CCipher_IDEACBC&) = default;
CCipher_IDEACBC& CCipher_IDEACBC::operator=(CCipher_IDEACBC&&) = default;

} // namespace sarn
