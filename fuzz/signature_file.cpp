// SPDX-License-Identifier: Apache-2.0
// A signature file contains bytes in Base64 and verifies if and only if they are the signature.
#include "signed_text.h"
#include "support/temp_folder.h"
#include "targets.h"

#include "sarn/base64.h"

namespace sarn_fuzz {

void fuzzSignatureFile(const std::uint8_t* data, std::size_t size) {
    static const sarn_test::TempFolder folder;
    static const ul::CWindowsPath file = folder.write("file", "the only copy");
    static const Bytes signature = sign(getRSAKey(), "the only copy");
    const std::string content = Input(data, size).toString();
    const ul::CWindowsPath path = folder.write("file.sig", content);
    const std::optional<Bytes> loaded = tryFill([&](Buffer& out) { sarn::loadSignatureBase64(path, out); });
    // A byte order mark, which some editors write, is not part of the text.
    const std::size_t start = content.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    const std::optional<Bytes> decoded = tryFill([&](Buffer& out) {
        sarn::base64Decode(ul::String::fromUTF8(content.data() + start, content.size() - start), out);
    });
    require(loaded == decoded, "a signature file is Base64");
    bool isVerified = false;
    try {
        isVerified = sarn::verifyFileSignature_RSA_SHA1(file, getRSAKey().publicKey, path);
    } catch (const ul::CError&) {
        require(!loaded, "what loads is a signature or not");
    }
    require(isVerified == (loaded == signature), "nothing but the signature verifies");
}

} // namespace sarn_fuzz
