// SPDX-License-Identifier: Apache-2.0
#include "sarn/cipher.h"

#include "frame/global_instance.h"
#include "frame/raise.h"

namespace sarn {

namespace {

template <class Cipher>
ul::P<ICipher> create() {
    return ul::make<Cipher>();
}

// The built-in ciphers. CCipher_IDEACBC is left out: old data that needs it is rare enough for a host to ask for it.
constexpr ul::P<ICipher> (*builtInCiphers[])() = {
    create<CCipher_AES256CBC>,  create<CCipher_AES128CBC>, create<CCipher_BlowFishCBC>,
    create<CCipher_Cast128CBC>, create<CCipher_Null>,
};

} // namespace

ICipher::ICipher() = default;
ICipher::ICipher(const ICipher&) = default;
ICipher::ICipher(ICipher&&) noexcept = default;
ICipher& ICipher::operator=(const ICipher&) = default;
ICipher& ICipher::operator=(ICipher&&) noexcept = default;
ICipher::~ICipher() = default;

ul::CSafeGlobalSlot CCipherManager::g_pInstanceSlot;

const ul::P<CCipherManager>& CCipherManager::get() {
    return getInstance<CCipherManager>(g_pInstanceSlot);
}

CCipherManager::CCipherManager() {
    for (const auto createCipher : builtInCiphers)
        addCipher(createCipher().get());
}

CCipherManager::~CCipherManager() = default;

void CCipherManager::addCipher(ICipher* cipher) {
    const ul::CMutexLock lock(m_mutex);
    if (!cipher)
        raiseInvalidArg("CCipherManager::addCipher", "cipher cannot be NULL");
    m_ciphers.set(cipher->getID(), cipher);
}

ul::P<ICipher> CCipherManager::findCipher(const ul::String& id) {
    const ul::CMutexLock lock(m_mutex);
    const ul::P<ICipher>* const found = m_ciphers.find(id);
    return found ? *found : nullptr;
}

ul::P<ICipher> CCipherManager::getCipher(const ul::String& id) {
    const ul::CMutexLock lock(m_mutex);
    ul::P<ICipher> cipher = findCipher(id);
    if (!cipher)
        raiseError("Unknown cipher id '" + id + "'.");
    return cipher;
}

void CCipherManager::dispose() {
    m_ciphers.clear();
}

void CCipherManager::disposeGlobalInstance() {
    get()->dispose();
}

} // namespace sarn
