#include "platform/x11/X11CrossingWatch.h"

#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

constexpr std::uint32_t kTopLevelMask = XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
// The root also reports the client list changing, which is when new windows are worth a look.
constexpr std::uint32_t kRootMask = kTopLevelMask | XCB_EVENT_MASK_PROPERTY_CHANGE;

// A crossing within one top-level window (between a frame and the client inside it) is no
// crossing at all; one caused by a grab starting or ending is the grab's, not the user's motion.
bool changesTopLevel(const xcb_enter_notify_event_t& event, xcb_window_t root) {
    if (event.mode != XCB_NOTIFY_MODE_NORMAL) {
        return false;
    }
    return event.detail != XCB_NOTIFY_DETAIL_INFERIOR || event.event == root;
}

}  // namespace

X11CrossingWatch::X11CrossingWatch(const XcbConnection& connection) : connection_(connection) {}

void X11CrossingWatch::start() {
    if (watching_) {
        return;
    }
    watching_ = true;
    select(connection_.root(), kRootMask);
    watchTopLevels();
    connection_.flush();
}

void X11CrossingWatch::stop() {
    if (!watching_) {
        return;
    }
    watching_ = false;
    select(connection_.root(), 0);
    for (xcb_window_t window : watched_) {
        select(window, 0);
    }
    watched_.clear();
    connection_.flush();
}

std::optional<X11CrossingWatch::Crossing> X11CrossingWatch::handleEvent(
    const xcb_generic_event_t& event) {
    if (!watching_) {
        return std::nullopt;
    }
    const std::uint8_t type = event.response_type & 0x7f;
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (property.window == connection_.root() &&
            property.atom == connection_.atoms().netClientList) {
            watchTopLevels();
        }
        return std::nullopt;
    }
    if (type != XCB_ENTER_NOTIFY && type != XCB_LEAVE_NOTIFY) {
        return std::nullopt;
    }
    // Enter and leave events share one layout.
    const auto& crossing = reinterpret_cast<const xcb_enter_notify_event_t&>(event);
    if (!changesTopLevel(crossing, connection_.root())) {
        return std::nullopt;
    }
    // Windows mapped since the last look (menus, windows of a desktop without a window manager)
    // are watched from now on; crossings are rare enough to afford the look.
    watchTopLevels();
    return Crossing{{static_cast<double>(crossing.root_x), static_cast<double>(crossing.root_y)},
                    crossing.state};
}

void X11CrossingWatch::watchTopLevels() {
    xcb_connection_t* c = connection_.get();
    auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, connection_.root()));
    if (!tree) {
        return;
    }
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    std::unordered_set<xcb_window_t> current(children,
                                             children + xcb_query_tree_children_length(tree.get()));
    for (xcb_window_t window : current) {
        if (!watched_.contains(window)) {
            select(window, kTopLevelMask);
        }
    }
    // Destroyed windows take their selections with them.
    watched_ = std::move(current);
    connection_.flush();
}

void X11CrossingWatch::select(xcb_window_t window, std::uint32_t mask) const {
    // Unchecked: a window may vanish at any moment, and its error is dropped by the event pump.
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
}

}  // namespace gf
