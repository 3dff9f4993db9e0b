#pragma once

#include <xcb/xcb.h>

namespace gf {

// One mapped top-level window: the child of the root (the window manager's
// frame) and the application's own window inside it. Both are the same window
// for override-redirect windows and when no window manager reparents.
struct StackedWindow {
    xcb_window_t frame = XCB_WINDOW_NONE;
    xcb_window_t client = XCB_WINDOW_NONE;
    bool overrideRedirect = false;

    friend bool operator==(const StackedWindow&, const StackedWindow&) = default;
};

}  // namespace gf
