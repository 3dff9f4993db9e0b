#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Point.h"
#include "platform/WindowDescription.h"

namespace gf {

// The desktop's list of windows. Called on the main thread.
class WindowServer {
public:
    virtual ~WindowServer() = default;

    // The topmost window at a point, whatever its layer; nullopt when there is
    // none, or when this way of asking is unavailable.
    virtual std::optional<WindowDescription> windowAt(Point point) = 0;

    // The on-screen windows, front to back, desktop backgrounds left out.
    // Empty when the list cannot be read.
    virtual std::vector<WindowDescription> onScreenWindows() = 0;

    // The dock layer: windows at or above it are not ordinary windows.
    virtual int dockLayer() const { return WindowLayer::dock; }
};

}  // namespace gf
