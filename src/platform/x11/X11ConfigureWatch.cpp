#include "platform/x11/X11ConfigureWatch.h"

#include <poll.h>

#include <cerrno>

#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

#include <map>
#include <mutex>
#include <utility>

namespace gf {

namespace {

// Event masks belong to the connection, not to a watch: two handles of one window share one
// selection, and the last to go takes it away.
class Selections {
  public:
    // Whether the first watch of this frame has just come.
    bool add(const XcbConnection* connection, xcb_window_t frame) {
        std::lock_guard lock(mutex_);
        return ++counts_[{connection, frame}] == 1;
    }
    // Whether the last watch of this frame has just gone.
    bool remove(const XcbConnection* connection, xcb_window_t frame) {
        std::lock_guard lock(mutex_);
        auto found = counts_.find({connection, frame});
        if (found == counts_.end() || --found->second > 0) {
            return false;
        }
        counts_.erase(found);
        return true;
    }

  private:
    std::mutex mutex_;
    std::map<std::pair<const XcbConnection*, xcb_window_t>, int> counts_;
};

Selections& selections() {
    static Selections shared;
    return shared;
}

}  // namespace

X11ConfigureWatch::X11ConfigureWatch(const XcbConnection& connection) : connection_(connection) {}

X11ConfigureWatch::~X11ConfigureWatch() {
    unwatch();
    if (!connection_.hasError()) {
        connection_.flush();
    }
}

void X11ConfigureWatch::watch(xcb_window_t frame) {
    if (frame == frame_) {
        return;
    }
    unwatch();
    frame_ = frame;
    waiting_ = false;
    if (selections().add(&connection_, frame_)) {
        select(frame_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    }
}

void X11ConfigureWatch::unwatch() {
    if (frame_ != XCB_WINDOW_NONE && selections().remove(&connection_, frame_)) {
        select(frame_, 0);
    }
    frame_ = XCB_WINDOW_NONE;
}

bool X11ConfigureWatch::mayRequest(Clock::time_point now) {
    takeInEvents();
    return !waiting_ || now - requestedAt_ >= patience;
}

void X11ConfigureWatch::noteRequest(Clock::time_point now) {
    waiting_ = true;
    requestedAt_ = now;
}

void X11ConfigureWatch::waitForAnswer() {
    takeInEvents();
    while (waiting_) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(requestedAt_ + patience - Clock::now());
        if (left.count() <= 0) {
            return;
        }
        pollfd socket{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        if (poll(&socket, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) {
            return;
        }
        takeInEvents();
    }
}

void X11ConfigureWatch::takeInEvents() {
    while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        if ((event->response_type & 0x7f) == XCB_CONFIGURE_NOTIFY &&
            reinterpret_cast<const xcb_configure_notify_event_t*>(event.get())->window == frame_) {
            waiting_ = false;
        }
    }
}

void X11ConfigureWatch::select(xcb_window_t window, std::uint32_t mask) const {
    // Unchecked: a frame may vanish at any moment, and its error is dropped with the events.
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
}

}  // namespace gf
