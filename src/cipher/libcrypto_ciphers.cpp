// SPDX-License-Identifier: Apache-2.0
#include "cipher/libcrypto_ciphers.h"

#include "frame/error_queue_mark.h"
#include "frame/raise.h"

#include "sarn/openssl_init.h"

#if OPENSSL_VERSION_NUMBER >= 0x30000000L
#include "ul/log.h"

#include <openssl/provider.h>
#endif

namespace sarn {

namespace {

#if OPENSSL_VERSION_NUMBER >= 0x30000000L

/// A library context with the default and the legacy provider, or null if there is no memory for one. It lives as long
/// as the process: libcrypto's own clean-up at exit may come first, after which nothing of it could be freed safely.
OSSL_LIB_CTX* createLibraryContext() {
    OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
    if (context) {
        OSSL_PROVIDER_load(context, "default");
        // Without the legacy module the ciphers that need it fail when they are used, the others work.
        OSSL_PROVIDER_load(context, "legacy");
    }
    return context;
}

/// Says once why a cipher will fail: the error of its use does not know.
void logIfWithoutLegacyProvider(OSSL_LIB_CTX* context, const char* name) {
    if (!OSSL_PROVIDER_available(context, "legacy"))
        ul::logError(ul::String("OpenSSL cannot load its legacy provider, so ") + name + " will fail.");
}

/// Fetches a cipher by name; `fallback`, which knows the sizes but looks for its code in the host's providers on each
/// use, stands in if that fails.
const EVP_CIPHER* select(const char* name, const EVP_CIPHER* fallback) {
    COpenSSLInit::ensureInitialized();
    ErrorQueueMark mark;
    static OSSL_LIB_CTX* const context = createLibraryContext();
    const EVP_CIPHER* const fetched = context ? EVP_CIPHER_fetch(context, name, nullptr) : nullptr;
    mark.drop();
    if (fetched)
        return fetched;
    if (context && fallback)
        logIfWithoutLegacyProvider(context, name);
    return fallback;
}

#else

const EVP_CIPHER* select(const char*, const EVP_CIPHER* builtIn) {
    return builtIn;
}

#endif

const EVP_CIPHER* getBuiltInIDEA() {
#ifdef OPENSSL_NO_IDEA
    return nullptr;
#else
    return EVP_idea_cbc();
#endif
}

} // namespace

const EVP_CIPHER* getAES256CBC() {
    static const EVP_CIPHER* const cipher = select("AES-256-CBC", EVP_aes_256_cbc());
    return cipher;
}

const EVP_CIPHER* getAES128CBC() {
    static const EVP_CIPHER* const cipher = select("AES-128-CBC", EVP_aes_128_cbc());
    return cipher;
}

const EVP_CIPHER* getBlowfishCBC() {
    static const EVP_CIPHER* const cipher = select("BF-CBC", EVP_bf_cbc());
    return cipher;
}

const EVP_CIPHER* getCast128CBC() {
    static const EVP_CIPHER* const cipher = select("CAST5-CBC", EVP_cast5_cbc());
    return cipher;
}

const EVP_CIPHER* getIDEACBC() {
    static const EVP_CIPHER* const cipher = select("IDEA-CBC", getBuiltInIDEA());
    if (!cipher)
        raiseError("IDEA is not available in this OpenSSL.");
    return cipher;
}

} // namespace sarn
