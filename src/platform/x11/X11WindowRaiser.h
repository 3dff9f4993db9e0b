#pragma once

#include <xcb/xcb.h>

namespace gf {

class X11RestackPolicy;
class X11WindowReader;
class XcbConnection;

// Brings one client window in front of the windows of its layer and below. A window manager
// that ignores restack requests for a window without the focus gets it activated instead, which
// the restack policy learns once per window manager.
class X11WindowRaiser {
  public:
    // managedByEwmh: an EWMH window manager runs, so the restack is asked of it rather than made
    // directly.
    X11WindowRaiser(const XcbConnection& connection, const X11WindowReader& reader,
                    X11RestackPolicy& restackPolicy, xcb_window_t client, bool managedByEwmh);

    bool raise();

  private:
    bool requestRaise();
    bool activate();
    // Activation raises the window everywhere, at the cost of the focus.
    static bool activate(const XcbConnection& connection, xcb_window_t client, bool managedByEwmh);

    const XcbConnection& connection_;
    const X11WindowReader& reader_;
    X11RestackPolicy& restackPolicy_;
    const xcb_window_t client_;
    const bool managedByEwmh_;
};

}  // namespace gf
