// SPDX-License-Identifier: Apache-2.0
// Takes the library's log to where the host keeps its own.
#include <sarn/host.h>

#include <iostream>
#include <mutex>
#include <vector>

int main() {
    std::mutex mutex;
    std::vector<std::string> lines;
    const ul::LogHandler before = ul::setLogHandler([&](const ul::String& line) {
        const std::lock_guard<std::mutex> lock(mutex); // lines come from any thread, and from two at once
        lines.push_back("[sarn] " + line.toUTF8());
    });

    try {
        sarn::CCipherManager::get()->getCipher("rot13");
    } catch (const ul::CError& error) {
        ul::logError(error, "The job \"nightly\" cannot start.", "It is tried again tomorrow.");
    }

    ul::setLogHandler(before); // before the lines go away
    for (const std::string& line : lines)
        std::cout << line << "\n";
}
