// SPDX-License-Identifier: Apache-2.0
#include "sarn/cipher.h"

#include "cipher/libcrypto_ciphers.h"

namespace sarn {

CCipher_AES256CBC::CCipher_AES256CBC() : COpenSSLCipher(getAES256CBC(), "aes256cbc") {}

CCipher_AES128CBC::CCipher_AES128CBC() : COpenSSLCipher(getAES128CBC(), "aes128cbc") {}

CCipher_BlowFishCBC::CCipher_BlowFishCBC() : COpenSSLCipher(getBlowfishCBC(), "bfcbc") {}

CCipher_Cast128CBC::CCipher_Cast128CBC() : COpenSSLCipher(getCast128CBC(), "cast128cbc") {}

CCipher_IDEACBC::CCipher_IDEACBC() : COpenSSLCipher(getIDEACBC(), "ideacbc") {}

} // namespace sarn
