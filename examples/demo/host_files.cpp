// SPDX-License-Identifier: Apache-2.0
#include "host_files.h"

#include <algorithm>
#include <stdexcept>

namespace demo {

namespace fs = std::filesystem;

namespace {

fs::path makeTemporaryFolder() {
    unsigned char bytes[8];
    ul::CMTRand::getGlobal()->randData(bytes, sizeof bytes);
    std::string name = "sarn_demo_";
    for (const unsigned char byte : bytes)
        name += ul::toHexString(byte).toLatin1();
    return fs::temp_directory_path() / name;
}

} // namespace

ul::CWindowsPath toPath(const fs::path& path) {
    // Without links, ".." and backslashes both the system and the library find the same file under the text.
    const std::string text = fs::weakly_canonical(path).u8string();
    if (fs::path::preferred_separator == '/' && text.find('\\') != std::string::npos)
        throw std::runtime_error("A name with a backslash cannot be backed up: " + text);
    return ul::CWindowsPath(ul::String::fromUTF8(text.data(), text.size()));
}

fs::path withSuffix(const fs::path& path, const char* suffix) {
    fs::path result = path;
    result += suffix;
    return result;
}

ul::String readDemoKey(const char* name) {
    return ul::readUTF8TextFile(toPath(fs::path(SARN_DEMO_SOURCES) / "examples" / "demo" / "keys" / name));
}

std::vector<fs::path> listFiles(const fs::path& path) {
    if (!fs::is_directory(path))
        return {path};
    std::vector<fs::path> files;
    for (auto entry = fs::recursive_directory_iterator(path); entry != fs::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry->is_directory() && (name.front() == '.' || name == "build"))
            entry.disable_recursion_pending();
        else if (entry->is_regular_file())
            files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

WorkFolder::WorkFolder(const fs::path& wanted)
    : m_isOwn(wanted.empty()), m_path(m_isOwn ? makeTemporaryFolder() : wanted) {
    fs::create_directories(m_path);
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    if (m_isOwn)
        fs::remove_all(m_path, ignored);
}

} // namespace demo
