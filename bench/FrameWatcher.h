#pragma once

#include <xcb/xcb.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "EventThread.h"
#include "LatencyMatch.h"

namespace gf::bench {

// The frame's geometry as one ConfigureNotify reported it, and when the
// report arrived.
struct FrameReport {
    Clock::time_point time;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

// Listens on a connection of its own, on a thread of its own, for the
// ConfigureNotify events of one window manager frame, and stamps each with
// the time it arrived. Nothing else runs on that connection, so a report is
// stamped as soon as the server sends it.
class FrameWatcher {
    struct Key;

  public:
    static std::unique_ptr<FrameWatcher> open(const std::string& displayName, xcb_window_t frame,
                                              std::string* error);

    FrameWatcher(const Key&, xcb_connection_t* connection, xcb_window_t frame);
    FrameWatcher(const FrameWatcher&) = delete;
    FrameWatcher& operator=(const FrameWatcher&) = delete;
    ~FrameWatcher();

    // Every report since the previous call, oldest first.
    std::vector<FrameReport> takeReports();
    // The frame's geometry as last reported (or as read on opening).
    FrameReport latest() const;

    // Waits until the latest report satisfies the condition.
    bool waitForLatest(const std::function<bool(const FrameReport&)>& condition,
                       std::chrono::milliseconds timeout);
    // Waits until the frame has been still for `quiet`; false when it kept
    // changing until the timeout.
    bool waitUntilStill(std::chrono::milliseconds quiet, std::chrono::milliseconds timeout);

  private:
    void handle(Clock::time_point arrived, const xcb_generic_event_t& event);

    xcb_connection_t* connection_;
    xcb_window_t frame_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<FrameReport> reports_;
    FrameReport latest_;
    // Last, so that it stops before anything it reports into goes.
    std::unique_ptr<EventThread> events_;
};

}  // namespace gf::bench
