// SPDX-License-Identifier: Apache-2.0
// Adds the library's log to the host's own.
#include <sarn/host.h>

#include <iostream>
#include <mutex>
#include <vector>

int main() {
    std::mutex mutex;
    std::vector<std::string> lines;
    const ul::LogHandler before = ul::setLogHandler([&](const ul::String& line) {
        const std::lock_guard<std::mutex> lock(mutex); // any thread may log, and two may log at once
        lines.push_back("[sarn] " + line.toUTF8());
    });

    try {
        sarn::CCipherManager::get()->getCipher("rot13");
    } catch (const ul::CError& error) {
        ul::logError(error, "The job \"nightly\" cannot start.", "It is tried again tomorrow.");
    }

    ul::setLogHandler(before); // before `lines` is destroyed
    for (const std::string& line : lines)
        std::cout << line << "\n";
}
