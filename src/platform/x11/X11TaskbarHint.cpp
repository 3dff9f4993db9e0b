#include "platform/x11/X11TaskbarHint.h"

#include <algorithm>
#include <vector>

#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// _NET_WM_STATE client-message actions.
constexpr std::uint32_t stateRemove = 0;
constexpr std::uint32_t stateAdd = 1;
// Source indication: a normal application.
constexpr std::uint32_t sourceApplication = 1;

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

struct X11TaskbarHint::Key {};

std::unique_ptr<X11TaskbarHint> X11TaskbarHint::connect(const char* displayName,
                                                        std::string* error) {
    auto connection = XcbConnection::open(displayName, error);
    if (!connection) {
        return nullptr;
    }
    return std::make_unique<X11TaskbarHint>(Key{}, std::move(connection));
}

X11TaskbarHint::X11TaskbarHint(const Key&, std::unique_ptr<XcbConnection> connection)
    : connection_(std::move(connection)) {}

X11TaskbarHint::~X11TaskbarHint() = default;

bool X11TaskbarHint::setSkipTaskbar(std::uint32_t window, bool skip) {
    const bool done =
        isMapped(window) ? askWindowManager(window, skip) : rewriteStateProperty(window, skip);
    connection_->discardQueuedEvents();
    return done;
}

bool X11TaskbarHint::skipsTaskbar(std::uint32_t window) {
    const X11Atoms& atoms = connection_->atoms();
    const auto state = readState(connection_->get(), window, atoms.netWmState);
    return std::find(state.begin(), state.end(), atoms.netWmStateSkipTaskbar) != state.end();
}

bool X11TaskbarHint::isMapped(std::uint32_t window) {
    xcb_connection_t* c = connection_->get();
    const auto attributes =
        xcbReply(c, xcb_get_window_attributes_reply, xcb_get_window_attributes(c, window));
    return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
}

bool X11TaskbarHint::rewriteStateProperty(std::uint32_t window, bool skip) {
    xcb_connection_t* c = connection_->get();
    const X11Atoms& atoms = connection_->atoms();
    std::vector<xcb_atom_t> state = readState(c, window, atoms.netWmState);
    std::erase(state, atoms.netWmStateSkipTaskbar);
    if (skip) {
        state.push_back(atoms.netWmStateSkipTaskbar);
    }
    const xcb_void_cookie_t cookie = xcb_change_property_checked(
        c, XCB_PROP_MODE_REPLACE, window, atoms.netWmState, XCB_ATOM_ATOM, 32,
        static_cast<std::uint32_t>(state.size()), state.data());
    return xcbSucceeded(c, cookie);
}

bool X11TaskbarHint::askWindowManager(std::uint32_t window, bool skip) {
    const X11Atoms& atoms = connection_->atoms();
    return connection_->sendToWindowManager(
        window, atoms.netWmState,
        {skip ? stateAdd : stateRemove, atoms.netWmStateSkipTaskbar, 0, sourceApplication, 0});
}

}  // namespace gf
