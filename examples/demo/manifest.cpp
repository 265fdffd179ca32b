// SPDX-License-Identifier: Apache-2.0
#include "manifest.h"

#include "host_files.h"

#include <string>

namespace demo {

namespace fs = std::filesystem;

namespace {

constexpr char macSection[] = "[hmac]\n";

ul::String getHMAC(const ul::String& text, const Key& key) {
    const std::string bytes = text.toUTF8();
    ul::TBuffer<unsigned char> mac;
    sarn::calcHMAC_SHA1(mac, bytes.data(), static_cast<int>(bytes.size()), key.getData(), key.getUsed());
    return sarn::base64Encode(mac.getData(), mac.getUsed(), true, false);
}

ul::String fromUTF8(const std::string& text) {
    return ul::String::fromUTF8(text.data(), text.size());
}

ul::String getRequired(const ul::CINIContent& content, const ul::String& section, const char* name) {
    ul::String value;
    if (!content.tryGetSectionValue(value, section, name))
        throw ul::CError("The manifest is incomplete.", "", -1, ul::CProps().add("missing", name), nullptr);
    return value;
}

} // namespace

void Manifest::write(const fs::path& path, const Key& macKey, const ul::String& privateKey) const {
    ul::String text = "[backup]\ncipher=" + cipher + "\nsalt=" + fromUTF8(std::to_string(salt)) +
                      "\niterations=" + ul::toString(iterations) + "\n[files]\n";
    for (std::size_t i = 0; i < files.size(); ++i)
        text += fromUTF8(std::to_string(i)) + "=" + fromUTF8(files[i].digest + " " + files[i].name) + "\n";
    const ul::String mac = getHMAC(text, macKey);
    ul::writeUTF8TextFile(toPath(path), text + macSection + "sha1=" + mac + "\n");

    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(toPath(path), privateKey, signature);
    sarn::storeSignatureBase64(toPath(withSuffix(path, ".sig")), signature);
}

Manifest readManifest(const fs::path& path, const ul::String& publicKey) {
    if (!sarn::verifyFileSignature_RSA_SHA1(toPath(path), publicKey, toPath(withSuffix(path, ".sig"))))
        throw ul::CError("The manifest's signature does not match.", "", -1,
                         ul::CProps().add("path", toPath(path).getString()), nullptr);
    const ul::P<ul::CINIContent> content = ul::CINIContent::parseFile(toPath(path));
    Manifest manifest;
    manifest.cipher = getRequired(*content, "backup", "cipher");
    manifest.salt = std::stoull(getRequired(*content, "backup", "salt").toLatin1());
    manifest.iterations = std::stoi(getRequired(*content, "backup", "iterations").toLatin1());
    ul::TArray<ul::String> names;
    content->getSectionValueNames("files", names);
    for (const ul::String& name : names) {
        const std::string line = getRequired(*content, "files", name.toLatin1().c_str()).toUTF8();
        const std::size_t space = line.find(' ');
        manifest.files.push_back({line.substr(space + 1), line.substr(0, space)});
    }
    return manifest;
}

bool hasRightHMAC(const fs::path& path, const Key& macKey) {
    ul::String before;
    ul::String separator;
    ul::String after;
    ul::partition(ul::readUTF8TextFile(toPath(path)), macSection, before, separator, after);
    return after == "sha1=" + getHMAC(before, macKey) + "\n";
}

} // namespace demo
