// SPDX-License-Identifier: Apache-2.0
// The identifiers in the registries, which cannot be asked for them.
#pragma once

#include <string>
#include <vector>

namespace tool {

inline std::vector<std::string> getCipherIds() {
    return {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"};
}

inline std::vector<std::string> getDigestIds() {
    return {"md4", "md5", "sha1", "sha256", "adler32", "crc32", "md4-sha1", "md4-sha1-adler32"};
}

} // namespace tool
