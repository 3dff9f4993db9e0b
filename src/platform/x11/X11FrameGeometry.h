#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Point.h"
#include "platform/Rect.h"
#include "platform/Size.h"

namespace gf {

// Sizes on each side of a rectangle.
struct FrameExtents {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;

    // The sizes a frame extents property holds (_NET_FRAME_EXTENTS, _GTK_FRAME_EXTENTS), in its
    // order: left, right, top, bottom. A property without all four declares nothing: nullopt.
    static std::optional<FrameExtents> fromProperty(const std::vector<std::uint32_t>& values);
    // What separates an inner rectangle from an outer one around it; never below zero.
    static FrameExtents between(const Rect& outer, const Rect& inner);

    friend bool operator==(const FrameExtents&, const FrameExtents&) = default;
};

// Everything that makes a client window differ from the frame the user sees: the X border, the
// window manager's decorations outside it, and the invisible shadow that a client drawing its
// own decorations keeps inside it. All rectangles are in root coordinates.
struct X11FrameGeometry {
    Rect client;        // inside the X border
    double border = 0;  // the client's own X border width
    FrameExtents decorations;
    FrameExtents shadow;  // _GTK_FRAME_EXTENTS: part of the client, never seen
    // The window manager's frame window, when one holds the client.
    std::optional<Rect> frameWindow;

    // The window manager's frame around the client: the client with its border and decorations.
    Rect decoratedFrame() const;
    // What the user sees: the decorated frame without the shadow.
    Rect visibleFrame() const;
    // The client's size now, as a request that keeps the size must repeat it.
    Size clientSize() const;

    // Where the decorated frame's corner goes so that the visible frame's corner lands at a point.
    Point decoratedCornerFor(Point visibleTopLeft) const;
    // The client size that gives the visible frame a size; at least one pixel each way.
    Size clientSizeFor(Size visibleSize) const;
};

}  // namespace gf
