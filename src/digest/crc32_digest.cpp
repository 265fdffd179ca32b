// SPDX-License-Identifier: Apache-2.0
#include "digest/checksum_state.h"

#include "sarn/digest.h"

#include <cstring>

#include <zlib.h>

namespace sarn {

CDigest_CRC32::CDigest_CRC32(const CDigestType_CRC32* type) : m_type(type), m_checksum(getInitialChecksum(::crc32)) {}

CDigest_CRC32::~CDigest_CRC32() = default;

ul::PC<IDigestType> CDigest_CRC32::getType() {
    return m_type;
}

int CDigest_CRC32::getDigestSize() const {
    return sizeof m_checksum;
}

void CDigest_CRC32::update(const void* data, int length) {
    updateChecksum(::crc32, "CDigest_CRC32::update", m_checksum, m_finished, data, length);
}

void CDigest_CRC32::finish() {
    m_finished = true;
}

void CDigest_CRC32::reset() {
    m_checksum = getInitialChecksum(::crc32);
    m_finished = false;
}

const unsigned char* CDigest_CRC32::getDigestData() const {
    return getChecksumBytes(m_checksum, m_finished);
}

void CDigest_CRC32::storeDigestData(unsigned char* out) const {
    std::memcpy(out, getDigestData(), sizeof m_checksum);
}

void CDigest_CRC32::storeState(ul::CDataOutStream& stream) const {
    storeChecksumState(stream, m_checksum, m_finished);
}

void CDigest_CRC32::loadState(ul::CDataInStream& stream) {
    loadChecksumState(stream, "Unsupported CRC32 digest state data version.", m_checksum, m_finished);
}

} // namespace sarn
