// SPDX-License-Identifier: Apache-2.0
#include "sarn/digest_combiner.h"

#include "sarn/digest.h"
#include "sarn/digest_support.h"

#include "ul/buffer_stream.h"

namespace sarn {

namespace {

constexpr int stateVersion = 1;

// Small enough for a slice to stay in the processor's first cache from one digest to the other.
constexpr int sliceSize = 2048;

/// Loads the state of `digest` and does `rest`. If that fails the digest goes back to the state that it had.
template <class Rest>
void loadStateAheadOf(const Rest& rest, IDigest& digest, ul::CDataInStream& stream) {
    ul::TBuffer<unsigned char> old;
    ul::CBufferStream buffer(&old, 2.0);
    ul::CDataOutStream out(buffer);
    digest.storeState(out);
    digest.loadState(stream);
    try {
        rest();
    } catch (...) {
        ul::CBufferInStream bytes(old);
        ul::CDataInStream in(bytes);
        digest.loadState(in);
        throw;
    }
}

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
    // Null data stays null, which is a checksum's request for its initial value.
    const int step = data ? sliceSize : 0;
    for (; length >= sliceSize; length -= sliceSize) {
        m_first->update(slice, sliceSize);
        m_second->update(slice, sliceSize);
        slice += step;
    }
    // Also when nothing is left, so that misuse is noticed by the digests whatever the length.
    m_first->update(slice, length);
    m_second->update(slice, length);
}

template <class A, class B>
void TDigestCombiner<A, B>::finish() {
    m_first->finish();
    m_second->finish();
    m_finished = true;
}

template <class A, class B>
void TDigestCombiner<A, B>::reset() {
    m_first->reset();
    m_second->reset();
    m_finished = false;
    m_resultReady = false;
}

template <class A, class B>
const unsigned char* TDigestCombiner<A, B>::getDigestData() const {
    if (!m_finished)
        detail::raiseDigestIsNotFinished();
    // The result is copied each time: only a loaded one is known to be the bytes to deliver.
    if (!m_resultReady) {
        m_result.setUsed(getDigestSize());
        storeResults(m_result.getData());
    }
    return m_result.getData();
}

template <class A, class B>
void TDigestCombiner<A, B>::storeDigestData(unsigned char* out) const {
    if (!m_finished)
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
    stream.writeInt32(stateVersion);
    m_first->storeState(stream);
    m_second->storeState(stream);
    detail::storeDigestResult(stream, m_result);
    stream.writeBool(m_finished).writeBool(m_resultReady);
}

template <class A, class B>
void TDigestCombiner<A, B>::loadState(ul::CDataInStream& stream) {
    if (stream.readInt32() != stateVersion)
        detail::raiseDigestError("Unsupported version of TDigestCombined state data.");
    const auto loadOwnFields = [&] {
        ul::TBuffer<unsigned char> result;
        detail::loadDigestResult(stream, result, getDigestSize());
        const bool finished = stream.readBool();
        const bool resultReady = stream.readBool();
        detail::replaceDigestResult(m_result, result, getDigestSize());
        m_finished = finished;
        m_resultReady = resultReady;
    };
    // A digest of two is either loaded as a whole or left as it was; the second is not called before the first has
    // taken its state.
    loadStateAheadOf([&] { loadStateAheadOf(loadOwnFields, *m_second, stream); }, *m_first, stream);
}

template class TDigestCombiner<IDigest, IDigest>;

} // namespace sarn
