#pragma once

#include <xcb/xcb.h>

#include <vector>

namespace gf {

class XcbConnection;

// Escape taken on the root window, with any modifiers, so that a gesture can be cancelled
// without the focused client also seeing the key. The one key grab the backend ever makes.
// Main thread only, on the connection whose events are read.
class X11CancelKeyGrab {
  public:
    explicit X11CancelKeyGrab(const XcbConnection& connection) : connection_(connection) {}
    X11CancelKeyGrab(const X11CancelKeyGrab&) = delete;
    X11CancelKeyGrab& operator=(const X11CancelKeyGrab&) = delete;

    // Takes every key that currently carries Escape; the keys are looked up afresh each time,
    // since a new keyboard may put Escape elsewhere.
    void grab();
    void release();
    bool isGrabbed() const { return grabbed_; }

    // Whether a key press reports one of the keys taken by the grab now in place.
    bool isGrabbedKey(xcb_keycode_t keycode) const;

  private:
    std::vector<xcb_keycode_t> keycodesOf(xcb_keysym_t keysym) const;

    const XcbConnection& connection_;
    bool grabbed_ = false;
    std::vector<xcb_keycode_t> keycodes_;
};

}  // namespace gf
