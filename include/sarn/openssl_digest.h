// SPDX-License-Identifier: Apache-2.0
/// \file
/// Digests that use libcrypto's low-level hash functions.
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

/// Reports a saved state with another libcrypto version than expected. The message is "OpenSSL version mismatch"; the
/// properties are "object", "actualVersion" and "expectedVersion", with versions in hexadecimal and the prefix "0x".
class SARN_EXPORT COpenSSLVersionMismatchError : public ul::CError {
public:
    /// \param object          the kind of data that has the version
    /// \param actualVersion   the version in the stream
    /// \param expectedVersion the only version that can be read
    COpenSSLVersionMismatchError(const ul::String& object, int actualVersion, int expectedVersion);
    COpenSSLVersionMismatchError(const COpenSSLVersionMismatchError&);
    COpenSSLVersionMismatchError& operator=(const COpenSSLVersionMismatchError&);
    ~COpenSSLVersionMismatchError() override;

    ul::P<ul::CError> clone() override;
    [[noreturn]] void throwClone() const override;
};

/// A digest with a hash context of libcrypto, which is also its saved state. docs/digest-state.md describes the format.
///
/// A state is refused if its context has a fill count `num` and a block `data` or `u`, and the count does not fit the
/// block, or if it has a member `md_len` that is not the size of the result. Other contexts are not checked: libcrypto
/// receives whatever the state contains, so load only states that you wrote.
///
/// \tparam CTX        the context: plain data without pointers. A context with a member `Nl` must have the layout of
///                    libcrypto's SHA-1 and SHA-512: integers of the type of `Nl`, the block, integers of the type of
///                    `num`. Its states are the same on every processor. Any other context is saved as it is in memory
/// \tparam DigestSize size of the result in bytes
/// \tparam Init, Update, Final libcrypto's functions for the context; they return 0 on failure
template <class CTX, int DigestSize, int (*Init)(CTX*), int (*Update)(CTX*, const void*, std::size_t),
          int (*Final)(unsigned char*, CTX*)>
class TDigest_OpenSSL final : public ul::CBase, public virtual IDigest {
    static_assert(std::is_trivially_copyable_v<CTX>, "the context is saved and loaded as its bytes");

public:
    /// Starts a running digest of `type`.
    /// \throws ul::CError "Error initializing OpenSSL digest.".
    explicit TDigest_OpenSSL(const IDigestType* type) : m_type(type) {
        COpenSSLInit::ensureInitialized();
        reset();
    }
    TDigest_OpenSSL(const TDigest_OpenSSL&) = delete;
    TDigest_OpenSSL& operator=(const TDigest_OpenSSL&) = delete;
    /// Finalises a running context, so that every initialised context is finalised. Terminates the process if that
    /// fails.
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

    /// \throws ul::CError "Error initializing OpenSSL digest."; as finish() does if the digest is running.
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
        // Always copies the full size. A loaded result may be shorter, and a caller that trusts getDigestSize() would
        // read uninitialised bytes; the block has room for the full size and is padded with zeros.
        std::memcpy(out, getDigestData(), DigestSize);
    }

    void storeState(ul::CDataOutStream& stream) const override {
        CTX context = m_context;
        detail::storeHash(stream, detail::viewContext(context), DigestSize, m_state);
    }

    /// \throws ul::CError "Unsupported OpenSSL digest state data version."; COpenSSLVersionMismatchError; ul::CError
    ///         "Bad OpenSSL digest size in state stream.", "Bad OpenSSL digest context size in state stream.", "Bad
    ///         digest result length in state stream."; "Bad OpenSSL digest context in state stream." if the context is
    ///         not safe for libcrypto.
    void loadState(ul::CDataInStream& stream) override {
        CTX context;
        detail::HashState state = detail::loadHash(stream, detail::viewContext(context), DigestSize);
        // Assigned last, so that a refused stream leaves the digest unchanged.
        m_context = context;
        m_state = std::move(state);
    }

private:
    ul::PC<IDigestType> m_type;
    // Zero-initialised, because Init may leave the block alone: a saved state must not contain what was in memory
    // before.
    CTX m_context{};
    detail::HashState m_state{ul::TBuffer<unsigned char>(DigestSize, 0)};
};

} // namespace sarn
