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
/// libcrypto 1.1 and later needs neither locking callbacks nor a tear-down from its user, so the set-up hands nothing
/// to libcrypto; its objects exist for hosts that bring a libcrypto's own older scheme together with ours.
class SARN_EXPORT COpenSSLInit : public ul::CBase {
public:
    class CCleaner;
    class CThreadStuff;

    /// The instance, created on first use; afterwards CThreadStuff's and CCleaner's exist as well. Safe from any
    /// thread.
    static const ul::P<COpenSSLInit>& get();

    /// Creates CThreadStuff's instance and then CCleaner's unless they exist, but not this class's own. The
    /// constructors of libcrypto's ciphers, digests and signature algorithms call it first, as do Base64 and PBKDF2;
    /// HMAC needs no set-up. Safe from any thread.
    static void ensureInitialized();

    COpenSSLInit();
    COpenSSLInit(const COpenSSLInit&);
    COpenSSLInit(COpenSSLInit&&) noexcept;
    /// Changes nothing.
    COpenSSLInit& operator=(const COpenSSLInit&);
    /// Changes nothing.
    COpenSSLInit& operator=(COpenSSLInit&&) noexcept;
    ~COpenSSLInit() override;

protected:
    /// Does nothing: the anchor holds nothing that could be released.
    static void disposeGlobalInstance();

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;
};

/// Stands for the process-wide tear-down of libcrypto, which does it all by itself.
class SARN_EXPORT COpenSSLInit::CCleaner : public ul::CBase {
public:
    /// The instance, created on first use. Safe from any thread.
    static const ul::P<CCleaner>& get();

    CCleaner();
    CCleaner(const CCleaner&);
    CCleaner& operator=(const CCleaner&);
    ~CCleaner() override;

    /// Marks the instance disposed; nothing else.
    void dispose();

protected:
    /// Disposes the instance, creating it first if need be. For the host's shutdown: takes no lock.
    static void disposeGlobalInstance();

    /// Whether dispose() was called.
    bool isDisposed() const noexcept { return m_disposed; }

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    bool m_disposed = false;
};

/// Owns the mutex and the two callbacks of libcrypto's legacy locking scheme. Nothing registers them with libcrypto.
class SARN_EXPORT COpenSSLInit::CThreadStuff : public ul::CBase {
public:
    /// The instance, created on first use. Safe from any thread.
    static const ul::P<CThreadStuff>& get();

    CThreadStuff();
    /// The copy shares the mutex.
    CThreadStuff(const CThreadStuff&);
    CThreadStuff& operator=(const CThreadStuff&);
    ~CThreadStuff() override;

    /// Marks the instance disposed; it stays usable.
    void dispose();

protected:
    /// Disposes the instance, creating it first if need be. For the host's shutdown: takes no lock.
    static void disposeGlobalInstance();

    /// Locks mutex `n` if bit 0 of `mode` is set, else unlocks it; no other bit matters. There is one mutex, number 0.
    /// Any other `n`, and a lock or unlock that fails, is logged, if there is memory for the line; no std::exception is
    /// thrown. Safe from any thread.
    void doLock(int mode, int n);

    /// libcrypto's legacy locking callback: doLock() on the instance. `file` and `line` are ignored.
    static void lockFunc(int mode, int n, const char* file, int line);

    /// libcrypto's legacy thread-id callback: the calling thread's id, cut to the width of the result.
    static unsigned long threadIDFunc();

    /// Whether dispose() was called.
    bool isDisposed() const noexcept { return m_disposed; }

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    bool m_disposed = false;
    ul::TArray<ul::P<ul::CMutex>> m_mutexes;
};

} // namespace sarn
