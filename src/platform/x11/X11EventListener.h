#pragma once

#include <xcb/xcb.h>

namespace gf {

// Receives the events read from the X connection, on the main thread.
class X11EventListener {
  public:
    virtual ~X11EventListener() = default;

    virtual void handleEvent(const xcb_generic_event_t& event) = 0;

    // Called after each run of events, so that work needing only the latest
    // state (such as reading the pointer after many motions) is done once.
    virtual void handleBatchEnd() = 0;
};

}  // namespace gf
