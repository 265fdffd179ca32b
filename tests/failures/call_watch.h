// SPDX-License-Identifier: Apache-2.0
// The calls that the libraries make into others, recorded, and single ones made to fail.
#pragma once

#include "failures/imported_calls.h"

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace sarn_test {

/// One call.
struct Call {
    const ImportedCall* function;
    /// Pointers as addresses.
    std::array<std::intptr_t, 7> arguments;
    std::intptr_t result = 0;

    template <class T>
    T* getPointer(std::size_t index) const {
        return reinterpret_cast<T*>(arguments[index]); // NOLINT(performance-no-int-to-ptr): the other way of above
    }
};

/// While it lives, records the libraries' calls of all threads in their order, may let some of them fail, and lets a
/// test act before and after others. One at a time. A name that is not among the functions that are replaced is
/// refused.
class CallWatch {
public:
    using Action = std::function<void(const Call&)>;

    CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;
    ~CallWatch();

    /// Lets the `index`th call of `name` from now on fail, counted from 0.
    void fail(std::string_view name, int index = 0);
    /// Lets it return `result` instead of what it returns when it fails.
    void failWith(std::intptr_t result, std::string_view name, int index = 0);
    /// Calls `action` before each call of `name`, or after it.
    void before(std::string_view name, Action action);
    void after(std::string_view name, Action action);

    /// All calls so far. A copy: a text that the test makes meanwhile is a call of the C++ runtime's, which is
    /// recorded.
    std::vector<Call> getCalls() const { return m_calls; }
    /// The calls of one function.
    std::vector<Call> getCalls(std::string_view name) const;
    int count(std::string_view name) const { return static_cast<int>(getCalls(name).size()); }
    /// The calls of libcrypto in their order, separated by spaces. The host's error queue, which is left as it was
    /// found around all of them, is not looked at, nor is the kind of a key.
    std::string getLibcryptoCalls() const;
    /// How many of the things that `made` returned were given to no function whose name starts with `ended`.
    int countLeft(std::string_view made, std::string_view ended) const;

    /// For the replacements: whether a call that is about to be made must fail. Sets its result then.
    static bool begin(Call& call);
    /// For the replacements: records a call that was made.
    static void end(const Call& call);

private:
    struct Hook {
        const ImportedCall* function;
        bool isAfter;
        Action action;
    };
    struct Failure {
        const ImportedCall* function;
        int callsBefore;
        std::intptr_t result;
    };

    void run(const Call& call, bool isAfter) const;
    bool takeFailure(Call& call);

    std::mutex m_mutex;
    std::vector<Call> m_calls;
    std::vector<Hook> m_hooks;
    std::vector<Failure> m_failures;
};

} // namespace sarn_test
