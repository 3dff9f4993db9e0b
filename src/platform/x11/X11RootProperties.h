#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <vector>

#include "platform/Rect.h"

namespace gf {

class X11WindowProperties;
class XcbConnection;

// What the root window says about the desktop as a whole: its size, and what an EWMH window
// manager publishes there (that it runs, the windows it manages, the active one). Keeps no
// state: safe to use from several threads at once.
class X11RootProperties {
  public:
    X11RootProperties(const XcbConnection& connection, const X11WindowProperties& properties);

    // The root window's rectangle: the whole screen, which RandR may resize.
    std::optional<Rect> rootRectangle() const;
    // The managed windows in mapping order (_NET_CLIENT_LIST); nullopt without
    // a window manager that publishes the list.
    std::optional<std::vector<xcb_window_t>> clientList() const;
    // Whether a window manager following the EWMH conventions runs now.
    bool hasEwmhWindowManager() const;
    // Its check window, which names this run of it; nullopt when none runs.
    std::optional<xcb_window_t> ewmhWindowManager() const;
    // The window that has the focus as the window manager says (_NET_ACTIVE_WINDOW); none when
    // it says nothing.
    xcb_window_t activeWindow() const;

  private:
    const XcbConnection& connection_;
    const X11WindowProperties& properties_;
};

}  // namespace gf
