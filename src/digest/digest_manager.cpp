// SPDX-License-Identifier: Apache-2.0
#include "frame/global_instance.h"
#include "frame/registry.h"

#include "sarn/digest.h"

namespace sarn {

namespace {

template <class Type>
ul::P<IDigestType> create() {
    return ul::make<Type>();
}

constexpr ul::P<IDigestType> (*builtInTypes[])() = {
    create<CDigestType_MD4>,      create<CDigestType_MD5>,
    create<CDigestType_SHA1>,     create<CDigestType_SHA256>,
    create<CDigestType_Adler32>,  create<CDigestType_CRC32>,
    create<CDigestType_MD4_SHA1>, create<CDigestType_MD4_SHA1_Adler32>,
};

} // namespace

ul::CSafeGlobalSlot CDigestManager::g_pInstanceSlot;

const ul::P<CDigestManager>& CDigestManager::get() {
    return getInstance<CDigestManager>(g_pInstanceSlot);
}

CDigestManager::CDigestManager() {
    for (const auto createType : builtInTypes)
        addType(createType().get());
}

CDigestManager::~CDigestManager() = default;

void CDigestManager::addType(IDigestType* type) {
    addItem(m_mutex, m_types, type, "CDigestManager::addType", "type cannot be NULL");
}

ul::P<IDigestType> CDigestManager::findType(const ul::String& id) {
    return findItem(m_mutex, m_types, id);
}

ul::P<IDigestType> CDigestManager::getType(const ul::String& id) {
    return getItem(m_mutex, m_types, id, "Unknown digest type id '");
}

void CDigestManager::dispose() {
    m_types.clear();
}

void CDigestManager::disposeGlobalInstance() {
    get()->dispose();
}

} // namespace sarn
