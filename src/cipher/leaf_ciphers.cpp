// SPDX-License-Identifier: Apache-2.0
#include "cipher/libcrypto_ciphers.h"

#include "sarn/cipher.h"

namespace sarn {

CCipher_AES256CBC::CCipher_AES256CBC() : COpenSSLCipher(getAES256CBC(), "aes256cbc") {}
CCipher_AES256CBC::CCipher_AES256CBC(const CCipher_AES256CBC&) = default;
CCipher_AES256CBC::CCipher_AES256CBC(CCipher_AES256CBC&&) = default;
CCipher_AES256CBC& CCipher_AES256CBC::operator=(const CCipher_AES256CBC&) = default;
CCipher_AES256CBC& CCipher_AES256CBC::operator=(CCipher_AES256CBC&&) = default;

CCipher_AES128CBC::CCipher_AES128CBC() : COpenSSLCipher(getAES128CBC(), "aes128cbc") {}
CCipher_AES128CBC::CCipher_AES128CBC(const CCipher_AES128CBC&) = default;
CCipher_AES128CBC::CCipher_AES128CBC(CCipher_AES128CBC&&) = default;
CCipher_AES128CBC& CCipher_AES128CBC::operator=(const CCipher_AES128CBC&) = default;
CCipher_AES128CBC& CCipher_AES128CBC::operator=(CCipher_AES128CBC&&) = default;

CCipher_BlowFishCBC::CCipher_BlowFishCBC() : COpenSSLCipher(getBlowfishCBC(), "bfcbc") {}
CCipher_BlowFishCBC::CCipher_BlowFishCBC(const CCipher_BlowFishCBC&) = default;
CCipher_BlowFishCBC::CCipher_BlowFishCBC(CCipher_BlowFishCBC&&) = default;
CCipher_BlowFishCBC& CCipher_BlowFishCBC::operator=(const CCipher_BlowFishCBC&) = default;
CCipher_BlowFishCBC& CCipher_BlowFishCBC::operator=(CCipher_BlowFishCBC&&) = default;

CCipher_Cast128CBC::CCipher_Cast128CBC() : COpenSSLCipher(getCast128CBC(), "cast128cbc") {}
CCipher_Cast128CBC::CCipher_Cast128CBC(const CCipher_Cast128CBC&) = default;
CCipher_Cast128CBC::CCipher_Cast128CBC(CCipher_Cast128CBC&&) = default;
CCipher_Cast128CBC& CCipher_Cast128CBC::operator=(const CCipher_Cast128CBC&) = default;
CCipher_Cast128CBC& CCipher_Cast128CBC::operator=(CCipher_Cast128CBC&&) = default;

CCipher_IDEACBC::CCipher_IDEACBC() : COpenSSLCipher(getIDEACBC(), "ideacbc") {}
CCipher_IDEACBC::CCipher_IDEACBC(const CCipher_IDEACBC&) = default;
CCipher_IDEACBC::CCipher_IDEACBC(CCipher_IDEACBC&&) = default;
CCipher_IDEACBC& CCipher_IDEACBC::operator=(const CCipher_IDEACBC&) = default;
CCipher_IDEACBC& CCipher_IDEACBC::operator=(CCipher_IDEACBC&&) = default;

} // namespace sarn
