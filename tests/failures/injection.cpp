// SPDX-License-Identifier: Apache-2.0
#include "failures/injection.h"

#include <algorithm>

namespace sarn_test {

namespace {

bool isInPieces = false;
int pieceCount = 0;

} // namespace

Injection::Injection(bool ofAllocations, int index, Duration duration) : m_left(index) {
    before("", [this, ofAllocations, duration](Call& call) {
        const ImportedCall& function = *call.function;
        if (function.has(cannot) || ofAllocations != (function.kind == CallKind::Allocation) || m_left-- > 0)
            return;
        if (m_first && duration == Duration::Once)
            return;
        call.fails = true;
        m_first = m_first ? m_first : &function;
        m_mustBeNoticed = m_mustBeNoticed || !function.has(ignored);
    });
}

SmallPieces::SmallPieces() {
    installReplacements();
    pieceCount = 0;
    isInPieces = true;
}

SmallPieces::~SmallPieces() {
    isInPieces = false;
}

int SmallPieces::getCallCount() const {
    return pieceCount;
}

std::size_t SmallPieces::limit(std::size_t size) {
    if (!isInPieces)
        return size;
    return ++pieceCount % 2 == 1 ? 0 : std::min<std::size_t>(size, 7);
}

} // namespace sarn_test
