// SPDX-License-Identifier: Apache-2.0
// Libraries that do the same work.
#pragma once

#include "measure.h"

#include <memory>
#include <string>

namespace bench {

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
    virtual Work encodeBase64(const Bytes&, const Result&) const { return {}; }
    virtual Work decodeBase64(const std::string&, const Result&) const { return {}; }
};

std::unique_ptr<Peer> createBotan();
std::unique_ptr<Peer> createCryptoPP();
std::unique_ptr<Peer> createGcrypt();
std::unique_ptr<Peer> createLibcrypto();
std::unique_ptr<Peer> createNettle();
/// This library.
std::unique_ptr<Peer> createSarn();

} // namespace bench
