// SPDX-License-Identifier: Apache-2.0
// Replacements of imported functions, derived from the types of the functions.
#pragma once

#include "failures/call_watch.h"

#include <cerrno>
#include <new>
#include <type_traits>

namespace sarn_test {

template <class T>
std::intptr_t toNumber(T value) {
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<std::intptr_t>(value);
    else if constexpr (std::is_integral_v<T>)
        return static_cast<std::intptr_t>(value);
    else
        return 0;
}

template <class T>
T fromNumber(std::intptr_t number) {
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(number); // NOLINT(performance-no-int-to-ptr): the result of a failure is a number
    else
        return static_cast<T>(number);
}

template <auto function, class Type = decltype(function)>
struct Replacement;

template <auto function, class Result, class... Arguments>
struct Replacement<function, Result (*)(Arguments...)> {
    static inline const ImportedCall* description = nullptr;

    static Result call(Arguments... arguments) {
        Call made{description, {toNumber(arguments)...}, description->failure};
        CallWatch::begin(made);
        if constexpr (std::is_void_v<Result>) {
            function(arguments...);
            CallWatch::end(made);
        } else {
            if (!made.fails || description->has(done)) {
                const Result result = function(arguments...);
                made.result = made.fails ? made.result : toNumber(result);
            }
            CallWatch::end(made);
            if (made.fails && description->has(throws))
                throw std::bad_alloc();
            if (made.fails && description->error != 0)
                errno = description->error;
            return fromNumber<Result>(made.result);
        }
    }
};

template <auto function, class Result, class... Arguments>
struct Replacement<function, Result (*)(Arguments...) noexcept> : Replacement<function, Result (*)(Arguments...)> {};

/// Describes an imported function that reports a failure by the result `failure`, a number or an address, and by
/// `error` in `errno` if that is not 0.
template <auto function>
ImportedCall describe(CallKind kind, const char* name, std::intptr_t failure, int error = 0, unsigned traits = 0) {
    using Calls = Replacement<function>;
    return {name, kind, reinterpret_cast<void*>(&Calls::call), &Calls::description, failure, error, traits};
}

} // namespace sarn_test
