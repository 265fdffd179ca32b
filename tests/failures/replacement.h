// SPDX-License-Identifier: Apache-2.0
// What is called instead of an imported function, made from the type of that function.
#pragma once

#include "failures/imported_calls.h"

#include <cerrno>
#include <new>

namespace sarn_test {

template <auto function, class Type = decltype(function)>
struct Replacement;

template <auto function, class Result, class... Arguments>
struct Replacement<function, Result (*)(Arguments...)> {
    static inline const ImportedCall* description = nullptr;
    static inline Result failure{};
    static inline int error = 0;
    static inline bool isDoneAllTheSame = false;

    static Result call(Arguments... arguments) {
        if (!Injection::mustFail(*description))
            return function(arguments...);
        if (isDoneAllTheSame) {
            const Result result = function(arguments...);
            static_cast<void>(result);
        }
        if (error != 0)
            errno = error;
        return failure;
    }

    static Result callOrThrow(Arguments... arguments) {
        if (Injection::mustFail(*description))
            throw std::bad_alloc();
        return function(arguments...);
    }
};

template <auto function, class Result, class... Arguments>
struct Replacement<function, Result (*)(Arguments...) noexcept> : Replacement<function, Result (*)(Arguments...)> {};

template <class Function>
void* toAddress(Function* function) {
    return reinterpret_cast<void*>(function);
}

/// Describes an imported function that tells of a failure by returning `failure` and, if it is not 0, `errno`.
template <auto function, class Result>
ImportedCall describe(const char* name, CallKind kind, Result failure, bool isIgnored = false, int error = 0) {
    using Calls = Replacement<function>;
    Calls::failure = static_cast<decltype(Calls::failure)>(failure);
    Calls::error = error;
    return {name, kind, isIgnored, toAddress(&Calls::call), &Calls::description, error};
}

/// Describes one that tells of a failure although it has done its work.
template <auto function, class Result>
ImportedCall describeDone(const char* name, CallKind kind, Result failure, bool isIgnored, int error) {
    Replacement<function>::isDoneAllTheSame = true;
    return describe<function>(name, kind, failure, isIgnored, error);
}

/// Describes one whose replacement decides itself whether it fails.
template <class Function>
ImportedCall describeOwn(const char* name, CallKind kind, bool isIgnored, int error, Function* replacement,
                         const ImportedCall*& description) {
    return {name, kind, isIgnored, toAddress(replacement), &description, error};
}

/// Describes an operator new.
template <auto function>
ImportedCall describeThrowing(const char* name, CallKind kind) {
    using Calls = Replacement<function>;
    return {name, kind, false, toAddress(&Calls::callOrThrow), &Calls::description};
}

} // namespace sarn_test
