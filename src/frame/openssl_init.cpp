// SPDX-License-Identifier: Apache-2.0
#include "sarn/openssl_init.h"

#include "frame/global_instance.h"

#include "ul/log.h"
#include "ul/thread.h"

#include <openssl/crypto.h>

#include <new>

namespace sarn {

namespace {

/// Runs a logging step. Lack of memory for its text must not reach the caller: a callback of a C library must not
/// throw.
template <class Step>
void logSafely(Step step) noexcept {
    try {
        step();
    } catch (const std::bad_alloc&) {
        // Without a text there is nothing to log.
    }
}

ul::String describe(int mode, int n) {
    return "(mode: " + ul::toString(mode) + ", n: " + ul::toString(n) + ")";
}

} // namespace

ul::CSafeGlobalSlot COpenSSLInit::g_pInstanceSlot;
ul::CSafeGlobalSlot COpenSSLInit::CCleaner::g_pInstanceSlot;
ul::CSafeGlobalSlot COpenSSLInit::CThreadStuff::g_pInstanceSlot;

const ul::P<COpenSSLInit>& COpenSSLInit::get() {
    const ul::P<COpenSSLInit>& instance = getInstance<COpenSSLInit>(g_pInstanceSlot);
    ensureInitialized();
    return instance;
}

void COpenSSLInit::ensureInitialized() {
    CThreadStuff::get();
    CCleaner::get();
}

COpenSSLInit::COpenSSLInit() = default;
COpenSSLInit::COpenSSLInit(const COpenSSLInit&) = default;
COpenSSLInit::COpenSSLInit(COpenSSLInit&&) noexcept = default;
COpenSSLInit& COpenSSLInit::operator=(const COpenSSLInit&) = default;
COpenSSLInit& COpenSSLInit::operator=(COpenSSLInit&&) noexcept = default;
COpenSSLInit::~COpenSSLInit() = default;

// Deliberately empty: the anchor has nothing to release, and its companions have such a function themselves. Hosts call
// it at shutdown and then continue to use the library.
void COpenSSLInit::disposeGlobalInstance() {}

const ul::P<COpenSSLInit::CCleaner>& COpenSSLInit::CCleaner::get() {
    return getInstance<CCleaner>(g_pInstanceSlot);
}

COpenSSLInit::CCleaner::CCleaner() = default;
COpenSSLInit::CCleaner::CCleaner(const CCleaner&) = default;
COpenSSLInit::CCleaner& COpenSSLInit::CCleaner::operator=(const CCleaner&) = default;

COpenSSLInit::CCleaner::~CCleaner() {
    try {
        dispose();
    } catch (std::exception& error) {
        ul::onExceptionInDestructorIgnored("sarn::COpenSSLInit::CCleaner", error, true);
    }
}

void COpenSSLInit::CCleaner::dispose() {
    m_disposed = true;
}

void COpenSSLInit::CCleaner::disposeGlobalInstance() {
    get()->dispose();
}

const ul::P<COpenSSLInit::CThreadStuff>& COpenSSLInit::CThreadStuff::get() {
    return getInstance<CThreadStuff>(g_pInstanceSlot);
}

COpenSSLInit::CThreadStuff::CThreadStuff() {
    // Without this, libcrypto cleans up in an exit handler and cannot read keys afterwards; yet the destructor of a
    // static object, or a thread that outlives main, may still verify. If this fails for lack of memory, so does all
    // that follows.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    m_mutexes.resize(1);
    for (ul::P<ul::CMutex>& mutex : m_mutexes)
        mutex = ul::make<ul::CMutex>();
}

COpenSSLInit::CThreadStuff::CThreadStuff(const CThreadStuff&) = default;
COpenSSLInit::CThreadStuff& COpenSSLInit::CThreadStuff::operator=(const CThreadStuff&) = default;

COpenSSLInit::CThreadStuff::~CThreadStuff() {
    try {
        dispose();
    } catch (std::exception& error) {
        ul::onExceptionInDestructorIgnored("sarn::COpenSSLInit::CThreadStuff", error, true);
    }
}

void COpenSSLInit::CThreadStuff::dispose() {
    m_disposed = true;
}

void COpenSSLInit::CThreadStuff::disposeGlobalInstance() {
    get()->dispose();
}

void COpenSSLInit::CThreadStuff::doLock(int mode, int n) {
    if (n < 0 || n >= m_mutexes.getSize()) {
        logSafely([=] {
            ul::logError("invalid openssl mutex index specified in openssl lock/unlock func " + describe(mode, n));
        });
        return;
    }
    try {
        ul::IMutex& mutex = *m_mutexes[n];
        if (mode & 1)
            mutex.lock();
        else
            mutex.unlock();
    } catch (std::exception& error) {
        logSafely([&] {
            ul::logError(error, "Error while trying to lock/unlock openssl mutex " + describe(mode, n),
                         ul::getEmptyString());
        });
    }
}

void COpenSSLInit::CThreadStuff::lockFunc(int mode, int n, const char*, int) {
    get()->doLock(mode, n);
}

unsigned long COpenSSLInit::CThreadStuff::threadIDFunc() {
    return static_cast<unsigned long>(ul::CThread::getCurrentID());
}

} // namespace sarn
