// SPDX-License-Identifier: Apache-2.0
#include "host_files.h"

#include <algorithm>

namespace demo {

namespace fs = std::filesystem;

namespace {

ul::CWindowsPath getKeyPath(const char* name) {
    return ul::path(fs::path(SARN_DEMO_SOURCES) / "examples" / "demo" / "keys" / name);
}

fs::path makeTemporaryName() {
    return fs::temp_directory_path() / ("sarn_demo_" + ul::toHex(ul::makeRandomBytes(8)));
}

} // namespace

fs::path withSuffix(fs::path path, const char* suffix) {
    return path += suffix;
}

std::string toUTF8(const fs::path& path) {
    const auto text = path.generic_u8string(); // its type differs from C++20 on
    return {text.begin(), text.end()};
}

ul::String readPublicKey() {
    return ul::readUTF8TextFile(getKeyPath("demo_only.pub.pem"));
}

void writeSigned(const fs::path& path, const ul::String& text) {
    ul::writeUTF8TextFile(ul::path(path), text);
    const ul::CSecretText key = ul::readSecretTextFile(getKeyPath("demo_only.pem"));
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(ul::path(path), key, signature);
    sarn::storeSignatureBase64(ul::path(withSuffix(path, ".sig")), signature);
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
    : m_isOwn(wanted.empty()), m_path(m_isOwn ? makeTemporaryName() : wanted) {
    fs::create_directories(m_path);
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    if (m_isOwn)
        fs::remove_all(m_path, ignored);
}

} // namespace demo
