// SPDX-License-Identifier: Apache-2.0
#include "sarn/signed_config.h"

#include "frame/raise.h"

#include "sarn/encoding.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <climits>
#include <cstdint>

namespace sarn {

namespace {

/// Parses a file that holds Base64 text.
ul::P<ul::CINIContent> parseBase64File(const ul::CWindowsPath& path) {
    ul::CWindowsFileInStream stream(path);
    const std::int64_t length = stream.getLength();
    if (length > INT_MAX)
        throw ul::CFileError("read file", path.getString(), "it is too large to be held in memory", -1);
    ul::TBuffer<unsigned char> content(static_cast<int>(length), -1);
    stream.read(content.getData(), content.getUsed());
    const ul::String text = ul::String::fromUTF8(reinterpret_cast<const char*>(content.getData()),
                                                 static_cast<std::size_t>(content.getUsed()));
    ul::TBuffer<unsigned char> decoded;
    base64Decode(text, decoded);
    return ul::CINIContent::parseData(decoded);
}

} // namespace

CSignedConfigSignatureError::CSignedConfigSignatureError(const ul::TPathImpl<ul::CWindowsPathTraits>& path)
    : ul::CError("Invalid signature for config file.", "", -1, ul::CProps().add("path", path.getString()), nullptr) {}

CSignedConfigSignatureError::~CSignedConfigSignatureError() = default;

ul::P<ul::CError> CSignedConfigSignatureError::clone() {
    return ul::make<CSignedConfigSignatureError>(*this);
}

void CSignedConfigSignatureError::throwClone() const {
    throw CSignedConfigSignatureError(*this);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts are compiled against a path that is passed by value
CSignedConfig::CSignedConfig(ul::TPathImpl<ul::CWindowsPathTraits> path, const ul::String& publicKey,
                             bool base64Encoded) {
    const ul::CWindowsPath signaturePath(path.getString() + ".sig");
    if (!verifyFileSignature_RSA_SHA1(path, publicKey, signaturePath))
        throw CSignedConfigSignatureError(path);
    m_ini = base64Encoded ? parseBase64File(path) : ul::CINIContent::parseFile(path);
}

CSignedConfig::~CSignedConfig() = default;

ul::String CSignedConfig::getValue(const ul::String& key) {
    ul::String value;
    if (!getValue(key, value))
        raiseError("Required config value '" + key + "' not found.");
    return value;
}

bool CSignedConfig::getValue(const ul::String& key, ul::String& value) const {
    ul::String section;
    ul::String name;
    splitKey(key, section, name);
    return m_ini->tryGetSectionValue(value, section, name);
}

void CSignedConfig::getValueNamesWithPrefix(ul::TArray<ul::String>& names, const ul::String& prefix) const {
    ul::TArray<ul::String> sections;
    m_ini->getSectionNames(sections);
    for (const ul::String& section : sections) {
        ul::TArray<ul::String> valueNames;
        m_ini->getSectionValueNames(section, valueNames);
        for (const ul::String& name : valueNames) {
            const ul::String key = "/" + section + "/" + name;
            if (key.StartsWith(prefix))
                names.append(key);
        }
    }
}

void CSignedConfig::setValueNonPersistent(const ul::String& key, const ul::String& value) {
    ul::String section;
    ul::String name;
    splitKey(key, section, name);
    m_ini->setSectionValue(section, name, value);
}

void CSignedConfig::splitKey(const ul::String& key, ul::String& section, ul::String& name) {
    ul::String separator;
    ul::partition(key.StartsWith(L"/") ? key.Mid(1, -1) : key, "/", section, separator, name);
    if (separator.isEmpty()) {
        // partition() has put the whole key into the section.
        name = section;
        section = "/";
    }
}

} // namespace sarn
