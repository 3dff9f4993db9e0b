#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/WindowHandle.h"

namespace gf {

class XcbConnection;
class X11WindowInspector;

// A client window reached through a connection that never reads events, so
// it may be used from any thread while the main thread reads input.
class X11WindowHandle final : public WindowHandle {
  public:
    // managedByEwmh: an EWMH window manager runs, so geometry and stacking
    // changes are asked of it rather than made directly.
    X11WindowHandle(const XcbConnection& connection, const X11WindowInspector& inspector,
                    xcb_window_t client, bool managedByEwmh);

    std::optional<std::uint32_t> windowNumber() const override { return client_; }

    std::optional<Point> position() override;
    std::optional<Size> size() override;
    std::optional<bool> isSizeSettable() override;
    bool setPosition(Point topLeft) override;
    bool setSize(Size size) override;
    bool raise() override;
    bool makeMain() override;

  private:
    bool requestFrame(Point frameTopLeft, Size clientSize);
    bool requestRaise();
    bool activate();
    bool waitUntilAbove(xcb_window_t frame, const std::vector<xcb_window_t>& others) const;
    struct ClientGeometry {
        Size size;           // inside the border
        double borderWidth;  // the window's own X border
    };
    std::optional<ClientGeometry> clientGeometry() const;

    const XcbConnection& connection_;
    const X11WindowInspector& inspector_;
    const xcb_window_t client_;
    const bool managedByEwmh_;

    // What this handle asked for last. The window manager applies requests
    // later, so a position change right after a size change must repeat the
    // asked size rather than the one still on the screen.
    mutable std::mutex mutex_;
    std::optional<Point> requestedFramePosition_;
    std::optional<Size> requestedClientSize_;
};

}  // namespace gf
