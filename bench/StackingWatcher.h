#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "EventThread.h"
#include "LatencyMatch.h"

namespace gf::bench {

// Follows the stacking order of the root's children from the server's own
// reports of it (SubstructureNotify on the root, on a connection and thread of
// its own), so that the moment one window comes above another is the moment
// the report arrived, not whenever somebody next looked.
class StackingWatcher {
    struct Key;

  public:
    static std::unique_ptr<StackingWatcher> open(const std::string& displayName,
                                                 std::string* error);

    StackingWatcher(const Key&, xcb_connection_t* connection, xcb_window_t root);
    StackingWatcher(const StackingWatcher&) = delete;
    StackingWatcher& operator=(const StackingWatcher&) = delete;
    ~StackingWatcher();

    // From now on, notes when the `upper` top-level window first stands above
    // `lower`; false when it already does.
    bool expectAbove(xcb_window_t upper, xcb_window_t lower);
    // When the report arrived that put `upper` above `lower`; nullopt when
    // none did within the timeout.
    std::optional<Clock::time_point> waitForAbove(std::chrono::milliseconds timeout);

  private:
    void handle(Clock::time_point arrived, const xcb_generic_event_t& event);
    void restack(xcb_window_t window, std::optional<xcb_window_t> above);
    void remove(xcb_window_t window);
    bool isAbove(xcb_window_t upper, xcb_window_t lower) const;

    xcb_connection_t* connection_;
    xcb_window_t root_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<xcb_window_t> bottomToTop_;
    xcb_window_t upper_ = XCB_WINDOW_NONE;
    xcb_window_t lower_ = XCB_WINDOW_NONE;
    std::optional<Clock::time_point> cameAbove_;
    // Last, so that it stops before anything it reports into goes.
    std::unique_ptr<EventThread> events_;
};

}  // namespace gf::bench
