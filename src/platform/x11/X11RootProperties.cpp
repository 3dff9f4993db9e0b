#include "platform/x11/X11RootProperties.h"

#include <cstdint>

#include "platform/x11/X11WindowProperties.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbReplyValues.h"

namespace gf {

namespace {

constexpr std::uint32_t kMaxClients = 4096;

}  // namespace

X11RootProperties::X11RootProperties(const XcbConnection& connection,
                                     const X11WindowProperties& properties)
    : connection_(connection), properties_(properties) {}

std::optional<Rect> X11RootProperties::rootRectangle() const {
    xcb_connection_t* c = connection_.get();
    auto geometry = xcbReply(c, xcb_get_geometry_reply, xcb_get_geometry(c, connection_.root()));
    if (!geometry) {
        return std::nullopt;
    }
    return Rect{0, 0, static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

std::optional<std::vector<xcb_window_t>> X11RootProperties::clientList() const {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply,
                          requestProperty(c, connection_.root(), connection_.atoms().netClientList,
                                          XCB_ATOM_WINDOW, kMaxClients));
    if (!reply || reply->type == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    return propertyValues32(reply.get());
}

bool X11RootProperties::hasEwmhWindowManager() const {
    return ewmhWindowManager().has_value();
}

std::optional<xcb_window_t> X11RootProperties::ewmhWindowManager() const {
    const xcb_atom_t check = connection_.atoms().netSupportingWmCheck;
    const std::vector<std::uint32_t> fromRoot =
        properties_.cardinalsOf(connection_.root(), check, 1);
    if (fromRoot.empty() || fromRoot.front() == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    // A stale property survives a crashed manager; the check window's own
    // copy pointing to itself proves the manager still runs.
    const std::vector<std::uint32_t> fromCheckWindow =
        properties_.cardinalsOf(fromRoot.front(), check, 1);
    if (fromCheckWindow.empty() || fromCheckWindow.front() != fromRoot.front()) {
        return std::nullopt;
    }
    return fromRoot.front();
}

xcb_window_t X11RootProperties::activeWindow() const {
    const std::vector<std::uint32_t> active =
        properties_.cardinalsOf(connection_.root(), connection_.atoms().netActiveWindow, 1);
    return active.empty() ? xcb_window_t{XCB_WINDOW_NONE} : active.front();
}

}  // namespace gf
