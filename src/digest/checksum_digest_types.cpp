// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest.h"

namespace sarn {

CDigestType_Adler32::CDigestType_Adler32() = default;
CDigestType_Adler32::CDigestType_Adler32(const CDigestType_Adler32&) = default;
CDigestType_Adler32::CDigestType_Adler32(CDigestType_Adler32&&) noexcept = default;
CDigestType_Adler32& CDigestType_Adler32::operator=(const CDigestType_Adler32&) = default;
CDigestType_Adler32& CDigestType_Adler32::operator=(CDigestType_Adler32&&) noexcept {
    return *this;
}
CDigestType_Adler32::~CDigestType_Adler32() = default;

ul::String CDigestType_Adler32::getID() {
    return "adler32";
}

int CDigestType_Adler32::getDigestSize() const {
    return 4;
}

ul::P<IDigest> CDigestType_Adler32::createDigest() {
    return ul::make<CDigest_Adler32>(this);
}

CDigestType_CRC32::CDigestType_CRC32() = default;
CDigestType_CRC32::CDigestType_CRC32(const CDigestType_CRC32&) = default;
CDigestType_CRC32::CDigestType_CRC32(CDigestType_CRC32&&) noexcept = default;
CDigestType_CRC32& CDigestType_CRC32::operator=(const CDigestType_CRC32&) = default;
CDigestType_CRC32& CDigestType_CRC32::operator=(CDigestType_CRC32&&) noexcept {
    return *this;
}
CDigestType_CRC32::~CDigestType_CRC32() = default;

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
