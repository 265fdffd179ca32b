// SPDX-License-Identifier: Apache-2.0
#include "failures/call_watch.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <set>
#include <stdexcept>
#include <utility>

namespace sarn_test {

namespace {

std::atomic<CallWatch*> innermost{nullptr};

const ImportedCall& find(std::string_view name) {
    for (const ImportedCall& call : getImportedCalls()) {
        if (call.name == name)
            return call;
    }
    throw std::invalid_argument("no such call: " + std::string(name));
}

} // namespace

CallWatch::CallWatch() : m_outer(innermost) {
    installReplacements();
    innermost = this;
}

CallWatch::~CallWatch() {
    innermost = m_outer;
}

void CallWatch::fail(std::string_view name, int index) {
    failWith(find(name).failure, name, index);
}

void CallWatch::failWith(std::intptr_t result, std::string_view name, int index) {
    before(name, [result, index](Call& call) mutable {
        if (index-- == 0) {
            call.result = result;
            call.fails = true;
        }
    });
}

void CallWatch::before(std::string_view name, Action action) {
    m_hooks.push_back({name.empty() ? nullptr : &find(name), false, std::move(action)});
}

void CallWatch::after(std::string_view name, Action action) {
    m_hooks.push_back({&find(name), true, std::move(action)});
}

std::vector<Call> CallWatch::getCalls(std::string_view name) const {
    std::vector<Call> calls;
    std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(calls),
                 [function = &find(name)](const Call& call) { return call.function == function; });
    return calls;
}

std::string CallWatch::getNames(CallKind kind) const {
    std::string names;
    // A copy, because the text allocates memory, and that call is recorded too.
    for (const Call& call : std::vector<Call>(m_calls)) {
        const std::string_view name = call.function->name;
        if (call.function->kind == kind && name.rfind("ERR_", 0) != 0 && name != "EVP_PKEY_base_id")
            names.append(names.empty() ? "" : " ").append(name);
    }
    return names;
}

int CallWatch::countLeft(std::string_view made, std::string_view ended) const {
    const ImportedCall& making = find(made);
    std::set<std::intptr_t> left;
    for (const Call& call : m_calls) {
        if (call.function == &making && call.result != 0)
            left.insert(call.result);
        else if (std::string_view(call.function->name).rfind(ended, 0) == 0)
            left.erase(call.arguments[0]);
    }
    return static_cast<int>(left.size());
}

void CallWatch::run(Call& call, bool isAfter) const {
    for (const Hook& hook : m_hooks) {
        if (hook.isAfter == isAfter && (!hook.function || hook.function == call.function))
            hook.action(call);
    }
}

void CallWatch::begin(Call& call) {
    for (const CallWatch* watch = innermost; watch; watch = watch->m_outer)
        watch->run(call, false);
}

void CallWatch::end(Call& call) {
    for (CallWatch* watch = innermost; watch; watch = watch->m_outer) {
        watch->run(call, true);
        const std::lock_guard<std::mutex> lock(watch->m_mutex);
        watch->m_calls.push_back(call);
    }
}

} // namespace sarn_test
