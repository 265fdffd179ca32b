// SPDX-License-Identifier: Apache-2.0
/// \file
/// The registry of ciphers.
#pragma once

#include "sarn/cipher_interface.h"

#include "ul/global_slot.h"
#include "ul/map.h"
#include "ul/mutex.h"

namespace sarn {

/// The process-wide registry of ciphers by identifier. It starts with "aes256cbc", "aes128cbc", "bfcbc", "cast128cbc"
/// and "null". Identifiers are compared exactly, case included. All operations are safe from any thread, but for
/// dispose() and disposeGlobalInstance().
class SARN_EXPORT CCipherManager : public ul::CBase {
public:
    /// The registry, created on first use.
    static const ul::P<CCipherManager>& get();

    CCipherManager();
    CCipherManager(const CCipherManager&) = delete;
    CCipherManager& operator=(const CCipherManager&) = delete;
    ~CCipherManager() override;

    /// Registers `cipher` under its identifier, in place of the one that stood there. The registry adds a reference of
    /// its own. Other threads wait while getID() and the destructor of the replaced cipher run: neither may wait for a
    /// thread that uses the registry.
    /// \throws ul::CInvalidArgError "cipher cannot be NULL"; whatever getID() of `cipher` throws. The registry is
    ///         unchanged then.
    void addCipher(ICipher* cipher);

    /// The cipher registered under `id`, or null.
    ul::P<ICipher> findCipher(const ul::String& id);

    /// The cipher registered under `id`.
    /// \throws ul::CError "Unknown cipher id '<id>'." if there is none
    ul::P<ICipher> getCipher(const ul::String& id);

protected:
    /// Drops all ciphers. Takes no lock: no other thread may use the registry meanwhile.
    void dispose();

    /// Drops all ciphers of the process-wide registry, which stays empty but for what the host adds. Takes no lock.
    static void disposeGlobalInstance();

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    ul::CMutex m_mutex;
    ul::TMap<ul::String, ul::P<ICipher>> m_ciphers;
};

} // namespace sarn
