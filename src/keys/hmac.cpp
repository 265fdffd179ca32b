// SPDX-License-Identifier: Apache-2.0
// Newer versions of libcrypto deprecate the functions for contexts but keep them.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "sarn/hmac.h"

#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"
#include "frame/overlap.h"
#include "frame/raise.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

namespace sarn {

namespace {

#if OPENSSL_VERSION_NUMBER >= 0x30000000L
/// Gives the result of HMAC(), which fetches HMAC and the hash by name each time and so takes more than twice as long.
/// The hash still comes from the host's default context.
bool computeHMAC(const EVP_MD* md, const void* key, int keySize, const unsigned char* data, std::size_t size,
                 unsigned char* out, unsigned* length) {
    const HMACContextPtr context(HMAC_CTX_new());
    return context && HMAC_Init_ex(context.get(), key, keySize, md, nullptr) &&
           HMAC_Update(context.get(), data, size) && HMAC_Final(context.get(), out, length);
}
#else
bool computeHMAC(const EVP_MD* md, const void* key, int keySize, const unsigned char* data, std::size_t size,
                 unsigned char* out, unsigned* length) {
    return HMAC(md, key, keySize, data, size, out, length) != nullptr;
}
#endif

} // namespace

void calcHMAC(ul::TBuffer<unsigned char>& out, const EVP_MD* md, const void* data, int dataSize, const void* key,
              int keySize) {
    // Unlike its neighbours this does not call COpenSSLInit::ensureInitialized(): HMAC does not need it, and hosts rely
    // on an HMAC not creating any process-wide objects.
    if (dataSize < 0)
        raiseInvalidArg("calcHMAC", "invalid data size");
    if (out.getAllocated() < EVP_MAX_MD_SIZE && (overlaps(data, dataSize, out) || overlaps(key, keySize, out)))
        raiseInvalidArg("calcHMAC", "input overlaps output");
    // See COpenSSLInit::CThreadStuff: otherwise the error queue, as libcrypto's first use, makes it clean up at exit.
    [[maybe_unused]] static const int isSetUp = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    const ErrorQueueMark mark;
    out.ensureAllocated(EVP_MAX_MD_SIZE);
    unsigned length = EVP_MAX_MD_SIZE;
    // 1.1.1 refuses a negative key size itself; newer versions would take it for a huge one.
    const bool isDone =
        keySize >= 0 && computeHMAC(md, keySize > 0 ? key : "", keySize, static_cast<const unsigned char*>(data),
                                    static_cast<std::size_t>(dataSize), out.getData(), &length);
    if (!isDone)
        raiseError("Error computing HMAC digest.");
    out.setUsed(static_cast<int>(length));
}

void calcHMAC_MD5(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key, int keySize) {
    calcHMAC(out, EVP_md5(), data, dataSize, key, keySize);
}

void calcHMAC_SHA1(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key, int keySize) {
    calcHMAC(out, EVP_sha1(), data, dataSize, key, keySize);
}

} // namespace sarn
