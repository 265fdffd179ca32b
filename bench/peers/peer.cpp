// SPDX-License-Identifier: Apache-2.0
#include "peers/peer.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

Work Peer::encodeBase64(const Bytes&, const Result&) const {
    return {};
}

Work Peer::decodeBase64(const std::string&, const Result&) const {
    return {};
}

Work Peer::sign(const SignatureTask&, const Result&) const {
    return {};
}

Work Peer::verify(const SignatureTask&, const Bytes&, const Result&) const {
    return {};
}

const std::vector<std::unique_ptr<Peer>>& getPeers() {
    static const std::vector<std::unique_ptr<Peer>> peers = [] {
        std::vector<std::unique_ptr<Peer>> all;
        if (isQuick())
            return all;
        for (const auto create :
             {createBotan, createCryptoPP, createGcrypt, createMbedTLS, createNettle, createLibcrypto3}) {
            if (std::unique_ptr<Peer> peer = create())
                all.push_back(std::move(peer));
        }
        return all;
    }();
    return peers;
}

void addPeers(const std::string& name, const Bytes& expected,
              const std::function<Work(const Peer& peer, const Result& result)>& make) {
    for (const std::unique_ptr<Peer>& peer : getPeers()) {
        const auto result = std::make_shared<Bytes>(expected);
        const Work work = make(*peer, result);
        if (!work)
            continue;
        std::fill(result->begin(), result->end(), static_cast<unsigned char>(0));
        work();
        if (!expected.empty() && *result != expected) {
            std::fprintf(stderr, "%s: %s gives another result\n", name.c_str(), peer->getName());
            std::exit(1);
        }
        addPeer(name, peer->getName(), work);
    }
}

} // namespace bench
