// SPDX-License-Identifier: Apache-2.0
#include "frame/global_instance.h"
#include "frame/registry.h"

#include "sarn/cipher.h"

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
