// SPDX-License-Identifier: Apache-2.0
#include "digest/checksum_state.h"

#include "sarn/digest.h"

#include <cstring>

#include <zlib.h>

namespace sarn {

CDigest_Adler32::CDigest_Adler32(const CDigestType_Adler32* type)
    : m_type(type), m_checksum(getInitialChecksum(::adler32)) {}

CDigest_Adler32::~CDigest_Adler32() = default;

ul::PC<IDigestType> CDigest_Adler32::getType() {
    return m_type;
}

int CDigest_Adler32::getDigestSize() const {
    return sizeof m_checksum;
}

void CDigest_Adler32::update(const void* data, int length) {
    updateChecksum(::adler32, "CDigest_Adler32::update", m_checksum, m_finished, data, length);
}

void CDigest_Adler32::finish() {
    m_finished = true;
}

void CDigest_Adler32::reset() {
    m_checksum = getInitialChecksum(::adler32);
    m_finished = false;
}

const unsigned char* CDigest_Adler32::getDigestData() const {
    return getChecksumBytes(m_checksum, m_finished);
}

void CDigest_Adler32::storeDigestData(unsigned char* out) const {
    std::memcpy(out, getDigestData(), sizeof m_checksum);
}

void CDigest_Adler32::storeState(ul::CDataOutStream& stream) const {
    storeChecksumState(stream, m_checksum, m_finished);
}

void CDigest_Adler32::loadState(ul::CDataInStream& stream) {
    loadChecksumState(stream, "Unsupported Adler32 digest state data version.", m_checksum, m_finished);
}

} // namespace sarn
