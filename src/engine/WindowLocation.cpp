#include "engine/WindowLocation.h"

namespace gf {

bool isAcceptedLayer(std::optional<int> layer, int dockLayer) {
    return layer && *layer >= 0 && *layer < dockLayer;
}

std::shared_ptr<WindowHandle> findWindowHandle(WindowControl& windowControl, std::int32_t pid,
                                               std::uint32_t windowNumber) {
    // Listing every window of the process costs a question per window; a platform that knows
    // the window by its number answers at once.
    if (auto direct = windowControl.windowWithNumber(pid, windowNumber)) {
        return direct;
    }
    auto windows = windowControl.windowsOfProcess(pid);
    if (!windows || windows->empty()) {
        return nullptr;
    }
    for (const auto& window : *windows) {
        if (window && window->windowNumber() == windowNumber) {
            return window;
        }
    }
    // Applications whose windows cannot be matched by number still get moved:
    // their first window is the best guess.
    return windows->front();
}

std::optional<LocatedWindow> locateWindowWithWindowServer(Platform& platform, Point point) {
    const auto found = platform.windowServer.windowAt(point);
    if (!found || found->windowNumber == 0 || !found->ownerPid) {
        return std::nullopt;
    }
    if (!isAcceptedLayer(found->layer, platform.windowServer.dockLayer())) {
        return std::nullopt;
    }
    const std::int32_t pid = *found->ownerPid;
    auto handle = findWindowHandle(platform.windowControl, pid, found->windowNumber);
    if (!handle) {
        return std::nullopt;
    }
    return LocatedWindow{pid, found->windowNumber, std::move(handle), found->applicationIdentifier};
}

std::optional<LocatedWindow> locateWindowWithWindowList(Platform& platform, Point point) {
    const int dockLayer = platform.windowServer.dockLayer();
    for (const auto& window : platform.windowServer.onScreenWindows()) {
        if (!isAcceptedLayer(window.layer, dockLayer) || !window.ownerPid || !window.bounds ||
            window.windowNumber == 0 || !window.bounds->contains(point)) {
            continue;
        }
        const std::int32_t pid = *window.ownerPid;
        auto handle = findWindowHandle(platform.windowControl, pid, window.windowNumber);
        if (!handle) {
            continue;
        }
        return LocatedWindow{pid, window.windowNumber, std::move(handle),
                             window.applicationIdentifier};
    }
    return std::nullopt;
}

}  // namespace gf
