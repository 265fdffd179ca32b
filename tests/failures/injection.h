// SPDX-License-Identifier: Apache-2.0
// Makes calls fail by their number.
#pragma once

#include "failures/call_watch.h"

#include <exception>

namespace sarn_test {

/// While it lives, makes calls fail.
class Injection : public CallWatch {
public:
    enum class Duration { Once, FromThenOn };

    /// The first is the `index`th allocation, or the `index`th other call, counted from 0.
    Injection(bool ofAllocations, int index, Duration duration);

    bool hasHappened() const { return m_first != nullptr; }
    const ImportedCall& getFirst() const { return *m_first; }
    /// Whether a call failed whose failure must be reported.
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

/// Makes each allocation of `action` fail, one in each run, until a run needs no more. Returns the number of failures;
/// 0 if one of them raised no error.
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

/// While it lives, files are read and written in small pieces, and each call is interrupted by a signal first.
class SmallPieces {
public:
    SmallPieces();
    SmallPieces(const SmallPieces&) = delete;
    SmallPieces& operator=(const SmallPieces&) = delete;
    ~SmallPieces();
    int getCallCount() const;

    /// For the replacements: how many of `size` bytes one call handles; 0 if it is interrupted.
    static std::size_t limit(std::size_t size);
};

} // namespace sarn_test
