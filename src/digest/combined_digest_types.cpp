// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest.h"

namespace sarn {

CDigestType_MD4_SHA1::CDigestType_MD4_SHA1() = default;
CDigestType_MD4_SHA1::CDigestType_MD4_SHA1(const CDigestType_MD4_SHA1&) = default;
CDigestType_MD4_SHA1::CDigestType_MD4_SHA1(CDigestType_MD4_SHA1&&) noexcept = default;
CDigestType_MD4_SHA1& CDigestType_MD4_SHA1::operator=(const CDigestType_MD4_SHA1&) = default;
CDigestType_MD4_SHA1& CDigestType_MD4_SHA1::operator=(CDigestType_MD4_SHA1&& other) noexcept {
    return *this = other;
}
CDigestType_MD4_SHA1::~CDigestType_MD4_SHA1() = default;

CDigestType_MD4_SHA1_Adler32::CDigestType_MD4_SHA1_Adler32() = default;
CDigestType_MD4_SHA1_Adler32::CDigestType_MD4_SHA1_Adler32(const CDigestType_MD4_SHA1_Adler32&) = default;
CDigestType_MD4_SHA1_Adler32::CDigestType_MD4_SHA1_Adler32(CDigestType_MD4_SHA1_Adler32&&) noexcept = default;
CDigestType_MD4_SHA1_Adler32& CDigestType_MD4_SHA1_Adler32::operator=(const CDigestType_MD4_SHA1_Adler32&) = default;
CDigestType_MD4_SHA1_Adler32& CDigestType_MD4_SHA1_Adler32::operator=(CDigestType_MD4_SHA1_Adler32&& other) noexcept {
    return *this = other;
}
CDigestType_MD4_SHA1_Adler32::~CDigestType_MD4_SHA1_Adler32() = default;

} // namespace sarn
