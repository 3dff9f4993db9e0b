#include "platform/x11/X11WindowServer.h"

#include "platform/x11/X11WindowReader.h"

namespace gf {

std::optional<WindowDescription> X11WindowServer::windowAt(Point point) {
    const std::optional<StackedWindow> window = reader_.stacking().stackedWindowAt(point);
    if (!window) {
        return std::nullopt;
    }
    std::vector<WindowDescription> described = reader_.describe({*window});
    // The invisible shadow around a window that draws its own decorations is not the window: the
    // user points at what shows through it, which the window list finds.
    if (described.front().bounds && !described.front().bounds->contains(point)) {
        return std::nullopt;
    }
    return described.front();
}

std::vector<WindowDescription> X11WindowServer::onScreenWindows() {
    const auto stacked = reader_.stacking().stackedWindows();
    if (!stacked) {
        return {};
    }
    const std::optional<Rect> screen = reader_.root().rootRectangle();
    std::vector<WindowDescription> windows = reader_.describe(*stacked);
    // Window managers park helper windows outside the screen; they are mapped
    // but nobody sees them.
    std::erase_if(windows, [&screen](const WindowDescription& window) {
        const bool background = window.layer && *window.layer < WindowLayer::normal;
        const bool offScreen = screen && window.bounds && !window.bounds->intersects(*screen);
        return background || offScreen;
    });
    return windows;
}

}  // namespace gf
