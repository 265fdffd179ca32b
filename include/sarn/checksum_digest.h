// SPDX-License-Identifier: Apache-2.0
/// \file
/// Checksums of 32 bits as digests. They find damage, not forgery.
#pragma once

#include "sarn/digest_interfaces.h"

#include <cstdint>

namespace sarn {

class CDigestType_Adler32;
class CDigestType_CRC32;

/// A running Adler-32 (RFC 1950). The result is 4 bytes, the least significant first.
///
/// An update() with null data takes the checksum back to its initial value 1, whatever the length.
class SARN_EXPORT CDigest_Adler32 : public ul::CBase, public virtual IDigest {
public:
    /// A running digest of `type`.
    explicit CDigest_Adler32(const CDigestType_Adler32* type);
    CDigest_Adler32(const CDigest_Adler32&) = default;
    CDigest_Adler32(CDigest_Adler32&&) = default;
    CDigest_Adler32& operator=(const CDigest_Adler32&) = default;
    CDigest_Adler32& operator=(CDigest_Adler32&&) = default;
    ~CDigest_Adler32() override;

    ul::PC<IDigestType> getType() override;
    int getDigestSize() const override;
    void update(const void* data, int length) override;
    void finish() override;
    void reset() override;
    const unsigned char* getDigestData() const override;
    void storeDigestData(unsigned char* out) const override;
    void storeState(ul::CDataOutStream& stream) const override;
    /// \throws ul::CError "Unsupported Adler32 digest state data version."
    void loadState(ul::CDataInStream& stream) override;

private:
    ul::PC<IDigestType> m_type;
    std::uint32_t m_checksum;
    bool m_finished = false;
};

/// A running CRC-32 (RFC 1952). The result is 4 bytes, the least significant first.
///
/// An update() with null data takes the checksum back to its initial value 0, whatever the length.
class SARN_EXPORT CDigest_CRC32 : public ul::CBase, public virtual IDigest {
public:
    /// A running digest of `type`.
    explicit CDigest_CRC32(const CDigestType_CRC32* type);
    CDigest_CRC32(const CDigest_CRC32&) = default;
    CDigest_CRC32(CDigest_CRC32&&) = default;
    CDigest_CRC32& operator=(const CDigest_CRC32&) = default;
    CDigest_CRC32& operator=(CDigest_CRC32&&) = default;
    ~CDigest_CRC32() override;

    ul::PC<IDigestType> getType() override;
    int getDigestSize() const override;
    void update(const void* data, int length) override;
    void finish() override;
    void reset() override;
    const unsigned char* getDigestData() const override;
    void storeDigestData(unsigned char* out) const override;
    void storeState(ul::CDataOutStream& stream) const override;
    /// \throws ul::CError "Unsupported CRC32 digest state data version."
    void loadState(ul::CDataInStream& stream) override;

private:
    ul::PC<IDigestType> m_type;
    std::uint32_t m_checksum;
    bool m_finished = false;
};

} // namespace sarn
