// SPDX-License-Identifier: Apache-2.0
// Other libraries for the same work.
#pragma once

#include "comparison.h"

#include <memory>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<unsigned char>;
/// The result of a piece of work, for comparison.
using Result = std::shared_ptr<Bytes>;

/// Whole blocks in CBC mode. The key is set up each time, as for a new message.
struct CipherTask {
    std::string id;
    bool isEncrypting;
    Bytes key;
    Bytes iv;
    Bytes input;
};

struct SignatureTask {
    /// "rsa" or "dsa".
    std::string algorithm;
    /// PEM text, which is parsed each time.
    std::string privateKey;
    std::string publicKey;
    Bytes data;
};

/// One library. Each function returns work that writes to `result`, or no work if the library does not offer it.
class Peer {
public:
    Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    virtual ~Peer() = default;

    virtual const char* getName() const = 0;
    virtual Work cipher(const CipherTask& task, const Result& result) const = 0;
    virtual Work digest(const std::string& id, const Bytes& data, const Result& result) const = 0;
    virtual Work hmacSHA1(const Bytes& key, const Bytes& data, const Result& result) const = 0;
    /// As many bytes as `result` has.
    virtual Work deriveKey(const std::string& password, const std::string& salt, int iterations,
                           const Result& result) const = 0;
    virtual Work encodeBase64(const Bytes& data, const Result& result) const;
    virtual Work decodeBase64(const std::string& text, const Result& result) const;
    /// A signature with SHA-1; DSA's differ each time.
    virtual Work sign(const SignatureTask& task, const Result& result) const;
    /// Writes one byte, 1 if the signature is right.
    virtual Work verify(const SignatureTask& task, const Bytes& signature, const Result& result) const;
};

std::unique_ptr<Peer> createBotan();
std::unique_ptr<Peer> createCryptoPP();
std::unique_ptr<Peer> createGcrypt();
std::unique_ptr<Peer> createMbedTLS();
std::unique_ptr<Peer> createNettle();
/// The system's libcrypto 3, loaded in addition to the one of the program, or null if there is none.
std::unique_ptr<Peer> createLibcrypto3();

/// All other libraries, or none in a quick run.
const std::vector<std::unique_ptr<Peer>>& getPeers();

/// Adds the work that `make` returns for each peer to the cell called `name`. Ends the program if a result differs from
/// `expected`, unless that is empty.
void addPeers(const std::string& name, const Bytes& expected,
              const std::function<Work(const Peer& peer, const Result& result)>& make);

} // namespace bench
