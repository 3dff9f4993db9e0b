#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <unordered_set>

#include "platform/Point.h"

namespace gf {

class XcbConnection;

// Learns when the pointer passes from one top-level window to another without hearing of every
// motion: the X server reports each crossing of a top-level window's edge, and nothing while the
// pointer stays inside one. A crossing made while a button is held or while another client grabs
// the pointer is reported to the grabbing client alone, so drags, text selections and open menus
// go unnoticed, as they should. Main thread only, on the connection whose events are read.
class X11CrossingWatch {
  public:
    // Where the pointer went, with the modifier and button state it carried.
    struct Crossing {
        Point location;
        std::uint16_t state = 0;
    };

    explicit X11CrossingWatch(const XcbConnection& connection);
    X11CrossingWatch(const X11CrossingWatch&) = delete;
    X11CrossingWatch& operator=(const X11CrossingWatch&) = delete;

    void start();
    void stop();
    bool isWatching() const { return watching_; }

    // The crossing this event reports, if it is one this watch asked for and the pointer really
    // changed windows; keeps the watch on new top-level windows as they come.
    std::optional<Crossing> handleEvent(const xcb_generic_event_t& event);

  private:
    void watchTopLevels();
    void select(xcb_window_t window, std::uint32_t mask) const;

    const XcbConnection& connection_;
    bool watching_ = false;
    std::unordered_set<xcb_window_t> watched_;
};

}  // namespace gf
