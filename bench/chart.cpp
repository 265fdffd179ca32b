// SPDX-License-Identifier: Apache-2.0
#include "results.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>

namespace bench {

namespace {

constexpr int left = 300;
constexpr int rowHeight = 13;
constexpr int unit = 160; // pixels for a doubling of the time
constexpr int width = left + 5 * unit;

/// A time relative to raw libcrypto as a position: each doubling takes the same room.
double getX(double ratio) {
    return left + unit * (std::clamp(std::log2(ratio), -1.0, 4.0) + 1);
}

class Chart {
public:
    void addCell(const Cell& cell) {
        m_y += 6;
        const std::string label = cell.name;
        text(8, m_y + rowHeight, label);
        addBar("sarn", cell.ours / cell.raw, "#c0392b");
        for (const auto& [peer, time] : cell.peers)
            addBar(peer, time / cell.raw, "#8a99a8");
    }

    std::string finish() const {
        std::string grid;
        for (const double ratio : {0.5, 1.0, 2.0, 4.0, 8.0, 16.0}) {
            const std::string x = std::to_string(getX(ratio));
            grid += "<line x1='" + x + "' x2='" + x + "' y1='30' y2='" + std::to_string(m_y) + "' stroke='" +
                    (ratio == 1.0 ? "#222" : "#ddd") + "'/>\n<text x='" + x + "' y='24' text-anchor='middle'>" +
                    std::to_string(ratio).substr(0, 4) + "</text>\n";
        }
        return "<svg xmlns='http://www.w3.org/2000/svg' width='" + std::to_string(width + 140) + "' height='" +
               std::to_string(m_y + 10) + "' font-family='sans-serif' font-size='10'>\n" +
               "<rect width='100%' height='100%' fill='white'/>\n" +
               "<text x='8' y='14' font-size='12'>Time in multiples of raw libcrypto 1.1.1; shorter is "
               "faster</text>\n" +
               grid + m_bars + "</svg>\n";
    }

private:
    void text(double x, double y, const std::string& content) {
        m_bars += "<text x='" + std::to_string(x) + "' y='" + std::to_string(y) + "'>" + content + "</text>\n";
    }

    void addBar(const std::string& library, double ratio, const char* colour) {
        m_bars += "<rect x='" + std::to_string(left) + "' y='" + std::to_string(m_y + 3) + "' width='" +
                  std::to_string(std::max(getX(ratio) - left, 1.0)) + "' height='" + std::to_string(rowHeight - 3) +
                  "' fill='" + colour + "'/>\n";
        text(getX(ratio) + 4, m_y + rowHeight - 1, library + " " + std::to_string(ratio).substr(0, 4));
        m_y += rowHeight;
    }

    int m_y = 30;
    std::string m_bars;
};

} // namespace

void writeChart(const std::string& path, const std::vector<Cell>& cells) {
    Chart chart;
    for (const Cell& cell : cells) {
        if (cell.wasRun() && !cell.peers.empty())
            chart.addCell(cell);
    }
    std::ofstream(path) << chart.finish();
}

} // namespace bench
