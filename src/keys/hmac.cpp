// SPDX-License-Identifier: Apache-2.0
#include "sarn/hmac.h"

#include "frame/error_queue_mark.h"
#include "frame/overlap.h"
#include "frame/raise.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

namespace sarn {

void calcHMAC(ul::TBuffer<unsigned char>& out, const EVP_MD* md, const void* data, int dataSize, const void* key,
              int keySize) {
    // Unlike its neighbours this does not call COpenSSLInit::ensureInitialized(): HMAC does not need it, and hosts rely
    // on an HMAC not creating any process-wide objects.
    if (dataSize < 0)
        raiseInvalidArg("calcHMAC", "invalid data size");
    if (out.getAllocated() < EVP_MAX_MD_SIZE && (overlaps(data, dataSize, out) || overlaps(key, keySize, out)))
        raiseInvalidArg("calcHMAC", "input overlaps output");
    ErrorQueueMark mark;
    out.ensureAllocated(EVP_MAX_MD_SIZE);
    unsigned length = EVP_MAX_MD_SIZE;
    // 1.1.1 refuses a negative key size itself; newer versions would take it for a huge one.
    const bool isDone =
        keySize >= 0 && HMAC(md, keySize > 0 ? key : "", keySize, static_cast<const unsigned char*>(data),
                             static_cast<std::size_t>(dataSize), out.getData(), &length);
    if (!isDone)
        mark.raise("Error computing HMAC digest.");
    out.setUsed(static_cast<int>(length));
}

void calcHMAC_MD5(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key, int keySize) {
    calcHMAC(out, EVP_md5(), data, dataSize, key, keySize);
}

void calcHMAC_SHA1(ul::TBuffer<unsigned char>& out, const void* data, int dataSize, const void* key, int keySize) {
    calcHMAC(out, EVP_sha1(), data, dataSize, key, keySize);
}

} // namespace sarn
