// SPDX-License-Identifier: Apache-2.0
/// \file
/// Two digests over the same data in one pass.
#pragma once

#include "sarn/digest_interfaces.h"
#include "sarn/saved_record.h"

#include <utility>

namespace sarn {

/// A digest that concatenates the results of two. Both process each slice of the data while it is in the processor's
/// cache. Errors of either are passed on.
///
/// Instantiated once, as TDigestCombiner<IDigest, IDigest>.
template <class A, class B>
class TDigestCombiner : public ul::CBase, public virtual IDigest {
public:
    /// Keeps a reference to each. Their current state is kept.
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
    /// If this fails after one digest has loaded its part, that digest gets back the state that it had stored before. A
    /// combination of the library's digests is therefore unchanged by a failure, unless memory runs out again while the
    /// old state is restored; reset() then repairs it. For digests of the host this depends on their storeState() and
    /// loadState().
    /// \throws ul::CError "Unsupported version of TDigestCombined state data."; any error of the two digests.
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

/// A digest type that combines two. `A` and `B` are default-constructible classes of digest types. Each object owns an
/// `A` and a `B`.
template <class A, class B>
class TDigestTypeCombiner : public ul::CBase, public virtual IDigestType {
public:
    TDigestTypeCombiner() = default;
    /// The copy owns copies of the two types. Moving copies, because there is nothing to take.
    TDigestTypeCombiner(const TDigestTypeCombiner&) = default;
    TDigestTypeCombiner& operator=(const TDigestTypeCombiner&) = default;

    /// The two identifiers, joined by "-".
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
