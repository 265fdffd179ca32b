// SPDX-License-Identifier: Apache-2.0
// Median times and their presentation.
#pragma once

#include "comparison.h"

#include <map>
#include <string>
#include <vector>

namespace bench {

struct Cell {
    std::string name;
    int bytes;
    Goal goal;
    // Medians in nanoseconds; 0 if the cell was not run.
    double raw = 0;
    double ours = 0;
    std::map<std::string, double> peers;

    bool wasRun() const { return raw > 0 && ours > 0; }
    bool hasGoal() const { return goal.ratio > 0 || goal.more > 0 || goal.total > 0; }
    bool meetsGoal() const {
        return (goal.ratio > 0 && ours <= goal.ratio * raw) || (goal.more > 0 && ours - raw <= goal.more) ||
               (goal.total > 0 && ours <= goal.total);
    }
};

/// Prints the cells, with the times of the peers.
void printTables(const std::vector<Cell>& cells);

void writeCSV(const std::string& path, const std::vector<Cell>& cells);

/// Draws the times of the libraries relative to raw libcrypto, for the cells that have peers.
void writeChart(const std::string& path, const std::vector<Cell>& cells);

} // namespace bench
