// SPDX-License-Identifier: Apache-2.0
#include "results.h"

#include <cstdio>
#include <fstream>
#include <set>

namespace bench {

namespace {

std::string describeGoal(const Cell& cell) {
    if (!cell.hasGoal())
        return "";
    char text[64];
    if (cell.goal.more > 0)
        std::snprintf(text, sizeof text, "+%.0f ns", cell.goal.more);
    else if (cell.goal.total > 0)
        std::snprintf(text, sizeof text, "%.0f ns", cell.goal.total);
    else
        std::snprintf(text, sizeof text, "%.2f", cell.goal.ratio);
    return std::string("  ") + text + (cell.meetsGoal() ? "  met" : "  MISSED");
}

std::set<std::string> getPeers(const std::vector<Cell>& cells) {
    std::set<std::string> peers;
    for (const Cell& cell : cells) {
        for (const auto& [peer, time] : cell.peers)
            peers.insert(peer);
    }
    return peers;
}

/// How often both the library and raw libcrypto are faster than a peer, and how often by the same factor within 2 %.
struct Lead {
    int rawAhead = 0;
    int oursAhead = 0;
    int sameFactor = 0;

    void add(const Cell& cell, double peer) {
        if (cell.raw >= peer)
            return;
        ++rawAhead;
        oursAhead += cell.ours < peer;
        sameFactor += cell.ours <= cell.raw * 1.02;
    }
};

void printPeers(const std::vector<Cell>& cells) {
    const std::set<std::string> peers = getPeers(cells);
    if (peers.empty())
        return;
    std::printf("\nbeside others, in times of raw libcrypto\n%-40s %9s %9s", "operation", "raw ns", "sarn");
    for (const std::string& peer : peers)
        std::printf(" %12s", peer.c_str());
    std::printf("\n");
    Lead lead;
    for (const Cell& cell : cells) {
        if (!cell.wasRun() || cell.peers.empty())
            continue;
        std::printf("%-40s %9.0f %9.2f", cell.name.c_str(), cell.raw, cell.ours / cell.raw);
        for (const std::string& peer : peers) {
            const auto found = cell.peers.find(peer);
            if (found == cell.peers.end()) {
                std::printf(" %12s", "-");
                continue;
            }
            std::printf(" %12.2f", found->second / cell.raw);
            lead.add(cell, found->second);
        }
        std::printf("\n");
    }
    std::printf("raw libcrypto is ahead in %d cells; sarn is ahead in %d of them, by the same factor to 2 %% in %d\n",
                lead.rawAhead, lead.oursAhead, lead.sameFactor);
}

} // namespace

void printTables(const std::vector<Cell>& cells) {
    std::printf("%-46s %12s %12s %7s %9s  %s\n", "operation", "raw ns", "sarn ns", "ratio", "more ns", "goal");
    for (const Cell& cell : cells) {
        if (cell.wasRun())
            std::printf("%-46s %12.1f %12.1f %7.3f %9.1f%s\n", cell.name.c_str(), cell.raw, cell.ours,
                        cell.ours / cell.raw, cell.ours - cell.raw, describeGoal(cell).c_str());
    }
    printPeers(cells);
}

void writeCSV(const std::string& path, const std::vector<Cell>& cells) {
    std::ofstream file(path);
    file << "operation,bytes,library,ns\n";
    for (const Cell& cell : cells) {
        if (!cell.wasRun())
            continue;
        const auto line = [&](const std::string& library, double time) {
            file << cell.name << ',' << cell.bytes << ',' << library << ',' << time << '\n';
        };
        line("raw", cell.raw);
        line("sarn", cell.ours);
        for (const auto& [peer, time] : cell.peers)
            line(peer, time);
    }
}

} // namespace bench
