// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest_combiner.h"

#include "sarn/digest.h"
#include "sarn/digest_support.h"

namespace sarn {

namespace {

// Small enough that a slice stays in the first-level cache between the two digests.
constexpr int sliceSize = 2048;

} // namespace

template <class A, class B>
TDigestCombiner<A, B>::TDigestCombiner(const IDigestType* type, ul::P<A> first, ul::P<B> second)
    : m_type(type),
      m_first(std::move(first)),
      m_firstSize(m_first->getDigestSize()),
      m_second(std::move(second)),
      m_secondSize(m_second->getDigestSize()) {}

template <class A, class B>
TDigestCombiner<A, B>::~TDigestCombiner() = default;

template <class A, class B>
ul::PC<IDigestType> TDigestCombiner<A, B>::getType() {
    return m_type;
}

template <class A, class B>
int TDigestCombiner<A, B>::getDigestSize() const {
    return m_firstSize + m_secondSize;
}

template <class A, class B>
void TDigestCombiner<A, B>::update(const void* data, int length) {
    const auto* slice = static_cast<const unsigned char*>(data);
    // Null data stays null: it asks a checksum for its initial value.
    const int step = data ? sliceSize : 0;
    for (; length >= sliceSize; length -= sliceSize) {
        m_first->update(slice, sliceSize);
        m_second->update(slice, sliceSize);
        slice += step;
    }
    // Called even for no remaining bytes, so that the digests detect misuse at any length.
    m_first->update(slice, length);
    m_second->update(slice, length);
}

template <class A, class B>
void TDigestCombiner<A, B>::finish() {
    m_first->finish();
    m_second->finish();
    m_state.finished = true;
}

template <class A, class B>
void TDigestCombiner<A, B>::reset() {
    m_first->reset();
    m_second->reset();
    m_state.finished = false;
    m_state.resultReady = false;
}

template <class A, class B>
const unsigned char* TDigestCombiner<A, B>::getDigestData() const {
    if (!m_state.finished)
        detail::raiseDigestIsNotFinished();
    // Copied on each call: only a loaded result is known to be the one to deliver.
    if (!m_state.resultReady) {
        m_state.result.setUsed(getDigestSize());
        storeResults(m_state.result.getData());
    }
    return m_state.result.getData();
}

template <class A, class B>
void TDigestCombiner<A, B>::storeDigestData(unsigned char* out) const {
    if (!m_state.finished)
        detail::raiseDigestIsNotFinished();
    storeResults(out);
}

template <class A, class B>
void TDigestCombiner<A, B>::storeResults(unsigned char* out) const {
    m_first->storeDigestData(out);
    m_second->storeDigestData(out + m_firstSize);
}

template <class A, class B>
void TDigestCombiner<A, B>::storeState(ul::CDataOutStream& stream) const {
    detail::storeCombination(stream, *m_first, *m_second, getDigestSize(), m_state);
}

template <class A, class B>
void TDigestCombiner<A, B>::loadState(ul::CDataInStream& stream) {
    m_state = detail::loadCombination(stream, *m_first, *m_second, getDigestSize());
}

template class TDigestCombiner<IDigest, IDigest>;

} // namespace sarn
