// SPDX-License-Identifier: Apache-2.0
/// \file
/// Two digests over the same data in one pass.
#pragma once

#include "sarn/digest_interfaces.h"
#include "sarn/saved_record.h"

#include <utility>

namespace sarn {

/// A digest made of two, whose results follow one another. Each slice of the data goes through both while it is still
/// in the processor's cache. Errors of either pass through.
///
/// Instantiated once, as TDigestCombiner<IDigest, IDigest>.
template <class A, class B>
class TDigestCombiner : public ul::CBase, public virtual IDigest {
public:
    /// Keeps a reference to each; the two digests are taken as they are.
    TDigestCombiner(const IDigestType* type, ul::P<A> first, ul::P<B> second);
    TDigestCombiner(const TDigestCombiner&) = delete;
    TDigestCombiner& operator=(const TDigestCombiner&) = delete;
    ~TDigestCombiner() override;

    ul::PC<IDigestType> getType() override;
    int getDigestSize() const override;
    void update(const void* data, int length) override;
    void finish() override;
    void reset() override;
    const unsigned char* getDigestData() const override;
    void storeDigestData(unsigned char* out) const override;
    void storeState(ul::CDataOutStream& stream) const override;
    /// If it fails after a digest has taken its part, that digest gets back the state that it stored before. So a
    /// combination of the library's digests is as it was, unless memory runs out again on the way back, where reset()
    /// helps; one with digests of the host's own is as good as their storeState() and loadState() are.
    /// \throws ul::CError "Unsupported version of TDigestCombined state data."; whatever the two digests throw
    void loadState(ul::CDataInStream& stream) override;

private:
    void storeResults(unsigned char* out) const;

    ul::PC<IDigestType> m_type;
    ul::P<A> m_first;
    int m_firstSize;
    ul::P<B> m_second;
    int m_secondSize;
    detail::CombinationState m_state;
};

extern template class SARN_EXPORT TDigestCombiner<IDigest, IDigest>;

/// A digest type made of two. `A` and `B` are classes of digest types that can be default-constructed; each combination
/// has objects of its own of both.
template <class A, class B>
class TDigestTypeCombiner : public ul::CBase, public virtual IDigestType {
public:
    TDigestTypeCombiner() = default;
    /// The copy has copies of the two types. Moving copies, too: there is nothing to take away.
    TDigestTypeCombiner(const TDigestTypeCombiner&) = default;
    TDigestTypeCombiner& operator=(const TDigestTypeCombiner&) = default;

    /// The two identifiers with "-" between them.
    ul::String getID() override { return m_first.getID() + "-" + m_second.getID(); }
    /// The sum of the two sizes.
    int getDigestSize() const override { return m_first.getDigestSize() + m_second.getDigestSize(); }
    /// A running digest that feeds both.
    ul::P<IDigest> createDigest() override {
        ul::P<IDigest> second = m_second.createDigest();
        ul::P<IDigest> first = m_first.createDigest();
        return ul::make<TDigestCombiner<IDigest, IDigest>>(this, std::move(first), std::move(second));
    }

private:
    A m_first;
    B m_second;
};

} // namespace sarn
