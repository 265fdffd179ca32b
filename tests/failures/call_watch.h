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
    /// What it returned, or returns if it fails.
    std::intptr_t result;
    bool fails = false;

    template <class T>
    T* getPointer(std::size_t index) const {
        return reinterpret_cast<T*>(arguments[index]); // NOLINT(performance-no-int-to-ptr): the other way of above
    }
};

/// While it lives, records the libraries' calls of all threads in their order, may let some of them fail, and lets a
/// test act before and after others. Several may live at once, and each sees every call; the last one made ends first.
/// A name that is not among the functions that are replaced is refused.
class CallWatch {
public:
    using Action = std::function<void(Call&)>;

    CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;
    ~CallWatch();

    /// Lets the `index`th call of `name` from now on fail, counted from 0.
    void fail(std::string_view name, int index = 0);
    /// Lets it return `result` instead of what it returns when it fails.
    void failWith(std::intptr_t result, std::string_view name, int index = 0);
    /// Calls `action`, which may let the call fail, before each call of `name`, or of any function if that is empty.
    void before(std::string_view name, Action action);
    /// Calls `action` after each call of `name`.
    void after(std::string_view name, Action action);

    /// The calls of one function so far.
    std::vector<Call> getCalls(std::string_view name) const;
    int count(std::string_view name) const { return static_cast<int>(getCalls(name).size()); }
    /// The names of the calls of one kind in their order, separated by spaces. The host's error queue, which is left as
    /// it was found around all of libcrypto's, is not looked at, nor is the kind of a key.
    std::string getNames(CallKind kind) const;
    /// How many of the things that `made` returned were given to no function whose name starts with `ended`.
    int countLeft(std::string_view made, std::string_view ended) const;

    /// For the replacements: a call is about to be made.
    static void begin(Call& call);
    /// For the replacements: a call was made.
    static void end(Call& call);

private:
    struct Hook {
        const ImportedCall* function;
        bool isAfter;
        Action action;
    };

    void run(Call& call, bool isAfter) const;

    CallWatch* m_outer;
    std::mutex m_mutex;
    std::vector<Call> m_calls;
    std::vector<Hook> m_hooks;
};

} // namespace sarn_test
