#pragma once

#include "platform/WindowServer.h"

namespace gf {

class X11WindowReader;

// Windows as the X server stacks them. Main thread only.
class X11WindowServer final : public WindowServer {
  public:
    explicit X11WindowServer(const X11WindowReader& reader) : reader_(reader) {}

    // The client of the frontmost top-level window at the point, with its
    // outer frame; nullopt over the bare desktop.
    std::optional<WindowDescription> windowAt(Point point) override;

    // Every mapped top-level window, front to back in the true stacking order
    // (_NET_CLIENT_LIST_STACKING lags behind on some window managers), each
    // as its client window; desktop backgrounds and windows parked outside
    // the screen left out.
    std::vector<WindowDescription> onScreenWindows() override;

  private:
    const X11WindowReader& reader_;
};

}  // namespace gf
