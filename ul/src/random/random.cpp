// SPDX-License-Identifier: Apache-2.0
#include "ul/random.h"

#include "errors/raise.h"
#include "random/random_reserve.h"

#include "ul/global_slot.h"

namespace ul {

namespace {

template <class T>
void* createHolder() {
    return new P<T>(make<T>());
}

template <class T>
const P<T>& getInstance(CSafeGlobalSlot& slot) {
    return *static_cast<const P<T>*>(slot.use(&createHolder<T>, nullptr));
}

} // namespace

const P<CMTRand>& CMTRand::getGlobal() {
    static CSafeGlobalSlot g_pInstanceSlot;
    return getInstance<CMTRand>(g_pInstanceSlot);
}

const P<CMutex>& CMTRand::getGlobalInstanceMutex() {
    static CSafeGlobalSlot g_pInstanceSlot;
    return getInstance<CMutex>(g_pInstanceSlot);
}

CMTRand::CMTRand() : m_reserve(std::make_unique<RandomReserve>()) {}

CMTRand::~CMTRand() = default;

void CMTRand::randData(unsigned char* data, int size) {
    if (size < 0)
        raiseInvalidArg("CMTRand::randData", "invalid size");
    if (size > 0)
        m_reserve->take(data, static_cast<std::size_t>(size));
}

} // namespace ul
