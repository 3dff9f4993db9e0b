#include "EventThread.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "platform/x11/XcbReply.h"

namespace gf::bench {

xcb_connection_t* EventThread::connectWatching(const std::string& displayName, xcb_window_t window,
                                               std::uint32_t mask, const std::string& who,
                                               std::string* error) {
    xcb_connection_t* connection = xcb_connect(displayName.c_str(), nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        *error = who + " cannot connect to " + displayName;
        return nullptr;
    }
    if (window == 0) {
        window = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    }
    if (!xcbSucceeded(connection, xcb_change_window_attributes_checked(connection, window,
                                                                       XCB_CW_EVENT_MASK, &mask))) {
        xcb_disconnect(connection);
        *error = who + " cannot listen to its window";
        return nullptr;
    }
    return connection;
}

EventThread::EventThread(xcb_connection_t* connection, Handler handler)
    : connection_(connection), handler_(std::move(handler)) {
    std::array<int, 2> wake{};
    if (pipe2(wake.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::runtime_error("cannot create a pipe");
    }
    wakeRead_ = wake[0];
    wakeWrite_ = wake[1];
    thread_ = std::thread([this] { run(); });
}

EventThread::~EventThread() {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(wakeWrite_, &byte, 1);
    thread_.join();
    close(wakeRead_);
    close(wakeWrite_);
}

void EventThread::run() {
    std::array<pollfd, 2> descriptors{
        {{xcb_get_file_descriptor(connection_), POLLIN, 0}, {wakeRead_, POLLIN, 0}}};
    while (true) {
        if (poll(descriptors.data(), descriptors.size(), -1) < 0) {
            continue;
        }
        if ((descriptors[1].revents & POLLIN) != 0) {
            return;
        }
        // Stamped one by one: draining also reads events that came after the wake-up.
        while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            handler_(Clock::now(), *event);
        }
        if (xcb_connection_has_error(connection_) != 0) {
            return;
        }
    }
}

}  // namespace gf::bench
