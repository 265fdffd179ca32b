// SPDX-License-Identifier: Apache-2.0
#include "sarn/signed_config.h"

#include "frame/raise.h"

#include "sarn/base64.h"
#include "sarn/signature.h"

#include "ul/file.h"

#include <climits>
#include <cstdint>

namespace sarn {

namespace {

/// Reads a file of Base64 text. It asks for the length once and reads exactly that, unlike CINIContent::readFile(): a
/// file that shrinks in between is a stream error, not a shorter text.
void readBase64File(const ul::CWindowsPath& path, ul::TBuffer<unsigned char>& content) {
    ul::CWindowsFileInStream stream(path);
    const std::int64_t length = stream.getLength();
    if (length > INT_MAX)
        throw ul::CFileError("read file", path.getString(), "it is too large to be held in memory", -1);
    const auto size = static_cast<int>(length);
    content.setUsed(size);
    stream.read(content.getData(), size);
}

void decodeContent(const ul::CWindowsPath& path, ul::TBuffer<unsigned char>& content) {
    const ul::String text = ul::decodeUTF8(content, path);
    base64Decode(text, content);
}

bool isSignatureOf(const ul::TBuffer<unsigned char>& content, const ul::String& publicKey,
                   const ul::TBuffer<unsigned char>& signature) {
    const ul::P<IVerifier> verifier = createRSA_SHA1()->beginVerify(publicKey);
    verifier->update(content.getData(), content.getUsed());
    return verifier->finish(signature);
}

} // namespace

CSignedConfigSignatureError::CSignedConfigSignatureError(const ul::TPathImpl<ul::CWindowsPathTraits>& path)
    : ul::CError("Invalid signature for config file.", "", -1, ul::CProps().add("path", path.getString()), nullptr) {}

CSignedConfigSignatureError::CSignedConfigSignatureError(const CSignedConfigSignatureError&) = default;
CSignedConfigSignatureError& CSignedConfigSignatureError::operator=(const CSignedConfigSignatureError&) = default;
CSignedConfigSignatureError::~CSignedConfigSignatureError() = default;

ul::P<ul::CError> CSignedConfigSignatureError::clone() {
    return ul::make<CSignedConfigSignatureError>(*this);
}

void CSignedConfigSignatureError::throwClone() const {
    throw CSignedConfigSignatureError(*this);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts are compiled against a path by value
CSignedConfig::CSignedConfig(ul::TPathImpl<ul::CWindowsPathTraits> path, const ul::String& publicKey,
                             bool base64Encoded) {
    ul::TBuffer<unsigned char> signature;
    loadSignatureBase64(ul::CWindowsPath(path.getString() + ".sig"), signature);
    if (!verifyFileSignature_RSA_SHA1(path, publicKey, signature))
        throw CSignedConfigSignatureError(path);
    // Only a verified file is read into memory. It may have been replaced since, so the bytes themselves are verified
    // before they are parsed.
    ul::TBuffer<unsigned char> content;
    if (base64Encoded)
        readBase64File(path, content);
    else
        ul::CINIContent::readFile(path, content);
    if (!isSignatureOf(content, publicKey, signature))
        throw CSignedConfigSignatureError(path);
    if (base64Encoded)
        decodeContent(path, content);
    m_ini = ul::CINIContent::parseData(content, path);
}

CSignedConfig::CSignedConfig(const CSignedConfig&) = default;
CSignedConfig& CSignedConfig::operator=(const CSignedConfig&) = default;

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
    // A value before the first section is in the section "".
    return m_ini->tryGetSectionValue(value, section, name) ||
           (section == "/" && m_ini->tryGetSectionValue(value, ul::getEmptyString(), name));
}

void CSignedConfig::getValueNamesWithPrefix(ul::TArray<ul::String>& names, const ul::String& prefix) const {
    // Not at once to `names`, of which the prefix may be one: they move.
    ul::TArray<ul::String> found;
    ul::TArray<ul::String> sections;
    m_ini->getSectionNames(sections);
    for (const ul::String& section : sections) {
        ul::TArray<ul::String> valueNames;
        m_ini->getSectionValueNames(section, valueNames);
        for (const ul::String& name : valueNames) {
            const ul::String key = "/" + section + "/" + name;
            if (key.StartsWith(prefix))
                found.append(key);
        }
    }
    for (const ul::String& key : found)
        names.append(key);
}

void CSignedConfig::setValueNonPersistent(const ul::String& key, const ul::String& value) {
    ul::String section;
    ul::String name;
    splitKey(key, section, name);
    m_ini->setSectionValue(section, name, value);
}

void CSignedConfig::splitKey(const ul::String& key, ul::String& section, ul::String& name) {
    ul::String separator;
    ul::partition(key.StartsWith(L"/") ? key.Mid(1) : key, "/", section, separator, name);
    if (separator.isEmpty()) {
        // Without a separator, partition() has put the whole key into the section.
        name = section;
        section = "/";
    }
}

} // namespace sarn
