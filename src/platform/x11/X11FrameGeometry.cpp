#include "platform/x11/X11FrameGeometry.h"

#include <algorithm>

namespace gf {

std::optional<FrameExtents> FrameExtents::fromProperty(const std::vector<std::uint32_t>& values) {
    if (values.size() < 4) {
        return std::nullopt;
    }
    return FrameExtents{static_cast<int>(values[0]), static_cast<int>(values[1]),
                        static_cast<int>(values[2]), static_cast<int>(values[3])};
}

FrameExtents FrameExtents::between(const Rect& outer, const Rect& inner) {
    auto atLeastZero = [](double size) { return static_cast<int>(std::max(0.0, size)); };
    return {atLeastZero(inner.minX() - outer.minX()), atLeastZero(outer.maxX() - inner.maxX()),
            atLeastZero(inner.minY() - outer.minY()), atLeastZero(outer.maxY() - inner.maxY())};
}

Rect X11FrameGeometry::decoratedFrame() const {
    const Rect declared{client.x - border - decorations.left, client.y - border - decorations.top,
                        client.width + 2 * border + decorations.left + decorations.right,
                        client.height + 2 * border + decorations.top + decorations.bottom};
    // A window manager moves and resizes its frame window before the client inside, so the frame
    // window is the current answer whenever the decorations start at its corner. A frame window
    // that also holds invisible borders around them leaves the declared rectangle as the answer.
    if (frameWindow && frameWindow->origin() == declared.origin()) {
        return *frameWindow;
    }
    return declared;
}

Rect X11FrameGeometry::visibleFrame() const {
    const Rect decorated = decoratedFrame();
    return {decorated.x + shadow.left, decorated.y + shadow.top,
            decorated.width - shadow.left - shadow.right,
            decorated.height - shadow.top - shadow.bottom};
}

Size X11FrameGeometry::clientSize() const {
    const Rect decorated = decoratedFrame();
    return {decorated.width - decorations.left - decorations.right - 2 * border,
            decorated.height - decorations.top - decorations.bottom - 2 * border};
}

Point X11FrameGeometry::decoratedCornerFor(Point visibleTopLeft) const {
    return {visibleTopLeft.x - shadow.left, visibleTopLeft.y - shadow.top};
}

Size X11FrameGeometry::clientSizeFor(Size visibleSize) const {
    const double width = visibleSize.width + shadow.left + shadow.right - decorations.left -
                         decorations.right - 2 * border;
    const double height = visibleSize.height + shadow.top + shadow.bottom - decorations.top -
                          decorations.bottom - 2 * border;
    return {std::max(1.0, width), std::max(1.0, height)};
}

}  // namespace gf
