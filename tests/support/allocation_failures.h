// SPDX-License-Identifier: Apache-2.0
// Memory that is not to be had, at every place in turn.
#pragma once

#include "support/memory_spy.h"

#include "ul/error.h"

#include <new>

namespace sarn_test {

/// Lets each allocation of `action` fail, one after the other, until it needs no more. Returns how many failed; 0 if
/// one of them did not end in an error.
template <class Action>
int failEachAllocation(Action action) {
    for (int index = 0;; ++index) {
        const AllocationFailure failure(index);
        bool hasRaised = false;
        try {
            action();
        } catch (const std::bad_alloc&) {
            hasRaised = true;
        } catch (const ul::CError&) {
            hasRaised = true;
        }
        if (hasRaised != failure.hasHappened())
            return 0;
        if (!hasRaised)
            return index;
    }
}

} // namespace sarn_test
