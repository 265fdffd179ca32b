// SPDX-License-Identifier: Apache-2.0
// Memory of the test program: looks into what is given back, and refuses what is asked for.
//
// A test program that contains this file has its own operators new and delete; outside Windows the shared libraries use
// them as well.
#pragma once

#include <cstddef>
#include <string>

namespace sarn_test {

/// While it lives, counts the freed blocks that still hold a secret. One at a time.
class SecretSpy {
public:
    explicit SecretSpy(const char* secret);
    SecretSpy(const SecretSpy&) = delete;
    SecretSpy& operator=(const SecretSpy&) = delete;
    ~SecretSpy();

    /// Freed blocks so far in which the secret stood.
    int getFoundCount() const;
    /// Freed blocks so far.
    int getFreedCount() const;
};

/// Counts the blocks that this thread was given since, less those that it gave back.
class AllocationBalance {
public:
    AllocationBalance();

    int get() const;

private:
    int m_before;
};

/// While it lives, one allocation of this thread fails. One at a time.
class AllocationFailure {
public:
    /// The `index`th allocation from now, counted from 0, throws std::bad_alloc.
    explicit AllocationFailure(int index);
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;
    ~AllocationFailure();

    /// Whether the allocation was asked for.
    bool hasHappened() const;
};

} // namespace sarn_test
