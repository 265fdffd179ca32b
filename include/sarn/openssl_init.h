// SPDX-License-Identifier: Apache-2.0
/// \file
/// Process-wide set-up of libcrypto.
#pragma once

#include "sarn/object_model.h"

#include "ul/array.h"
#include "ul/global_slot.h"
#include "ul/mutex.h"

namespace sarn {

/// Anchor of the process-wide set-up of libcrypto.
///
/// libcrypto 1.1 and later needs neither locking callbacks nor a tear-down, so nothing is registered with it. The
/// objects remain for hosts that use the locking scheme of older versions.
class SARN_EXPORT COpenSSLInit : public ul::CBase {
public:
    class CCleaner;
    class CThreadStuff;

    /// The instance. It is created on first use; CThreadStuff's and CCleaner's exist afterwards as well. Safe from any
    /// thread.
    static const ul::P<COpenSSLInit>& get();

    /// Creates the instances of CThreadStuff and then CCleaner if they do not exist, but not one of this class. The
    /// constructors of libcrypto's ciphers, digests and signature algorithms call it first, as do Base64 and PBKDF2.
    /// HMAC does not need it. Safe from any thread.
    static void ensureInitialized();

    COpenSSLInit();
    COpenSSLInit(const COpenSSLInit&);
    COpenSSLInit(COpenSSLInit&&) noexcept;
    /// Does nothing.
    COpenSSLInit& operator=(const COpenSSLInit&);
    /// Does nothing.
    COpenSSLInit& operator=(COpenSSLInit&&) noexcept;
    ~COpenSSLInit() override;

protected:
    /// Does nothing: there is nothing to release.
    static void disposeGlobalInstance();

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;
};

/// Placeholder for a process-wide tear-down of libcrypto, which cleans up without help.
class SARN_EXPORT COpenSSLInit::CCleaner : public ul::CBase {
public:
    /// The instance. It is created on first use. Safe from any thread.
    static const ul::P<CCleaner>& get();

    CCleaner();
    CCleaner(const CCleaner&);
    CCleaner& operator=(const CCleaner&);
    ~CCleaner() override;

    /// Marks the instance as disposed.
    void dispose();

protected:
    /// Disposes the instance, creating it first if necessary. For the host's shutdown. Takes no lock.
    static void disposeGlobalInstance();

    /// Whether dispose() was called.
    bool isDisposed() const noexcept { return m_disposed; }

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    bool m_disposed = false;
};

/// Owns the mutex and the two callbacks of libcrypto's legacy locking scheme. They are not registered with libcrypto.
class SARN_EXPORT COpenSSLInit::CThreadStuff : public ul::CBase {
public:
    /// The instance. It is created on first use. Safe from any thread.
    static const ul::P<CThreadStuff>& get();

    CThreadStuff();
    /// The copy shares the mutex.
    CThreadStuff(const CThreadStuff&);
    CThreadStuff& operator=(const CThreadStuff&);
    ~CThreadStuff() override;

    /// Marks the instance as disposed. It remains usable.
    void dispose();

protected:
    /// Disposes the instance, creating it first if necessary. For the host's shutdown. Takes no lock.
    static void disposeGlobalInstance();

    /// Locks mutex `n` if bit 0 of `mode` is set, and unlocks it otherwise; the other bits are ignored. The only mutex
    /// is number 0. An invalid `n` and a failed lock or unlock are logged, if there is memory for the line; no
    /// std::exception is raised. Safe from any thread.
    void doLock(int mode, int n);

    /// libcrypto's legacy locking callback: doLock() on the instance. `file` and `line` are ignored.
    static void lockFunc(int mode, int n, const char* file, int line);

    /// libcrypto's legacy thread-id callback: the id of the calling thread, truncated to the type of the result.
    static unsigned long threadIDFunc();

    /// Whether dispose() was called.
    bool isDisposed() const noexcept { return m_disposed; }

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    bool m_disposed = false;
    ul::TArray<ul::P<ul::CMutex>> m_mutexes;
};

} // namespace sarn
