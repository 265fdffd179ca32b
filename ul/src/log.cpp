// SPDX-License-Identifier: Apache-2.0
#include "ul/log.h"

#include "ul/error.h"
#include "ul/global_slot.h"
#include "utf8_text.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

namespace ul {

namespace {

struct LogState {
    std::mutex mutex;
    // Shared, so that a line under way keeps the handler that it goes to although another one is set meanwhile.
    std::shared_ptr<const LogHandler> handler;
};

void* createLogState() {
    return new LogState;
}

void destroyLogState(void* state) {
    delete static_cast<LogState*>(state);
}

LogState& getLogState() {
    static CSafeGlobalSlot slot;
    return *static_cast<LogState*>(slot.use(&createLogState, &destroyLogState));
}

void writeLine(const String& line) {
    LogState& state = getLogState();
    std::shared_ptr<const LogHandler> handler;
    {
        const std::lock_guard<std::mutex> lock(state.mutex);
        handler = state.handler;
    }
    if (handler)
        (*handler)(line);
    else
        std::fprintf(stderr, "%s\n", encodeUTF8Lossy(line).c_str());
}

/// Runs a logging step; whatever goes wrong in it must not reach the code that only wanted to report.
template <class Step>
void neverThrow(Step step) noexcept {
    try {
        step();
    } catch (...) {
        // There is no further place to report to.
    }
}

void appendError(String& line, const CError& error) {
    line += error.getMessage();
    const CProps& props = error.getProps();
    for (int i = 0; i < props.getCount(); ++i)
        line += (i == 0 ? " [" : ", ") + props.getName(i) + "=" + props.getValue(i);
    if (props.getCount() > 0)
        line += "]";
    if (error.getCause()) {
        line += " Caused by: ";
        appendError(line, *error.getCause());
    }
}

String describe(const std::exception& error) {
    String text;
    if (const auto* const own = dynamic_cast<const CError*>(&error))
        appendError(text, *own);
    else
        text += error.what();
    return text;
}

} // namespace

LogHandler setLogHandler(LogHandler handler) {
    std::shared_ptr<const LogHandler> next;
    if (handler)
        next = std::make_shared<const LogHandler>(std::move(handler));
    LogState& state = getLogState();
    {
        const std::lock_guard<std::mutex> lock(state.mutex);
        state.handler.swap(next);
    }
    return next ? *next : LogHandler();
}

void logError(const String& message) {
    neverThrow([&] { writeLine("ERROR: " + message); });
}

void logError(const std::exception& error, const String& message, const String& text) {
    neverThrow([&] {
        String line = "ERROR: " + message + ": " + describe(error);
        if (!text.isEmpty())
            line += " (" + text + ")";
        writeLine(line);
    });
}

void onExceptionInDestructorIgnored(const char* name, std::exception& error, bool isBug) {
    neverThrow([&] {
        writeLine(String(isBug ? "BUG: " : "ERROR: ") + "exception in the destructor of " + name +
                  " ignored: " + describe(error));
    });
}

} // namespace ul
