// SPDX-License-Identifier: Apache-2.0
/// \file
/// The registry of ciphers.
#pragma once

#include "sarn/cipher_interface.h"

#include "ul/global_slot.h"
#include "ul/map.h"
#include "ul/mutex.h"

namespace sarn {

/// The process-wide registry of ciphers by identifier. Initially it has "aes256cbc", "aes128cbc", "bfcbc", "cast128cbc"
/// and "null". Identifiers are case-sensitive. All operations except dispose() and disposeGlobalInstance() are safe
/// from any thread.
class SARN_EXPORT CCipherManager : public ul::CBase {
public:
    /// The registry. It is created on first use.
    static const ul::P<CCipherManager>& get();

    CCipherManager();
    CCipherManager(const CCipherManager&) = delete;
    CCipherManager& operator=(const CCipherManager&) = delete;
    ~CCipherManager() override;

    /// Registers `cipher` under its identifier, replacing any cipher of that name. The registry keeps its own
    /// reference. It is locked while getID() and the destructor of a replaced cipher run: neither may wait for another
    /// thread that uses the registry.
    /// \throws ul::CInvalidArgError "cipher cannot be NULL"; any error of getID(). The registry is unchanged then.
    void addCipher(ICipher* cipher);

    /// The cipher registered under `id`, or null.
    ul::P<ICipher> findCipher(const ul::String& id);

    /// The cipher registered under `id`.
    /// \throws ul::CError "Unknown cipher id '<id>'.".
    ul::P<ICipher> getCipher(const ul::String& id);

protected:
    /// Removes all ciphers. Takes no lock. Requires: no other thread uses the registry during the call. This is
    /// protected, unlike CDigestManager::dispose(): hosts are compiled against both as they are.
    void dispose();

    /// Calls dispose() on the process-wide registry. It stays empty except for ciphers that the host adds.
    static void disposeGlobalInstance();

private:
    static ul::CSafeGlobalSlot g_pInstanceSlot;

    ul::CMutex m_mutex;
    ul::TMap<ul::String, ul::P<ICipher>> m_ciphers;
};

} // namespace sarn
