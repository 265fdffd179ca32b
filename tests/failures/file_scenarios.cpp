// SPDX-License-Identifier: Apache-2.0
#include "failures/call_watch.h"
#include "failures/scenarios.h"
#include "failures/signed_file.h"

#include "ul/buffer_stream.h"
#include "ul/data_stream.h"
#include "ul/file.h"

namespace sarn_test {

namespace {

struct Place {
    explicit Place(const std::string& content) : file(folder.write("file", content)) {}

    TempFolder folder;
    ul::CWindowsPath file;
};

Bytes readText() {
    static const Place place(std::string(10000, 'x'));
    return toUTF8Bytes(ul::readUTF8TextFile(place.file));
}

/// `write` replaces a file. If it fails, the file is the old one or a new one of `size` bytes. It is the only one in
/// its folder unless the removal of another failed.
template <class Write>
Bytes replaceFile(std::size_t size, Write write) {
    static const Place place("old");
    place.folder.write("file", "old");
    const CallWatch watch;
    try {
        write(place.file);
    } catch (...) {
        if (const std::string now = place.folder.read("file"); now != "old" && now.size() != size)
            throw std::logic_error("the file is neither the old nor the new one");
        const std::vector<Call> removals = watch.getCalls("unlinkat");
        const bool isRemoved =
            std::none_of(removals.begin(), removals.end(), [](const Call& call) { return call.fails; });
        if (isRemoved && place.folder.list() != std::vector<std::string>{"file"})
            throw std::logic_error("something is left beside the file");
        if (!isRemoved)
            place.folder.clear();
        throw;
    }
    return toBytes(place.folder.read("file"));
}

Bytes writeText() {
    static const ul::String text(std::string(1000, 'y').c_str());
    return replaceFile(1000, [](const ul::CWindowsPath& file) { ul::writeUTF8TextFile(file, text); });
}

Bytes storeSignature() {
    static const Bytes bytes = makePattern(128);
    Buffer signature = makeBuffer(bytes);
    // Two lines and a part of one, each with a line end of two characters.
    return replaceFile(178, [&](const ul::CWindowsPath& file) { sarn::storeSignatureBase64(file, signature); });
}

Bytes loadSignature() {
    static const Place place("b25seSBjb3B5\r\n");
    Buffer signature;
    sarn::loadSignatureBase64(place.file, signature);
    return toBytes(signature);
}

Bytes readStream() {
    static const Place place("content");
    ul::CWindowsFileInStream stream(place.file);
    Bytes content(static_cast<std::size_t>(stream.getLength()));
    stream.read(content.data(), static_cast<int>(content.size()));
    return stream.isEndOfStream() ? content : Bytes();
}

Bytes useINI() {
    static const Place place("[a]\nb=c\n[d]\ne=f\n");
    const ul::P<ul::CINIContent> content = ul::CINIContent::parseFile(place.file);
    content->setSectionValue("d", "g", "h");
    ul::TArray<ul::String> names;
    content->getSectionValueNames("d", names);
    ul::String value;
    content->tryGetSectionValue(value, "d", "g");
    return toUTF8Bytes(names[1] + value);
}

Bytes composeText() {
    ul::String text = "the only copy of somebody's data";
    text += ul::toString(1234567) + ul::toHexString(255);
    return toUTF8Bytes(text.Mid(4, -1) + ul::String::fromUTF8("\xC3\xBC", 2));
}

Bytes composeErrors() {
    const ul::CError cause("cause", "", -1, ul::CProps().add("name", "value"), nullptr);
    ul::CError error("error", "text", 7, ul::CProps().add("other", "value"), &cause);
    const ul::P<ul::CError> copy = error.clone();
    return toUTF8Bytes(copy->getMessage() + copy->getCause()->getMessage() + copy->getProps().getValue(0));
}

Bytes writeNumbers() {
    Buffer buffer;
    ul::CBufferStream stream(&buffer, 1.0);
    ul::CDataOutStream out(stream);
    for (int i = 0; i < 100; ++i)
        out.writeInt32(i).writeBool(true);
    return toBytes(buffer);
}

constexpr char configText[] = "[server]\naddress=backup.example\nport=443\n";

/// The text of a key file, read once.
const ul::String& getKey(const std::string& name, const char* suffix) {
    static std::map<std::string, ul::String> keys;
    ul::String& key = keys[name + suffix];
    if (key.isEmpty())
        key = readKey(name, suffix);
    return key;
}

Bytes sign(const std::string& name, const char* passphrase = "") {
    return sarn_test::sign(sarn::createRSA_SHA1(), getKey(name, "_for_tests_only.pem"), toBytes("only copy"),
                           passphrase);
}

bool isSigned(const std::string& name, const char* text, const Bytes& signature) {
    return verify(sarn::createDSS_SHA1(), getKey(name, "_for_tests_only.pub.pem"), toBytes(text), signature);
}

Run runVerify(const std::string& name, const char* text) {
    return [=, signature = Bytes()]() mutable {
        if (signature.empty())
            signature = sign(name);
        return asBytes(isSigned(name, text, signature));
    };
}

const SignedFile& getFile() {
    static const SignedFile file(std::string(20000, 'x'));
    return file;
}

Bytes signFile() {
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(getFile().path, getFile().privateKey, signature);
    return toBytes(signature);
}

Bytes verifyChangedFile() {
    static const SignedFile file("signed");
    static const ul::CWindowsPath changed = file.folder.write("file", "other");
    return asBytes(file.verify());
}

Bytes readConfig(bool isBase64) {
    static const SignedFile files[] = {SignedFile(configText), SignedFile(toBase64(configText))};
    return toUTF8Bytes(files[isBase64].readConfig(isBase64)->getValue("/server/address"));
}

Bytes listValues(sarn::CSignedConfig& config, const char* prefix) {
    ul::TArray<ul::String> names;
    config.getValueNamesWithPrefix(names, prefix);
    ul::String text;
    for (const ul::String& name : names)
        text += name + "=" + config.getValue(name) + ";";
    return toUTF8Bytes(text);
}

Bytes useConfig() {
    static const ul::P<sarn::CSignedConfig> config = SignedFile(configText).readConfig(false);
    config->setValueNonPersistent("/server/name", "here");
    return listValues(*config, "/server");
}

std::string makeLargeConfig() {
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "[section " + std::to_string(i) + "]\na name that is long enough=and a value that is long enough\n";
    return text;
}

Bytes readLargeConfig() {
    static const SignedFile file(makeLargeConfig());
    return listValues(*file.readConfig(false), "/section 5");
}

} // namespace

Scenarios makeFileScenarios() {
    return {
        {"ReadText", readText},
        {"WriteText", writeText},
        {"StoreSignatureFile", storeSignature},
        {"LoadSignatureFile", loadSignature},
        {"FileStream", readStream},
        {"INIFile", useINI},
        {"RelativePath", [] { return toUTF8Bytes(ul::CWindowsPath("a\\b\\..\\c").getString()); }},
        {"Text", composeText},
        {"Errors", composeErrors},
        {"DataStream", writeNumbers},
    };
}

Scenarios makeSignatureScenarios() {
    constexpr bool verifies = true;
    return {
        {"SignRSA", [] { return sign("rsa1024"); }},
        {"SignRSAOfEncryptedKey", [] { return sign("rsa2048_encrypted_traditional", testPassphrase); }},
        {"SignRSAOfPKCS8Key", [] { return sign("rsa2048_pkcs8"); }},
        {"SignRSAOf4096Bits", [] { return sign("rsa4096"); }},
        // DSA signatures differ each time.
        {"SignAndVerifyDSA", [] { return asBytes(isSigned("dsa1024", "only copy", sign("dsa1024"))); }, verifies},
        {"VerifySignatureRSA", runVerify("rsa1024", "only copy"), verifies},
        {"VerifySignatureDSA", runVerify("dsa1024", "only copy"), verifies},
        {"VerifySignatureRSAOf4096Bits", runVerify("rsa4096", "only copy"), verifies},
        {"VerifySignatureDSAOf2048Bits", runVerify("dsa2048", "only copy"), verifies},
        {"VerifySignatureRSAOfAnotherText", runVerify("rsa1024", "only c0py"), verifies},
        {"VerifySignatureDSAOfAnotherText", runVerify("dsa1024", "only c0py"), verifies},
        {"SignFile", signFile},
        {"VerifySignatureOfFile", [] { return asBytes(getFile().verify()); }, verifies},
        {"VerifySignatureOfChangedFile", verifyChangedFile, verifies},
        {"ReadSignedConfig", [] { return readConfig(false); }, verifies},
        {"ReadSignedConfigInBase64", [] { return readConfig(true); }, verifies},
        {"UseSignedConfig", useConfig},
        {"LargeSignedConfig", readLargeConfig, verifies},
    };
}

} // namespace sarn_test
