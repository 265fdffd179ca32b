// SPDX-License-Identifier: Apache-2.0
#include "manifest.h"

#include "host_files.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

constexpr char macSection[] = "[hmac]\n";

ul::String getMacLine(const ul::String& text, const Key& key) {
    return "sha1=" + ul::text(sarn::base64(sarn::hmacSHA1(key, text.toUTF8()))) + "\n";
}

/// Loads a manifest as the signed configuration that it also is.
ul::P<sarn::CSignedConfig> load(const ul::CWindowsPath& path) try {
    return ul::make<sarn::CSignedConfig>(path, readPublicKey(), false);
} catch (const sarn::CSignedConfigSignatureError& error) {
    throw ul::CError("The manifest's signature does not match.", "", -1, error.getProps(), nullptr);
}

} // namespace

void Manifest::write(const fs::path& path, const Key& macKey) const {
    std::string text = "[backup]\ncipher=" + cipher.toUTF8() + "\nsalt=" + std::to_string(salt) +
                       "\niterations=" + std::to_string(iterations) + "\n[files]\n";
    for (std::size_t i = 0; i < files.size(); ++i)
        text += std::to_string(i) + "=" + files[i].digest + " " + files[i].name + "\n";
    const ul::String content = ul::text(text);
    writeSigned(path, content + macSection + getMacLine(content, macKey));
}

Manifest readManifest(const fs::path& path) {
    const ul::P<sarn::CSignedConfig> content = load(ul::path(path));
    Manifest manifest;
    manifest.cipher = content->getValue("/backup/cipher");
    manifest.salt = sarn::valueOr(*content, "/backup/salt", manifest.salt);
    manifest.iterations = sarn::valueOr(*content, "/backup/iterations", manifest.iterations);
    for (const ul::String& key : sarn::getKeys(*content, "/files/")) {
        const std::string line = content->getValue(key).toUTF8();
        const std::size_t space = line.find(' ');
        manifest.files.push_back({line.substr(space + 1), line.substr(0, space)});
    }
    return manifest;
}

bool hasRightHMAC(const fs::path& path, const Key& macKey) {
    ul::String before;
    ul::String separator;
    ul::String after;
    const ul::String header = ul::String("\n") + macSection; // a line of its own: a file may be called "[hmac]"
    ul::partition(ul::readUTF8TextFile(ul::path(path)), header, before, separator, after);
    return after == getMacLine(before + "\n", macKey);
}

} // namespace demo
