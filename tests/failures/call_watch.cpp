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

std::atomic<CallWatch*> activeWatch{nullptr};

const ImportedCall& find(std::string_view name) {
    for (const ImportedCall& call : getImportedCalls()) {
        if (call.name == name)
            return call;
    }
    throw std::invalid_argument("no such call: " + std::string(name));
}

} // namespace

CallWatch::CallWatch() {
    installReplacements();
    activeWatch = this;
}

CallWatch::~CallWatch() {
    activeWatch = nullptr;
}

void CallWatch::fail(std::string_view name, int index) {
    failWith(find(name).failure, name, index);
}

void CallWatch::failWith(std::intptr_t result, std::string_view name, int index) {
    m_failures.push_back({&find(name), index, result});
}

void CallWatch::before(std::string_view name, Action action) {
    m_hooks.push_back({&find(name), false, std::move(action)});
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

std::string CallWatch::getLibcryptoCalls() const {
    std::string names;
    for (const Call& call : getCalls()) {
        const std::string_view name = call.function->name;
        if (call.function->kind == CallKind::Libcrypto && name.rfind("ERR_", 0) != 0 && name != "EVP_PKEY_base_id")
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

void CallWatch::run(const Call& call, bool isAfter) const {
    for (const Hook& hook : m_hooks) {
        if (hook.isAfter == isAfter && hook.function == call.function)
            hook.action(call);
    }
}

bool CallWatch::takeFailure(Call& call) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    bool fails = false;
    for (Failure& failure : m_failures) {
        if (failure.function == call.function && failure.callsBefore-- == 0) {
            call.result = failure.result;
            fails = true;
        }
    }
    return fails;
}

bool CallWatch::begin(Call& call) {
    call.result = call.function->failure;
    CallWatch* const watch = activeWatch;
    if (!watch)
        return false;
    watch->run(call, false);
    return watch->takeFailure(call);
}

void CallWatch::end(const Call& call) {
    CallWatch* const watch = activeWatch;
    if (!watch)
        return;
    watch->run(call, true);
    const std::lock_guard<std::mutex> lock(watch->m_mutex);
    watch->m_calls.push_back(call);
}

} // namespace sarn_test
