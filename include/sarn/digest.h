// SPDX-License-Identifier: Apache-2.0
/// \file
/// Digests and checksums, selected by identifier. Their running state can be saved and resumed.
#pragma once

#include "sarn/checksum_digest.h"
#include "sarn/digest_combiner.h"
#include "sarn/digest_interfaces.h"
#include "sarn/openssl_digest.h"

#include "ul/global_slot.h"
#include "ul/map.h"
#include "ul/mutex.h"

namespace sarn {

/// "md4": MD4 (RFC 1320), 16 bytes. For old backups.
class SARN_EXPORT CDigestType_MD4 : public ul::CBase, public virtual IDigestType {
public:
    CDigestType_MD4();
    CDigestType_MD4(const CDigestType_MD4&);
    CDigestType_MD4(CDigestType_MD4&&) noexcept;
    CDigestType_MD4& operator=(const CDigestType_MD4&);
    CDigestType_MD4& operator=(CDigestType_MD4&&) noexcept;
    ~CDigestType_MD4() override;

    ul::String getID() override;
    int getDigestSize() const override;
    ul::P<IDigest> createDigest() override;
};

/// "md5": MD5 (RFC 1321), 16 bytes. For old backups.
class SARN_EXPORT CDigestType_MD5 : public ul::CBase, public virtual IDigestType {
public:
    CDigestType_MD5();
    CDigestType_MD5(const CDigestType_MD5&);
    CDigestType_MD5(CDigestType_MD5&&) noexcept;
    CDigestType_MD5& operator=(const CDigestType_MD5&);
    CDigestType_MD5& operator=(CDigestType_MD5&&) noexcept;
    ~CDigestType_MD5() override;

    ul::String getID() override;
    int getDigestSize() const override;
    ul::P<IDigest> createDigest() override;
};

/// "sha1": SHA-1 (FIPS 180), 20 bytes. For old backups.
class SARN_EXPORT CDigestType_SHA1 : public ul::CBase, public virtual IDigestType {
public:
    CDigestType_SHA1();
    CDigestType_SHA1(const CDigestType_SHA1&);
    CDigestType_SHA1(CDigestType_SHA1&&) noexcept;
    CDigestType_SHA1& operator=(const CDigestType_SHA1&);
    CDigestType_SHA1& operator=(CDigestType_SHA1&&) noexcept;
    ~CDigestType_SHA1() override;

    ul::String getID() override;
    int getDigestSize() const override;
    ul::P<IDigest> createDigest() override;
};

/// "sha256": SHA-256 (FIPS 180), 32 bytes.
class SARN_EXPORT CDigestType_SHA256 : public ul::CBase, public virtual IDigestType {
public:
    CDigestType_SHA256();
    CDigestType_SHA256(const CDigestType_SHA256&);
    CDigestType_SHA256(CDigestType_SHA256&&) noexcept;
    CDigestType_SHA256& operator=(const CDigestType_SHA256&);
    CDigestType_SHA256& operator=(CDigestType_SHA256&&) noexcept;
    ~CDigestType_SHA256() override;

    ul::String getID() override;
    int getDigestSize() const override;
    ul::P<IDigest> createDigest() override;
};

/// "adler32": Adler-32 (RFC 1950), 4 bytes, least significant first.
class SARN_EXPORT CDigestType_Adler32 : public ul::CBase, public virtual IDigestType {
public:
    CDigestType_Adler32();
    CDigestType_Adler32(const CDigestType_Adler32&);
    CDigestType_Adler32(CDigestType_Adler32&&) noexcept;
    CDigestType_Adler32& operator=(const CDigestType_Adler32&);
    CDigestType_Adler32& operator=(CDigestType_Adler32&&) noexcept;
    ~CDigestType_Adler32() override;

    ul::String getID() override;
    int getDigestSize() const override;
    ul::P<IDigest> createDigest() override;
};

/// "crc32": CRC-32 (RFC 1952), 4 bytes, least significant first.
class SARN_EXPORT CDigestType_CRC32 : public ul::CBase, public virtual IDigestType {
public:
    CDigestType_CRC32();
    CDigestType_CRC32(const CDigestType_CRC32&);
    CDigestType_CRC32(CDigestType_CRC32&&) noexcept;
    CDigestType_CRC32& operator=(const CDigestType_CRC32&);
    CDigestType_CRC32& operator=(CDigestType_CRC32&&) noexcept;
    ~CDigestType_CRC32() override;

    ul::String getID() override;
    int getDigestSize() const override;
    ul::P<IDigest> createDigest() override;
};

/// "md4-sha1": MD4 and SHA-1, 36 bytes. For old backups: hardly stronger than SHA-1 alone. It owns a type object for
/// each part; a copy owns copies of them.
class SARN_EXPORT CDigestType_MD4_SHA1 : public TDigestTypeCombiner<CDigestType_MD4, CDigestType_SHA1> {
public:
    CDigestType_MD4_SHA1();
    CDigestType_MD4_SHA1(const CDigestType_MD4_SHA1&);
    CDigestType_MD4_SHA1(CDigestType_MD4_SHA1&&) noexcept;
    CDigestType_MD4_SHA1& operator=(const CDigestType_MD4_SHA1&);
    CDigestType_MD4_SHA1& operator=(CDigestType_MD4_SHA1&&) noexcept;
    ~CDigestType_MD4_SHA1() override;
};

/// "md4-sha1-adler32": MD4, SHA-1 and Adler-32, 40 bytes. Built like CDigestType_MD4_SHA1.
class SARN_EXPORT CDigestType_MD4_SHA1_Adler32 : public TDigestTypeCombiner<CDigestType_MD4_SHA1, CDigestType_Adler32> {
public:
    CDigestType_MD4_SHA1_Adler32();
    CDigestType_MD4_SHA1_Adler32(const CDigestType_MD4_SHA1_Adler32&);
    CDigestType_MD4_SHA1_Adler32(CDigestType_MD4_SHA1_Adler32&&) noexcept;
    CDigestType_MD4_SHA1_Adler32& operator=(const CDigestType_MD4_SHA1_Adler32&);
    CDigestType_MD4_SHA1_Adler32& operator=(CDigestType_MD4_SHA1_Adler32&&) noexcept;
    ~CDigestType_MD4_SHA1_Adler32() override;
};

/// The process-wide registry of digest types by identifier. Initially it has the eight types above. Identifiers are
/// case-sensitive. All operations except dispose() and disposeGlobalInstance() are safe from any thread.
class SARN_EXPORT CDigestManager : public ul::CBase {
public:
    /// The registry. It is created on first use.
    static const ul::P<CDigestManager>& get();

    CDigestManager();
    CDigestManager(const CDigestManager&) = delete;
    CDigestManager& operator=(const CDigestManager&) = delete;
    ~CDigestManager() override;

    /// Registers `type` under its identifier, replacing any type of that name. The registry keeps its own reference. It
    /// is locked while getID() and the destructor of a replaced type run: neither may wait for another thread that uses
    /// the registry.
    /// \throws ul::CInvalidArgError "type cannot be NULL"; any error of getID(). The registry is unchanged then.
    void addType(IDigestType* type);

    /// The type registered under `id`, or null.
    ul::P<IDigestType> findType(const ul::String& id);

    /// The type registered under `id`.
    /// \throws ul::CError "Unknown digest type id '<id>'.".
    ul::P<IDigestType> getType(const ul::String& id);

    /// Removes all types. Takes no lock. Requires: no other thread uses the registry during the call. This is public,
    /// unlike CCipherManager::dispose(): hosts are compiled against both as they are.
    void dispose();

protected:
    /// Calls dispose() on the process-wide registry. It stays empty except for types that the host adds.
    static void disposeGlobalInstance();

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    ul::CMutex m_mutex;
    ul::TMap<ul::String, ul::P<IDigestType>> m_types;
};

} // namespace sarn
