#include "platform/x11/X11WindowServer.h"

#include "platform/x11/X11WindowInspector.h"

namespace gf {

std::optional<WindowDescription> X11WindowServer::windowAt(Point point) {
    const std::optional<StackedWindow> window = inspector_.stackedWindowAt(point);
    if (!window) {
        return std::nullopt;
    }
    std::vector<WindowDescription> described = inspector_.describe({*window});
    return described.front();
}

std::vector<WindowDescription> X11WindowServer::onScreenWindows() {
    const auto stacked = inspector_.stackedWindows();
    if (!stacked) {
        return {};
    }
    std::vector<WindowDescription> windows = inspector_.describe(*stacked);
    std::erase_if(windows, [](const WindowDescription& window) {
        return window.layer && *window.layer < WindowLayer::normal;
    });
    return windows;
}

}  // namespace gf
