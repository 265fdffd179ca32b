// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "identifiers.h"
#include "report.h"
#include "status.h"

#include <sarn/host.h>

#include <memory>

namespace tool {

namespace {

constexpr char details[] =
    "Lists the ciphers and digests of the registries with their sizes in bytes, and the versions "
    "of the library and of\nthe libcrypto that it has loaded.";
constexpr char example[] = R"($ sarn algorithms | grep aes256cbc
cipher   aes256cbc         key 32, IV 16, block 16)";

std::string pad(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string makeLine(const char* kind, const std::string& id, const std::string& sizes) {
    return pad(kind, 9) + pad(id, 18) + sizes + "\n";
}

void addCipherRow(const sarn::ICipher& cipher, const std::string& id, std::string& lines,
                  std::vector<Record>& records) {
    const int key = cipher.getKeySize(), iv = cipher.getIVSize(), block = cipher.getBlockSize();
    lines += makeLine("cipher", id,
                      "key " + std::to_string(key) + ", IV " + std::to_string(iv) + ", block " + std::to_string(block));
    records.push_back(Record()
                          .add("kind", "cipher")
                          .add("id", id)
                          .add("key size", std::int64_t{key})
                          .add("IV size", std::int64_t{iv})
                          .add("block size", std::int64_t{block}));
}

int list(bool isJson) {
    std::string lines;
    std::vector<Record> records;
    for (const std::string& id : getCipherIds())
        addCipherRow(*sarn::CCipherManager::get()->getCipher(ul::text(id)), id, lines, records);
    for (const std::string& id : getDigestIds()) {
        const int size = sarn::CDigestManager::get()->getType(ul::text(id))->getDigestSize();
        lines += makeLine("digest", id, std::to_string(size));
        records.push_back(Record().add("kind", "digest").add("id", id).add("size", std::int64_t{size}));
    }
    const std::pair<const char*, const char*> versions[] = {{"sarn", sarn::getVersionText()},
                                                            {"libcrypto", sarn::getLibcryptoVersionText()}};
    for (const auto& [name, version] : versions) {
        lines += makeLine("version", name, version);
        records.push_back(Record().add("kind", "version").add("id", name).add("version", version));
    }
    print(isJson ? toJson(records) : lines);
    return Done;
}

} // namespace

void addAlgorithms(CommandLine& line) {
    const auto isJson = std::make_shared<bool>(false);
    CLI::App& command = addCommand(line, line.app, "algorithms", "Lists ciphers, digests and versions", details,
                                   example, [isJson] { return list(*isJson); });
    addJson(command, *isJson);
}

} // namespace tool
