// SPDX-License-Identifier: Apache-2.0
#include "failures/injection.h"

#include <algorithm>

namespace sarn_test {

namespace {

Injection* activeInjection = nullptr;

bool isInPieces = false;
int pieceCount = 0;

} // namespace

Injection::Injection(bool ofAllocations, int index, Duration duration)
    : m_ofAllocations(ofAllocations), m_index(index), m_duration(duration) {
    installReplacements();
    activeInjection = this;
}

Injection::~Injection() {
    activeInjection = nullptr;
}

bool Injection::mustFail(const ImportedCall& call) {
    Injection* const injection = activeInjection;
    if (!injection || !call.canFail || injection->m_ofAllocations != (call.kind == CallKind::Allocation))
        return false;
    const int index = injection->m_count++;
    const bool fails =
        injection->m_duration == Duration::Once ? index == injection->m_index : index >= injection->m_index;
    if (fails) {
        if (call.kind != CallKind::Allocation)
            injection->m_failed.insert(call.name);
        injection->m_first = injection->m_first ? injection->m_first : &call;
        injection->m_mustBeNoticed = injection->m_mustBeNoticed || !call.isIgnored;
    }
    return fails;
}

bool Injection::hasFailed(const std::string& name) {
    return activeInjection && activeInjection->m_failed.count(name) > 0;
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
