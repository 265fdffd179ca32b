// SPDX-License-Identifier: Apache-2.0
// The fuzz targets. Each target takes any bytes and ends the process when its property does not hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace sarn_fuzz {

using Target = void (*)(const std::uint8_t* data, std::size_t size);

struct NamedTarget {
    const char* name;
    Target run;
};

void fuzzArguments(const std::uint8_t* data, std::size_t size);
void fuzzBase64(const std::uint8_t* data, std::size_t size);
void fuzzBuffer(const std::uint8_t* data, std::size_t size);
void fuzzCipherOverlap(const std::uint8_t* data, std::size_t size);
void fuzzDecrypt(const std::uint8_t* data, std::size_t size);
void fuzzDecryptUnpadded(const std::uint8_t* data, std::size_t size);
void fuzzINI(const std::uint8_t* data, std::size_t size);
void fuzzPath(const std::uint8_t* data, std::size_t size);
void fuzzPrivateKey(const std::uint8_t* data, std::size_t size);
void fuzzPublicKey(const std::uint8_t* data, std::size_t size);
void fuzzSignature(const std::uint8_t* data, std::size_t size);
void fuzzSignatureFile(const std::uint8_t* data, std::size_t size);
void fuzzSignedConfig(const std::uint8_t* data, std::size_t size);
void fuzzStateOfChecksum(const std::uint8_t* data, std::size_t size);
void fuzzStateOfCombination(const std::uint8_t* data, std::size_t size);
void fuzzStateOfDigest(const std::uint8_t* data, std::size_t size);
void fuzzUTF8(const std::uint8_t* data, std::size_t size);

/// The files in corpus/ and the list in CMakeLists.txt have the same names.
constexpr NamedTarget targets[] = {
#ifdef SARN_FUZZ_COMMAND
    {"arguments", fuzzArguments},
#endif
    {"base64", fuzzBase64},
    {"buffer", fuzzBuffer},
    {"cipher_overlap", fuzzCipherOverlap},
    {"decrypt", fuzzDecrypt},
    {"decrypt_unpadded", fuzzDecryptUnpadded},
    {"ini", fuzzINI},
    {"path", fuzzPath},
    {"private_key", fuzzPrivateKey},
    {"public_key", fuzzPublicKey},
    {"signature", fuzzSignature},
    {"signature_file", fuzzSignatureFile},
    {"signed_config", fuzzSignedConfig},
    {"state_of_checksum", fuzzStateOfChecksum},
    {"state_of_combination", fuzzStateOfCombination},
    {"state_of_digest", fuzzStateOfDigest},
    {"utf8", fuzzUTF8},
};

/// The target called `name`, or null.
constexpr Target findTarget(std::string_view name) {
    for (const NamedTarget& target : targets) {
        if (target.name == name)
            return target.run;
    }
    return nullptr;
}

} // namespace sarn_fuzz
