// SPDX-License-Identifier: Apache-2.0
#include "sarn/cipher_manager.h"

#include "cipher/cipher_table.h"
#include "frame/global_instance.h"
#include "frame/registry.h"

#include "sarn/null_cipher.h"

namespace sarn {

ul::CSafeGlobalSlot CCipherManager::g_pInstanceSlot;

const ul::P<CCipherManager>& CCipherManager::get() {
    return getInstance<CCipherManager>(g_pInstanceSlot);
}

CCipherManager::CCipherManager() {
    for (const CipherRow& row : getCipherTable()) {
        if (row.isOffered)
            addCipher(row.create().get());
    }
    addCipher(ul::make<CCipher_Null>().get());
}

CCipherManager::~CCipherManager() = default;

void CCipherManager::addCipher(ICipher* cipher) {
    addItem(m_mutex, m_ciphers, cipher, "CCipherManager::addCipher", "cipher cannot be NULL");
}

ul::P<ICipher> CCipherManager::findCipher(const ul::String& id) {
    return findItem(m_mutex, m_ciphers, id);
}

ul::P<ICipher> CCipherManager::getCipher(const ul::String& id) {
    return getItem(m_mutex, m_ciphers, id, "Unknown cipher id '");
}

void CCipherManager::dispose() {
    m_ciphers.clear();
}

void CCipherManager::disposeGlobalInstance() {
    get()->dispose();
}

} // namespace sarn
