// SPDX-License-Identifier: Apache-2.0
#include "ul/random.h"

#include "random_reserve.h"

namespace ul {

const P<CMTRand>& CMTRand::getGlobal() {
    static const P<CMTRand> instance = make<CMTRand>();
    return instance;
}

const P<CMutex>& CMTRand::getGlobalInstanceMutex() {
    static const P<CMutex> mutex = make<CMutex>();
    return mutex;
}

CMTRand::CMTRand() : m_reserve(std::make_unique<RandomReserve>()) {}

CMTRand::~CMTRand() = default;

void CMTRand::randData(unsigned char* data, int size) {
    if (size <= 0)
        return;
    m_reserve->take(data, static_cast<std::size_t>(size));
}

} // namespace ul
