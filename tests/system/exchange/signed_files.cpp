// SPDX-License-Identifier: Apache-2.0
#include "support/signing.h"
#include "support/temp_folder.h"
#include "system/exchange/bundle.h"

#include "sarn/signed_config.h"

namespace sarn_test {

namespace {

constexpr const char* keys[] = {"rsa1024", "rsa2048", "rsa3072", "rsa4096", "dsa1024", "dsa2048"};
constexpr int sizes[] = {0, 1, 8191, 8192, 8193, 16384, 100000};
constexpr char config[] = "top=0\n[backup]\nfolder=\xC3\xBC\nkeep/days=30\n";

struct ConfigForm {
    const char* name;
    bool isBase64;
};

constexpr ConfigForm configForms[] = {{"plain.ini", false}, {"base64.ini", true}};

ul::CWindowsPath getPath(const std::string& folder, const std::string& name) {
    return TempFolder::toPath(std::filesystem::absolute(std::filesystem::u8path(folder + "/" + name)));
}

void write(const std::string& folder, const std::string& name, const std::string& content) {
    std::ofstream(folder + "/" + name, std::ios::binary)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
}

void sign(const std::string& folder, const std::string& file, const std::string& key,
          const std::string& signatureFile) {
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(getPath(folder, file), readKey(key), signature);
    sarn::storeSignatureBase64(getPath(folder, signatureFile), signature);
}

} // namespace

void writeSignedFiles(const std::string& folder) {
    for (const int size : sizes) {
        const std::string name = "data" + std::to_string(size);
        write(folder, name, makeText(size));
        for (const char* const key : keys)
            sign(folder, name, key, name + "." + key + ".sig");
    }
    for (const ConfigForm& form : configForms) {
        write(folder, form.name, form.isBase64 ? toBase64(config) : config);
        sign(folder, form.name, "rsa2048", std::string(form.name) + ".sig");
    }
}

int checkSignedFiles(const std::string& folder) {
    for (const int size : sizes) {
        const std::string name = "data" + std::to_string(size);
        for (const char* const key : keys) {
            const std::string signatureName = name + "." + key + ".sig";
            require(sarn::verifyFileSignature_RSA_SHA1(getPath(folder, name), readPublicKey(key),
                                                       getPath(folder, signatureName)),
                    signatureName);
        }
        require(!sarn::verifyFileSignature_RSA_SHA1(getPath(folder, name), readPublicKey("rsa2048"),
                                                    getPath(folder, name + ".rsa1024.sig")),
                name + " with the signature of another key");
    }
    for (const ConfigForm& form : configForms) {
        sarn::CSignedConfig content(getPath(folder, form.name), readPublicKey("rsa2048"), form.isBase64);
        require(content.getValue("backup/folder").toUTF8() == "\xC3\xBC", form.name);
        require(content.getValue("backup/keep/days") == "30", form.name);
        require(content.getValue("top") == "0", form.name);
    }
    return static_cast<int>(std::size(sizes) * std::size(keys) + std::size(configForms));
}

} // namespace sarn_test
