#pragma once

#include <vector>

namespace gf {

// The lines a moved window may snap to, collected once when the move begins.
// The order of each list decides which line wins, so it is kept as collected.
struct SnapEdges {
    std::vector<double> verticalEdges;    // x coordinates
    std::vector<double> horizontalEdges;  // y coordinates
    double threshold = 0;                 // snapping distance, points

    friend bool operator==(const SnapEdges&, const SnapEdges&) = default;
};

}  // namespace gf
