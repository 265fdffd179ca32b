// SPDX-License-Identifier: Apache-2.0
// Takes the library's log to where the host keeps its own.
#include <sarn/sarn.h>

#include <iostream>
#include <mutex>
#include <string>
#include <vector>

class HostLog {
public:
    // Comes from any thread, and from two at once.
    void add(const ul::String& line) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back("[sarn] " + line.toUTF8());
    }

    const std::vector<std::string>& getLines() const { return m_lines; }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

int main() {
    HostLog log;
    const ul::LogHandler before = ul::setLogHandler([&log](const ul::String& line) { log.add(line); });

    try {
        sarn::CCipherManager::get()->getCipher("rot13");
    } catch (const ul::CError& error) {
        ul::logError(error, "The job \"nightly\" cannot start.", "It is tried again tomorrow.");
    }

    ul::setLogHandler(before); // before what it writes to goes away
    for (const std::string& line : log.getLines())
        std::cout << line << "\n";
}
