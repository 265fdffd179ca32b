// SPDX-License-Identifier: Apache-2.0
// Records the calls that the libraries make into others, and makes single ones fail.
#pragma once

#include "failures/imported_calls.h"

#include <array>
#include <map>
#include <mutex>
#include <string_view>
#include <thread>

namespace sarn_test {

struct Call {
    const ImportedCall* function;
    /// Pointers as addresses.
    std::array<std::intptr_t, 7> arguments;
    /// The result, or the one of a failure.
    std::intptr_t result;
    bool fails = false;

    template <class T>
    T* getPointer(std::size_t index) const {
        return reinterpret_cast<T*>(arguments[index]); // NOLINT(performance-no-int-to-ptr): stored as a number above
    }
};

/// While it lives, records the libraries' calls of all threads in their order, makes some of them fail, and runs
/// actions before and after others. Several may live at once, and each sees every call; the last one made ends first.
/// The name of a function that is not replaced is refused.
class CallWatch {
public:
    using Action = std::function<void(Call&)>;

    CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;
    ~CallWatch();

    /// Makes the `index`th call of `name` from now on fail, counted from 0.
    void fail(std::string_view name, int index = 0);
    /// The failing call returns `result`.
    void failWith(std::intptr_t result, std::string_view name, int index = 0);
    /// Runs `action`, which may make the call fail, before each call of `name`, or of any function if that is empty.
    void before(std::string_view name, Action action);
    /// Runs `action` after each call of `name`.
    void after(std::string_view name, Action action);

    std::vector<Call> getCalls(std::string_view name) const;
    int count(std::string_view name) const { return static_cast<int>(getCalls(name).size()); }
    /// The names of the calls of one kind in their order, separated by spaces, without those that preserve libcrypto's
    /// error queue or ask for the kind of a key.
    std::string getNames(CallKind kind) const;
    /// The number of objects that `made` returned and no function whose name starts with `ended` has received.
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

/// The locks that threads hold through ul::CMutexLock.
class HeldLocks {
public:
    /// The names of its constructor and its destructor among the imported calls.
    static constexpr char lock[] = "_ZN2ul10CMutexLockC1EPNS_6IMutexE";
    static constexpr char unlock[] = "_ZN2ul10CMutexLockD1Ev";

    explicit HeldLocks(CallWatch& watch) {
        watch.after(lock, [this](const Call& call) {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_holders[call.arguments[0]] = {call.arguments[1], std::this_thread::get_id()};
        });
        watch.before(unlock, [this](const Call& call) {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_holders.erase(call.arguments[0]);
        });
    }

    /// Whether another thread holds the mutex that a call is about to lock.
    bool isHeldByAnother(const Call& call) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        for (const auto& [scope, holder] : m_holders) {
            if (holder.first == call.arguments[1] && holder.second != std::this_thread::get_id())
                return true;
        }
        return false;
    }

private:
    std::mutex m_mutex;
    // Mutex and thread by the address of the lock object.
    std::map<std::intptr_t, std::pair<std::intptr_t, std::thread::id>> m_holders;
};

} // namespace sarn_test
