#pragma once

#include <xcb/xcb.h>

#include <optional>

#include "platform/Rect.h"
#include "platform/x11/StackedWindow.h"
#include "platform/x11/X11FrameGeometry.h"

namespace gf {

class X11Stacking;
class XcbConnection;

// Reads a client's frame geometry: its own geometry, the window manager's frame around it and
// the two frame extents properties, which it alone parses. Asked in one step and collected in
// another so that the question can travel with others. Keeps no state: safe to use from several
// threads at once.
class X11FrameGeometryReader {
  public:
    X11FrameGeometryReader(const XcbConnection& connection, const X11Stacking& stacking);

    struct Cookies {
        bool framed = false;  // a window manager's frame holds the client
        xcb_get_geometry_cookie_t clientGeometry;
        xcb_translate_coordinates_cookie_t clientOrigin;
        xcb_get_geometry_cookie_t frameGeometry;
        xcb_get_property_cookie_t decorations;
        xcb_get_property_cookie_t shadow;  // asked last
    };
    Cookies request(const StackedWindow& window) const;
    // nullopt when the window vanished. The shadow's reply may come already received (a caller
    // that polled for it), as a null pointer when it was answered with an error.
    std::optional<X11FrameGeometry> collect(const Cookies& cookies) const;
    std::optional<X11FrameGeometry> collect(const Cookies& cookies,
                                            const xcb_get_property_reply_t* shadow) const;
    void discard(const Cookies& cookies) const;

    // The frame the user sees around a client, in root coordinates; nullopt when it vanished.
    std::optional<Rect> outerFrame(xcb_window_t client) const;

  private:
    const XcbConnection& connection_;
    const X11Stacking& stacking_;
};

}  // namespace gf
