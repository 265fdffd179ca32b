// SPDX-License-Identifier: Apache-2.0
#include "failures/call_watch.h"

#include <algorithm>
#include <atomic>

namespace sarn_test {

namespace {

std::atomic<CallWatch*> activeWatch{nullptr};

} // namespace

CallWatch::CallWatch() {
    installReplacements();
    activeWatch = this;
}

CallWatch::~CallWatch() {
    activeWatch = nullptr;
}

void CallWatch::fail(const char* name, int index) {
    const std::vector<ImportedCall>& all = getImportedCalls();
    const auto called = std::find_if(all.begin(), all.end(),
                                     [&](const ImportedCall& call) { return call.name == std::string_view(name); });
    failWith(called->failure, name, index);
}

void CallWatch::failWith(std::intptr_t result, const char* name, int index) {
    m_failures.push_back({name, index, result});
}

std::vector<Call> CallWatch::getCalls(std::string_view name) const {
    std::vector<Call> calls;
    std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(calls),
                 [&](const Call& call) { return call.function->name == name; });
    return calls;
}

std::string CallWatch::getLibcryptoCalls() const {
    std::string names;
    for (const Call& call : m_calls) {
        const std::string_view name = call.function->name;
        if (call.function->kind == CallKind::Libcrypto && name.rfind("ERR_", 0) != 0 && name != "EVP_PKEY_base_id")
            names.append(names.empty() ? "" : " ").append(name);
    }
    return names;
}

int CallWatch::countLeft(const std::set<std::string_view>& made, const std::set<std::string_view>& ended) const {
    int left = 0;
    for (const Call& call : m_calls) {
        left += made.count(call.function->name) > 0 && call.result != 0;
        left -= ended.count(call.function->name) > 0 && call.arguments[0] != 0;
    }
    return left;
}

void CallWatch::run(const Call& call, bool isAfter) const {
    for (const Hook& hook : m_hooks) {
        if (hook.isAfter == isAfter && hook.name == call.function->name)
            hook.action(call);
    }
}

bool CallWatch::takeFailure(Call& call) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    bool fails = false;
    for (Failure& failure : m_failures) {
        if (failure.name == call.function->name && failure.callsBefore-- == 0) {
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
