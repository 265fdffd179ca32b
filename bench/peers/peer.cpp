// SPDX-License-Identifier: Apache-2.0
// Prints how long other libraries take for the same work, in times of raw libcrypto: a line
// "operation;library;ratio" for each.
#include "peers/peer.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace bench {

namespace {

using MakeWork = std::function<Work(const Peer& peer, const Result& result)>;

/// The first is the one with which the others are compared.
const std::vector<std::unique_ptr<Peer>>& getPeers() {
    static const std::vector<std::unique_ptr<Peer>> peers = [] {
        std::vector<std::unique_ptr<Peer>> all;
        for (const auto create : {createLibcrypto, createSarn, createBotan, createCryptoPP, createGcrypt, createNettle})
            all.push_back(create());
        return all;
    }();
    return peers;
}

/// Returns the result, so that it can be the input of the opposite operation.
Bytes comparePeers(const std::string& operation, std::size_t resultSize, const MakeWork& make) {
    const auto expected = std::make_shared<Bytes>(resultSize);
    const Work base = make(*getPeers()[0], expected);
    base();
    for (const std::unique_ptr<Peer>& peer : getPeers()) {
        const auto result = std::make_shared<Bytes>(resultSize);
        const Work work = make(*peer, result);
        if (!work || peer == getPeers()[0])
            continue;
        work();
        if (*result != *expected) {
            std::fprintf(stderr, "%s: %s gives another result\n", operation.c_str(), peer->getName());
            std::exit(1);
        }
        std::printf("%s;%s;%.3f\n", operation.c_str(), peer->getName(), findRatio(base, work));
    }
    return *expected;
}

void compareCipher(const std::string& id, std::size_t keySize, std::size_t blockSize, std::size_t size,
                   const std::string& suffix) {
    CipherTask task = {id, true, Bytes(keySize, 7), Bytes(blockSize, 3), Bytes(size, 5)};
    const auto make = [&](const Peer& peer, const Result& result) { return peer.cipher(task, result); };
    task.input = comparePeers(id + " encrypt" + suffix, size, make);
    task.isEncrypting = false;
    comparePeers(id + " decrypt" + suffix, size, make);
}

void compareAll() {
    const Bytes data(65536, 5);
    compareCipher("aes256cbc", 32, 16, 16, ", 16 B");
    compareCipher("aes256cbc", 32, 16, data.size(), "");
    compareCipher("aes128cbc", 16, 16, data.size(), "");
    compareCipher("bfcbc", 16, 8, data.size(), "");
    compareCipher("cast128cbc", 16, 8, data.size(), "");
    compareCipher("ideacbc", 16, 8, data.size(), "");
    for (const auto& [id, size] : {std::pair{"md4", 16}, {"md5", 16}, {"sha1", 20}, {"sha256", 32}})
        comparePeers(id, static_cast<std::size_t>(size), [&, name = id](const Peer& peer, const Result& result) {
            return peer.digest(name, data, result);
        });
    comparePeers("HMAC, 16 B", 20, [](const Peer& peer, const Result& result) {
        return peer.hmacSHA1({'k', 'e', 'y'}, Bytes(16), result);
    });
    comparePeers("PBKDF2, 1000 times", 32, [](const Peer& peer, const Result& result) {
        return peer.deriveKey("password", "12345678", 1000, result);
    });
    const Bytes text = comparePeers("Base64 encode", 87384, [&](const Peer& peer, const Result& result) {
        return peer.encodeBase64(data, result);
    });
    comparePeers("Base64 decode", data.size(), [&](const Peer& peer, const Result& result) {
        return peer.decodeBase64({text.begin(), text.end()}, result);
    });
}

} // namespace

} // namespace bench

int main() {
    bench::compareAll();
}
