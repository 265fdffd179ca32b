// SPDX-License-Identifier: Apache-2.0
/// \file
/// 32-bit checksums as digests. They detect damage, not forgery.
#pragma once

#include "sarn/digest_interfaces.h"
#include "sarn/saved_record.h"

namespace sarn {

class CDigestType_Adler32;
class CDigestType_CRC32;

/// A running checksum of zlib. The result is 4 bytes, least significant first.
///
/// update() with null data resets the checksum to its initial value, regardless of the length.
///
/// \tparam Type the digest type: CDigestType_Adler32 or CDigestType_CRC32
template <class Type>
class TDigest_Checksum : public ul::CBase, public virtual IDigest {
public:
    /// Starts a running digest of `type`.
    explicit TDigest_Checksum(const Type* type);
    /// The copy continues independently. Moving copies, because there is nothing to take.
    TDigest_Checksum(const TDigest_Checksum&) = default;
    TDigest_Checksum& operator=(const TDigest_Checksum&) = default;
    ~TDigest_Checksum() override;

    /// The type given to the constructor.
    ul::PC<IDigestType> getType() override;
    /// Always 4.
    int getDigestSize() const override;
    /// Adds bytes. Allocates no memory.
    void update(const void* data, int length) override;
    /// Ends the input.
    void finish() override;
    /// Restores the initial value.
    void reset() override;
    /// The 4 bytes, owned by this object.
    const unsigned char* getDigestData() const override;
    /// Copies the 4 bytes.
    void storeDigestData(unsigned char* out) const override;
    /// Writes 9 bytes.
    void storeState(ul::CDataOutStream& stream) const override;
    /// \throws ul::CError "Unsupported Adler32 digest state data version." or "Unsupported CRC32 digest state data
    ///         version.".
    void loadState(ul::CDataInStream& stream) override;

private:
    ul::PC<IDigestType> m_type;
    detail::ChecksumState m_state;
};

extern template class SARN_EXPORT TDigest_Checksum<CDigestType_Adler32>;
extern template class SARN_EXPORT TDigest_Checksum<CDigestType_CRC32>;

/// A running Adler-32 (RFC 1950). Its initial value is 1.
class SARN_EXPORT CDigest_Adler32 : public TDigest_Checksum<CDigestType_Adler32> {
public:
    /// Starts a running digest of `type`.
    explicit CDigest_Adler32(const CDigestType_Adler32* type);
    CDigest_Adler32(const CDigest_Adler32&);
    CDigest_Adler32(CDigest_Adler32&&) noexcept;
    CDigest_Adler32& operator=(const CDigest_Adler32&);
    CDigest_Adler32& operator=(CDigest_Adler32&&) noexcept;
    ~CDigest_Adler32() override;
};

/// A running CRC-32 (RFC 1952). Its initial value is 0.
class SARN_EXPORT CDigest_CRC32 : public TDigest_Checksum<CDigestType_CRC32> {
public:
    /// Starts a running digest of `type`.
    explicit CDigest_CRC32(const CDigestType_CRC32* type);
    CDigest_CRC32(const CDigest_CRC32&);
    CDigest_CRC32(CDigest_CRC32&&) noexcept;
    CDigest_CRC32& operator=(const CDigest_CRC32&);
    CDigest_CRC32& operator=(CDigest_CRC32&&) noexcept;
    ~CDigest_CRC32() override;
};

} // namespace sarn
