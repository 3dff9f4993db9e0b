#pragma once

#include "platform/Point.h"
#include "platform/Size.h"

namespace gf {

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    static Rect fromOriginAndSize(Point origin, Size size) {
        return {origin.x, origin.y, size.width, size.height};
    }

    double minX() const { return x; }
    double minY() const { return y; }
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    double midX() const { return x + width / 2; }
    double midY() const { return y + height / 2; }
    Point origin() const { return {x, y}; }
    Size size() const { return {width, height}; }
    bool isEmpty() const { return !(width > 0) || !(height > 0); }

    // The left and top edges are inside, the right and bottom edges outside.
    bool contains(Point p) const {
        return !isEmpty() && p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY();
    }

    // True when the two rectangles share some area; touching edges do not count.
    bool intersects(const Rect& other) const {
        return !isEmpty() && !other.isEmpty() && minX() < other.maxX() && other.minX() < maxX() &&
               minY() < other.maxY() && other.minY() < maxY();
    }

    friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace gf
