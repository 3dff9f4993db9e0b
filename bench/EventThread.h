#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <string>
#include <thread>

#include "LatencyMatch.h"

namespace gf::bench {

// Reads a connection's events on a thread of its own as soon as they come and
// hands each to a handler with the moment it was read. The connection is
// the caller's and must be used for nothing else while the thread runs, so
// that nothing but the scheduler stands between an event and its stamp.
class EventThread {
  public:
    using Handler = std::function<void(Clock::time_point arrived, const xcb_generic_event_t&)>;

    // A connection of its own to the display on which `window` (the root when 0) sends the
    // events of `mask`; nullptr with a reason naming `who` when either fails.
    static xcb_connection_t* connectWatching(const std::string& displayName, xcb_window_t window,
                                             std::uint32_t mask, const std::string& who,
                                             std::string* error);

    // Throws std::runtime_error when the thread cannot be woken for stopping.
    EventThread(xcb_connection_t* connection, Handler handler);
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;
    // Stops and joins the thread; the connection stays open.
    ~EventThread();

  private:
    void run();

    xcb_connection_t* connection_;
    Handler handler_;
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    std::thread thread_;
};

}  // namespace gf::bench
