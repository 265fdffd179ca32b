// SPDX-License-Identifier: Apache-2.0
// A configuration is read if and only if it is signed, and contains the values of its text.
#include "sarn/signed_config.h"

#include "signed_text.h"
#include "support/temp_folder.h"
#include "targets.h"

#include "sarn/base64.h"

#include "ul/ini.h"

namespace sarn_fuzz {

namespace {

/// The configuration as the INI reader parses it, or null.
ul::P<ul::CINIContent> tryParse(const Bytes& text) {
    Buffer content;
    content.init(text.data(), static_cast<int>(text.size()));
    try {
        return ul::CINIContent::parseData(content);
    } catch (const ul::CError&) {
        return nullptr;
    }
}

void checkContent(sarn::CSignedConfig& config) {
    ul::TArray<ul::String> names;
    config.getValueNamesWithPrefix(names, "");
    for (const ul::String& name : names) {
        ul::String value;
        config.getValue(name, value);
        config.setValueNonPersistent(name, value + "x");
    }
}

} // namespace

void fuzzSignedConfig(const std::uint8_t* data, std::size_t size) {
    static const sarn_test::TempFolder folder;
    Input input(data, size);
    const unsigned choice = input.take();
    const bool isSigned = choice % 4 != 0;
    const bool isBase64 = choice / 4 % 2 == 1;
    const Bytes text = input.toBytes();
    const std::string content =
        isBase64 ? sarn::base64Encode(text.data(), static_cast<int>(text.size()), true, true).toUTF8()
                 : input.toString();
    const ul::CWindowsPath path = folder.write("config", content);
    Buffer signature;
    const Bytes bytes = sign(getRSAKey(), isSigned ? content : content + " ");
    signature.init(bytes.data(), static_cast<int>(bytes.size()));
    sarn::storeSignatureBase64(folder.getPath("config.sig"), signature);
    const bool isReadable = tryParse(text) != nullptr;
    try {
        const auto config = ul::make<sarn::CSignedConfig>(path, getRSAKey().publicKey, isBase64);
        require(isSigned, "only what is signed is read");
        require(isReadable, "what is read is a configuration");
        checkContent(*config);
    } catch (const sarn::CSignedConfigSignatureError&) {
        require(!isSigned, "what is signed is trusted");
    } catch (const ul::CError&) {
        require(isSigned && !isReadable, "what is signed and a configuration is read");
    }
}

} // namespace sarn_fuzz
