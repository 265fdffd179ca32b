// SPDX-License-Identifier: Apache-2.0
// Signature files, for signatures and signed configurations.
#pragma once

#include "secrets.h"

#include <sarn/host.h>

#include <string>

namespace tool {

struct SigningOptions {
    std::string file;
    std::string key;
    SecretSource passphrase;
    std::string to;
    bool mayReplace = false;
};

/// Adds the options of signing.
void addSigning(CLI::App& command, SigningOptions& options);

/// Begins to verify with the key of a file.
/// \throws Problem if it is not a public key.
ul::P<sarn::IVerifier> beginVerify(const std::string& name, const ul::String& key);

/// Reads a signature file.
/// \throws Problem NotVerified if it is not Base64.
ul::TBuffer<unsigned char> readSignature(const std::string& name);

/// Signs a file and writes the signature as Base64 text.
/// \param checked the bytes of the file if they were read already
void sign(const SigningOptions& options, const Bytes* checked = nullptr);

} // namespace tool
