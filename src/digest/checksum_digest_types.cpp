// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest.h"

namespace sarn {

ul::String CDigestType_Adler32::getID() {
    return "adler32";
}

int CDigestType_Adler32::getDigestSize() const {
    return 4;
}

ul::P<IDigest> CDigestType_Adler32::createDigest() {
    return ul::make<CDigest_Adler32>(this);
}

ul::String CDigestType_CRC32::getID() {
    return "crc32";
}

int CDigestType_CRC32::getDigestSize() const {
    return 4;
}

ul::P<IDigest> CDigestType_CRC32::createDigest() {
    return ul::make<CDigest_CRC32>(this);
}

} // namespace sarn
