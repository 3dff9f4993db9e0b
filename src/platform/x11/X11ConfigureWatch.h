#pragma once

#include <xcb/xcb.h>

#include <chrono>

namespace gf {

class XcbConnection;

// Whether the window manager has carried out the last request to move a window: its frame
// reports a ConfigureNotify once it has. A move writes on every pointer motion, and a window
// manager that falls behind would otherwise work through a queue of stale positions while the
// window trails further and further behind the hand. Requests wait for the answer, or for a
// little patience to run out (a request that changes nothing, or one the window manager
// refuses, is never answered). Reads the events of a connection that nobody else reads; used by
// one thread at a time.
class X11ConfigureWatch {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr auto patience = std::chrono::milliseconds(20);

    explicit X11ConfigureWatch(const XcbConnection& connection);
    ~X11ConfigureWatch();
    X11ConfigureWatch(const X11ConfigureWatch&) = delete;
    X11ConfigureWatch& operator=(const X11ConfigureWatch&) = delete;

    // Watches this frame from now on (the window manager's frame, or the client itself).
    void watch(xcb_window_t frame);
    // Whether a request may go now: none is waiting for its answer, or it waited long enough.
    bool mayRequest(Clock::time_point now);
    void noteRequest(Clock::time_point now);
    // Waits for the answer to the request waiting for one, at most until patience runs out.
    void waitForAnswer();
    // Takes in the connection's events: notes the frame's ConfigureNotify and drops the rest
    // (errors of unchecked requests, which would otherwise pile up).
    void takeInEvents();

  private:
    void unwatch();
    void select(xcb_window_t window, std::uint32_t mask) const;

    const XcbConnection& connection_;
    xcb_window_t frame_ = XCB_WINDOW_NONE;
    bool waiting_ = false;
    Clock::time_point requestedAt_;
};

}  // namespace gf
