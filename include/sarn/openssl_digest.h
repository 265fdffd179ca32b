// SPDX-License-Identifier: Apache-2.0
/// \file
/// Digests over libcrypto's low-level hash functions.
#pragma once

#include "sarn/digest_interfaces.h"
#include "sarn/digest_support.h"
#include "sarn/openssl_init.h"
#include "sarn/saved_record.h"

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace sarn {

/// A saved state was written by a build against another version of OpenSSL. The message is "OpenSSL version mismatch",
/// the properties are "object", "actualVersion" and "expectedVersion", versions in hexadecimal with the prefix "0x".
class SARN_EXPORT COpenSSLVersionMismatchError : public ul::CError {
public:
    /// \param object          what carries the version
    /// \param actualVersion   the version in the stream
    /// \param expectedVersion the only one that is read
    COpenSSLVersionMismatchError(const ul::String& object, int actualVersion, int expectedVersion);
    COpenSSLVersionMismatchError(const COpenSSLVersionMismatchError&);
    COpenSSLVersionMismatchError& operator=(const COpenSSLVersionMismatchError&);
    ~COpenSSLVersionMismatchError() override;

    ul::P<ul::CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

/// A digest over a hash context of libcrypto, which is also its saved state. See docs/digest-state.md for the format.
///
/// A state is refused if its context has a member `num` beside a block `data` or `u` and counts more bytes in that
/// block than fit, or if it has a member `md_len` that is not the result's length. Of another context nothing is known:
/// libcrypto is handed whatever the state says, so load only states that you wrote.
///
/// \tparam CTX        the context: plain data without pointers. One with a member `Nl` is in the order of libcrypto's
///                    own for SHA-1, SHA-512 and the like: numbers as wide as `Nl`, the block, numbers as wide as
///                    `num`; its states are the same on every processor. Any other is saved as it lies in memory.
/// \tparam DigestSize length of the result in bytes
/// \tparam Init, Update, Final libcrypto's functions for it, which return 0 on failure
template <class CTX, int DigestSize, int (*Init)(CTX*), int (*Update)(CTX*, const void*, std::size_t),
          int (*Final)(unsigned char*, CTX*)>
class TDigest_OpenSSL final : public ul::CBase, public virtual IDigest {
    static_assert(std::is_trivially_copyable_v<CTX>, "the context is saved and loaded as its bytes");

public:
    /// \throws ul::CError "Error initializing OpenSSL digest."
    explicit TDigest_OpenSSL(const IDigestType* type) : m_type(type) {
        m_state.result.ensureAllocated(DigestSize);
        COpenSSLInit::ensureInitialized();
        reset();
    }
    TDigest_OpenSSL(const TDigest_OpenSSL&) = delete;
    TDigest_OpenSSL& operator=(const TDigest_OpenSSL&) = delete;
    /// Finalises a running context, so that libcrypto sees the end of each that was set up. A failure ends the process.
    ~TDigest_OpenSSL() override {
        if (m_state.initialized)
            finish();
    }

    ul::PC<IDigestType> getType() override { return m_type; }
    int getDigestSize() const override { return DigestSize; }

    /// \throws ul::CError "Error updating OpenSSL digest."
    void update(const void* data, int length) override {
        if (m_state.finished)
            detail::raiseDigestIsFinished();
        if (length < 0)
            detail::raiseBadDigestDataSize("TDigest_OpenSSL::update");
        if (!Update(&m_context, length > 0 ? data : "", static_cast<std::size_t>(length)))
            detail::raiseDigestError("Error updating OpenSSL digest.");
    }

    /// \throws ul::CError "Error finalizing OpenSSL digest."
    void finish() override {
        if (m_state.finished)
            return;
        m_state.result.setUsed(DigestSize);
        if (!Final(m_state.result.getData(), &m_context))
            detail::raiseDigestError("Error finalizing OpenSSL digest.");
        m_state.finished = true;
    }

    /// \throws ul::CError "Error initializing OpenSSL digest.", or as finish() if the digest is running
    void reset() override {
        if (m_state.initialized)
            finish();
        if (!Init(&m_context))
            detail::raiseDigestError("Error initializing OpenSSL digest.");
        m_state.initialized = true;
        m_state.finished = false;
    }

    const unsigned char* getDigestData() const override {
        if (!m_state.finished)
            detail::raiseDigestIsNotFinished();
        return m_state.result.getData();
    }

    void storeDigestData(unsigned char* out) const override {
        // Always the digest's size. A loaded result may be shorter, and a caller that trusts in the size would read
        // bytes that nobody wrote; the block has room for it and holds zeros there.
        std::memcpy(out, getDigestData(), DigestSize);
    }

    void storeState(ul::CDataOutStream& stream) const override {
        CTX context = m_context;
        detail::storeHash(stream, detail::viewContext(context), DigestSize, m_state);
    }

    /// \throws ul::CError "Unsupported OpenSSL digest state data version."; COpenSSLVersionMismatchError; ul::CError
    ///         "Bad OpenSSL digest size in state stream.", "Bad OpenSSL digest context size in state stream.", "Bad
    ///         digest result length in state stream."; "Bad OpenSSL digest context in state stream." if libcrypto could
    ///         not work with the context
    void loadState(ul::CDataInStream& stream) override {
        CTX context;
        detail::HashState state = detail::loadHash(stream, detail::viewContext(context), DigestSize);
        // Only now, so that a stream that is refused leaves the digest as it was.
        m_context = context;
        m_state = std::move(state);
    }

private:
    ul::PC<IDigestType> m_type;
    // Zeros where Init leaves the block alone: a saved state holds nothing that lay there before.
    CTX m_context{};
    detail::HashState m_state;
};

} // namespace sarn
