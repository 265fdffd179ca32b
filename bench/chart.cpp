// SPDX-License-Identifier: Apache-2.0
#include "results.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace bench {

namespace {

constexpr int left = 290;
constexpr int top = 70;
constexpr int rowHeight = 16;
constexpr int doubling = 90; // pixels
constexpr double lowest = 0.25;
constexpr double highest = 32;
constexpr int width = left + 7 * doubling + 30;

/// The place of a time relative to raw libcrypto on a logarithmic scale.
double getX(double ratio) {
    return left + doubling * std::log2(std::clamp(ratio, lowest, highest) / lowest);
}

/// A row for each operation, a dot for each library.
class Chart {
public:
    explicit Chart(const std::set<std::string>& libraries) {
        static const char* const colours[] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#9467bd",
                                              "#8c564b", "#17a2b8", "#7f7f7f"};
        std::size_t next = 0;
        for (const std::string& library : libraries)
            m_colours[library] = colours[next++ % std::size(colours)];
        m_colours["sarn"] = "#d62728";
    }

    void addRow(const Cell& cell) {
        const int y = top + rowHeight * ++m_rows;
        addText(left - 10, y + 4, cell.name, "end");
        for (const auto& [library, time] : cell.peers)
            addDot(library, time / cell.raw, y, 4);
        addDot("sarn", cell.ours / cell.raw, y, 5);
    }

    std::string finish() {
        const int bottom = top + rowHeight * (m_rows + 1);
        std::ostringstream out;
        out << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << width << ' ' << bottom
            << "' font-family='sans-serif' font-size='11'>\n<rect width='100%' height='100%' fill='white'/>\n";
        for (double ratio = lowest; ratio <= highest; ratio *= 2)
            out << "<line x1='" << getX(ratio) << "' x2='" << getX(ratio) << "' y1='" << top << "' y2='" << bottom
                << "' stroke='" << (ratio == 1 ? "#222" : "#ddd") << "'/>\n<text x='" << getX(ratio) << "' y='"
                << top - 6 << "' text-anchor='middle'>" << ratio << "</text>\n";
        addLegend();
        out << m_body.str() << "</svg>\n";
        return out.str();
    }

private:
    void addText(double x, double y, const std::string& text, const char* anchor) {
        m_body << "<text x='" << x << "' y='" << y << "' text-anchor='" << anchor << "'>" << text << "</text>\n";
    }

    void addDot(const std::string& library, double ratio, int y, int radius) {
        m_body << "<circle cx='" << getX(ratio) << "' cy='" << y << "' r='" << radius << "' fill='"
               << m_colours.at(library) << "'><title>" << library << ' ' << ratio << "</title></circle>\n";
    }

    void addLegend() {
        addText(8, 18, "Time in multiples of raw libcrypto 1.1.1; further left is faster", "start");
        double x = 14;
        for (const auto& [library, colour] : m_colours) {
            m_body << "<circle cx='" << x << "' cy='34' r='5' fill='" << colour << "'/>\n";
            addText(x + 8, 38, library, "start");
            x += 26 + 6.5 * static_cast<double>(library.size());
        }
    }

    std::map<std::string, const char*> m_colours;
    std::ostringstream m_body;
    int m_rows = 0;
};

} // namespace

void writeChart(const std::string& path, const std::vector<Cell>& cells) {
    std::set<std::string> libraries;
    for (const Cell& cell : cells) {
        for (const auto& [library, time] : cell.peers)
            libraries.insert(library);
    }
    Chart chart(libraries);
    for (const Cell& cell : cells) {
        if (cell.wasRun() && !cell.peers.empty())
            chart.addRow(cell);
    }
    std::ofstream(path) << chart.finish();
}

} // namespace bench
