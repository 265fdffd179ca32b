// SPDX-License-Identifier: Apache-2.0
#include "ul/log.h"

#include "text/utf8_text.h"

#include "ul/error.h"
#include "ul/format_error.h"
#include "ul/global_slot.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace ul {

namespace {

struct LogState {
    std::mutex mutex;
    // Shared, so that a line being logged keeps its handler even if another one is set meanwhile.
    std::shared_ptr<const LogHandler> handler;
};

void* createLogState() {
    return new LogState;
}

LogState& getLogState() {
    static CSafeGlobalSlot slot;
    return *static_cast<LogState*>(slot.use(&createLogState, nullptr));
}

/// Puts the text on one line: file names and property values are untrusted.
String escapeControls(const String& text) {
    const std::wstring& whole = text;
    if (std::none_of(whole.begin(), whole.end(), isControl))
        return text;
    String result;
    for (const wchar_t character : whole) {
        if (!isControl(character))
            result += character;
        else if (character == L'\n')
            result += "\\n";
        else
            result += "\\x" + toHexString(static_cast<int>(toCodeUnit(character))) + ";";
    }
    return result;
}

void writeLine(const String& text) {
    const String line = escapeControls(text);
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

/// Runs a logging step. Its failures must not reach the code that reports.
template <class Step>
void neverThrow(Step step) noexcept {
    try {
        step();
    } catch (...) {
        // There is nowhere else to report to.
    }
}

void appendOneError(String& line, const CError& error) {
    if (const auto* const argument = dynamic_cast<const CInvalidArgError*>(&error))
        line += argument->getWhere() + ": ";
    line += error.getMessage();
    const CProps& props = error.getProps();
    for (int i = 0; i < props.getCount(); ++i)
        line += (i == 0 ? " [" : ", ") + props.getName(i) + "=" + props.getValue(i);
    if (props.getCount() > 0)
        line += "]";
}

String describe(const std::exception& error) {
    const auto* const own = dynamic_cast<const CError*>(&error);
    if (!own)
        return decodeUTF8OrLatin1(error.what());
    String text;
    appendOneError(text, *own);
    for (const CError* cause = own->getCause(); cause; cause = cause->getCause()) {
        text += " Caused by: ";
        appendOneError(text, *cause);
    }
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

void logError(const String& message) noexcept {
    neverThrow([&] { writeLine("ERROR: " + message); });
}

void logError(const std::exception& error, const String& message, const String& text) noexcept {
    neverThrow([&] {
        String line = "ERROR: " + message + ": " + describe(error);
        if (!text.isEmpty())
            line += " (" + text + ")";
        writeLine(line);
    });
}

void onExceptionInDestructorIgnored(const char* name, std::exception& error, bool isBug) noexcept {
    neverThrow([&] {
        writeLine(String(isBug ? "BUG: " : "ERROR: ") + "exception in the destructor of " + name +
                  " ignored: " + describe(error));
    });
}

} // namespace ul
