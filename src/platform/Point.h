#pragma once

namespace gf {

// A point in global desktop coordinates: origin at the top-left of the primary
// display, y growing downwards (unless a comment says otherwise).
struct Point {
    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

}  // namespace gf
