// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest.h"
#include "sarn/digest_support.h"

#include "ul/little_endian.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>

namespace sarn {

namespace {

/// Least significant byte first on every processor.
using ChecksumBytes = std::array<unsigned char, 4>;

/// The differences between the checksums.
template <class Type>
struct Kind;

template <>
struct Kind<CDigestType_Adler32> {
    static constexpr auto function = &::adler32;
    static constexpr const char* update = "CDigest_Adler32::update";
    static constexpr const char* badVersion = "Unsupported Adler32 digest state data version.";
};

template <>
struct Kind<CDigestType_CRC32> {
    static constexpr auto function = &::crc32;
    static constexpr const char* update = "CDigest_CRC32::update";
    static constexpr const char* badVersion = "Unsupported CRC32 digest state data version.";
};

ChecksumBytes toBytes(unsigned long number) {
    ChecksumBytes bytes{};
    ul::storeLittleEndian(bytes.data(), static_cast<std::uint32_t>(number));
    return bytes;
}

/// The checksum of empty input.
template <class Type>
ChecksumBytes getInitialChecksum() {
    return toBytes(Kind<Type>::function(0, nullptr, 0));
}

} // namespace

template <class Type>
TDigest_Checksum<Type>::TDigest_Checksum(const Type* type) : m_type(type), m_state{getInitialChecksum<Type>()} {}

template <class Type>
TDigest_Checksum<Type>::~TDigest_Checksum() = default;

template <class Type>
ul::PC<IDigestType> TDigest_Checksum<Type>::getType() {
    return m_type;
}

template <class Type>
int TDigest_Checksum<Type>::getDigestSize() const {
    return sizeof m_state.checksum;
}

template <class Type>
void TDigest_Checksum<Type>::update(const void* data, int length) {
    if (m_state.finished)
        detail::raiseDigestIsFinished();
    if (data && length < 0)
        detail::raiseBadDigestDataSize(Kind<Type>::update);
    // For null data zlib returns the initial value, except that adler32() with a size of 1 reads a byte first.
    const unsigned size = data ? static_cast<unsigned>(length) : 0;
    const auto* const bytes = static_cast<const unsigned char*>(data);
    m_state.checksum =
        toBytes(Kind<Type>::function(ul::loadLittleEndian<std::uint32_t>(m_state.checksum.data()), bytes, size));
}

template <class Type>
void TDigest_Checksum<Type>::finish() {
    m_state.finished = true;
}

template <class Type>
void TDigest_Checksum<Type>::reset() {
    m_state.checksum = getInitialChecksum<Type>();
    m_state.finished = false;
}

template <class Type>
const unsigned char* TDigest_Checksum<Type>::getDigestData() const {
    if (!m_state.finished)
        detail::raiseDigestIsNotFinished();
    return m_state.checksum.data();
}

template <class Type>
void TDigest_Checksum<Type>::storeDigestData(unsigned char* out) const {
    std::copy_n(getDigestData(), sizeof m_state.checksum, out);
}

template <class Type>
void TDigest_Checksum<Type>::storeState(ul::CDataOutStream& stream) const {
    detail::storeChecksum(stream, m_state);
}

template <class Type>
void TDigest_Checksum<Type>::loadState(ul::CDataInStream& stream) {
    m_state = detail::loadChecksum(stream, Kind<Type>::badVersion);
}

template class TDigest_Checksum<CDigestType_Adler32>;
template class TDigest_Checksum<CDigestType_CRC32>;

CDigest_Adler32::CDigest_Adler32(const CDigestType_Adler32* type) : TDigest_Checksum(type) {}
CDigest_Adler32::CDigest_Adler32(const CDigest_Adler32&) = default;
CDigest_Adler32::CDigest_Adler32(CDigest_Adler32&&) noexcept = default;
CDigest_Adler32& CDigest_Adler32::operator=(const CDigest_Adler32&) = default;
CDigest_Adler32& CDigest_Adler32::operator=(CDigest_Adler32&& other) noexcept {
    return *this = other;
}
CDigest_Adler32::~CDigest_Adler32() = default;

CDigest_CRC32::CDigest_CRC32(const CDigestType_CRC32* type) : TDigest_Checksum(type) {}
CDigest_CRC32::CDigest_CRC32(const CDigest_CRC32&) = default;
CDigest_CRC32::CDigest_CRC32(CDigest_CRC32&&) noexcept = default;
CDigest_CRC32& CDigest_CRC32::operator=(const CDigest_CRC32&) = default;
CDigest_CRC32& CDigest_CRC32::operator=(CDigest_CRC32&& other) noexcept {
    return *this = other;
}
CDigest_CRC32::~CDigest_CRC32() = default;

} // namespace sarn
