#include "platform/x11/X11TaskbarHint.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// _NET_WM_STATE client-message actions.
constexpr std::uint32_t stateRemove = 0;
constexpr std::uint32_t stateAdd = 1;
// Source indication: a normal application.
constexpr std::uint32_t sourceApplication = 1;

xcb_atom_t internAtom(xcb_connection_t* c, std::string_view name) {
    const auto reply =
        xcbReply(c, xcb_intern_atom_reply,
                 xcb_intern_atom(c, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::vector<xcb_atom_t> readState(xcb_connection_t* c, xcb_window_t window, xcb_atom_t property) {
    const auto reply = xcbReply(c, xcb_get_property_reply,
                                xcb_get_property(c, 0, window, property, XCB_ATOM_ATOM, 0, 1024));
    if (!reply || reply->format != 32 || reply->type != XCB_ATOM_ATOM) {
        return {};
    }
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    return {atoms, atoms + xcb_get_property_value_length(reply.get()) / sizeof(xcb_atom_t)};
}

}  // namespace

std::unique_ptr<X11TaskbarHint> X11TaskbarHint::onConnection(xcb_connection_t* connection) {
    if (connection == nullptr || xcb_connection_has_error(connection) != 0) {
        return nullptr;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_atom_t state = internAtom(connection, "_NET_WM_STATE");
    const xcb_atom_t skip = internAtom(connection, "_NET_WM_STATE_SKIP_TASKBAR");
    if (screen == nullptr || state == XCB_ATOM_NONE || skip == XCB_ATOM_NONE) {
        return nullptr;
    }
    return std::make_unique<X11TaskbarHint>(connection, screen->root, state, skip);
}

X11TaskbarHint::X11TaskbarHint(xcb_connection_t* connection, std::uint32_t root,
                               std::uint32_t netWmState, std::uint32_t skipTaskbar)
    : connection_(connection), root_(root), netWmState_(netWmState), skipTaskbar_(skipTaskbar) {}

bool X11TaskbarHint::setSkipTaskbar(std::uint32_t window, bool skip) {
    return isMapped(window) ? askWindowManager(window, skip) : rewriteStateProperty(window, skip);
}

bool X11TaskbarHint::skipsTaskbar(std::uint32_t window) {
    const auto state = readState(connection_, window, netWmState_);
    return std::find(state.begin(), state.end(), skipTaskbar_) != state.end();
}

bool X11TaskbarHint::isMapped(std::uint32_t window) {
    const auto attributes = xcbReply(connection_, xcb_get_window_attributes_reply,
                                     xcb_get_window_attributes(connection_, window));
    return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
}

bool X11TaskbarHint::rewriteStateProperty(std::uint32_t window, bool skip) {
    std::vector<xcb_atom_t> state = readState(connection_, window, netWmState_);
    std::erase(state, skipTaskbar_);
    if (skip) {
        state.push_back(skipTaskbar_);
    }
    const xcb_void_cookie_t cookie = xcb_change_property_checked(
        connection_, XCB_PROP_MODE_REPLACE, window, netWmState_, XCB_ATOM_ATOM, 32,
        static_cast<std::uint32_t>(state.size()), state.data());
    return xcbSucceeded(connection_, cookie);
}

bool X11TaskbarHint::askWindowManager(std::uint32_t window, bool skip) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = netWmState_;
    message.data.data32[0] = skip ? stateAdd : stateRemove;
    message.data.data32[1] = skipTaskbar_;
    message.data.data32[3] = sourceApplication;
    const std::uint32_t mask =
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    return xcbSucceeded(connection_,
                        xcb_send_event_checked(connection_, 0, root_, mask,
                                               reinterpret_cast<const char*>(&message)));
}

}  // namespace gf
