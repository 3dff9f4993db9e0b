#include "FrameWatcher.h"

#include <utility>

#include "platform/x11/XcbReply.h"

namespace gf::bench {

struct FrameWatcher::Key {};

std::unique_ptr<FrameWatcher> FrameWatcher::open(const std::string& displayName, xcb_window_t frame,
                                                 std::string* error) {
    xcb_connection_t* connection = EventThread::connectWatching(
        displayName, frame, XCB_EVENT_MASK_STRUCTURE_NOTIFY, "the frame watcher", error);
    if (connection == nullptr) {
        return nullptr;
    }
    return std::make_unique<FrameWatcher>(Key{}, connection, frame);
}

FrameWatcher::FrameWatcher(const Key&, xcb_connection_t* connection, xcb_window_t frame)
    : connection_(connection), frame_(frame) {
    // Selected before the geometry is read, so no change falls in between.
    if (auto geometry =
            xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, frame_))) {
        latest_ = {Clock::now(), geometry->x, geometry->y, geometry->width, geometry->height};
    }
    events_ = std::make_unique<EventThread>(
        connection_, [this](Clock::time_point arrived, const xcb_generic_event_t& event) {
            handle(arrived, event);
        });
}

FrameWatcher::~FrameWatcher() {
    events_.reset();
    xcb_disconnect(connection_);
}

void FrameWatcher::handle(Clock::time_point arrived, const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7f) != XCB_CONFIGURE_NOTIFY) {
        return;
    }
    const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    if (configure.window != frame_) {
        return;
    }
    std::lock_guard lock(mutex_);
    latest_ = {arrived, configure.x, configure.y, configure.width, configure.height};
    reports_.push_back(latest_);
    changed_.notify_all();
}
std::vector<FrameReport> FrameWatcher::takeReports() {
    std::lock_guard lock(mutex_);
    return std::exchange(reports_, {});
}

FrameReport FrameWatcher::latest() const {
    std::lock_guard lock(mutex_);
    return latest_;
}

bool FrameWatcher::waitForLatest(const std::function<bool(const FrameReport&)>& condition,
                                 std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return condition(latest_); });
}

bool FrameWatcher::waitUntilStill(std::chrono::milliseconds quiet,
                                  std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    std::unique_lock lock(mutex_);
    while (Clock::now() < deadline) {
        const auto lastChange = latest_.time;
        if (Clock::now() - lastChange >= quiet) {
            return true;
        }
        changed_.wait_until(lock, std::min(deadline, lastChange + quiet));
    }
    return false;
}

}  // namespace gf::bench
