// SPDX-License-Identifier: Apache-2.0
// Calls that fail, one after the other, whatever their names.
#pragma once

#include "failures/call_watch.h"

#include <exception>

namespace sarn_test {

/// While it lives, lets calls fail.
class Injection : public CallWatch {
public:
    enum class Duration { Once, FromThenOn };

    /// From the `index`th call on that is an allocation, or that is not one, counted from 0.
    Injection(bool ofAllocations, int index, Duration duration);

    bool hasHappened() const { return m_first != nullptr; }
    /// The call that failed first.
    const ImportedCall& getFirst() const { return *m_first; }
    /// Whether a failure was injected that must not pass unnoticed.
    bool mustBeNoticed() const { return m_mustBeNoticed; }

private:
    int m_left;
    const ImportedCall* m_first = nullptr;
    bool m_mustBeNoticed = false;
};

/// While it lives, the `index`th allocation fails.
class AllocationFailure : public Injection {
public:
    explicit AllocationFailure(int index) : Injection(true, index, Duration::Once) {}
};

/// Lets each allocation of `action` fail, one after the other, until it needs no more. Returns how many failed; 0 if
/// one of them did not end in an error.
template <class Action>
int failEachAllocation(Action action) {
    for (int index = 0;; ++index) {
        const AllocationFailure failure(index);
        bool hasRaised = false;
        try {
            action();
        } catch (const std::exception&) {
            hasRaised = true;
        }
        if (hasRaised != failure.hasHappened())
            return 0;
        if (!hasRaised)
            return index;
    }
}

/// While it lives, files are read and written in small pieces, each call interrupted by a signal first.
class SmallPieces {
public:
    SmallPieces();
    SmallPieces(const SmallPieces&) = delete;
    SmallPieces& operator=(const SmallPieces&) = delete;
    ~SmallPieces();
    int getCallCount() const;

    /// For the replacements: how much of `size` bytes is done at once; none if the call is interrupted.
    static std::size_t limit(std::size_t size);
};

} // namespace sarn_test
