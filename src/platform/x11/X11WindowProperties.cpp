#include "platform/x11/X11WindowProperties.h"

#include <algorithm>

#include "platform/WindowDescription.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbReplyValues.h"

namespace gf {

namespace {

constexpr std::uint32_t kMaxAtomsInList = 32;
constexpr std::uint32_t kMaxClassWords = 256;

// The class part of a WM_CLASS value, "instance\0class\0".
std::optional<std::string> classIn(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 8) {
        return std::nullopt;
    }
    const auto* data = static_cast<const char*>(xcb_get_property_value(reply));
    const std::string both(data, static_cast<std::size_t>(xcb_get_property_value_length(reply)));
    const std::size_t separator = both.find('\0');
    if (separator == std::string::npos) {
        return std::nullopt;
    }
    std::string windowClass = both.substr(separator + 1);
    if (const std::size_t end = windowClass.find('\0'); end != std::string::npos) {
        windowClass.resize(end);
    }
    if (windowClass.empty()) {
        return std::nullopt;
    }
    return windowClass;
}

bool contains(const std::vector<xcb_atom_t>& atoms, xcb_atom_t atom) {
    return atom != XCB_ATOM_NONE && std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
}

}  // namespace

X11WindowProperties::X11WindowProperties(const XcbConnection& connection)
    : connection_(connection) {
    // The resource extension wants to hear the client's version before the
    // first question; the answer itself is of no interest.
    if (connection_.hasExtension(&xcb_res_id)) {
        xcb_discard_reply(connection_.get(),
                          xcb_res_query_version(connection_.get(), 1, 2).sequence);
    }
}

std::vector<std::optional<std::int32_t>> X11WindowProperties::ownerPids(
    const std::vector<xcb_window_t>& windows) const {
    return collectOwnerPids(requestOwnerPids(windows));
}

X11WindowProperties::PidCookies X11WindowProperties::requestOwnerPids(
    const std::vector<xcb_window_t>& windows) const {
    xcb_connection_t* c = connection_.get();
    const bool haveResources = connection_.hasExtension(&xcb_res_id);
    PidCookies cookies;
    cookies.reserve(windows.size());
    for (xcb_window_t window : windows) {
        PidCookie cookie;
        if (haveResources) {
            const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
            cookie.resources = xcb_res_query_client_ids(c, 1, &spec);
        }
        cookie.property =
            requestProperty(c, window, connection_.atoms().netWmPid, XCB_ATOM_CARDINAL, 1);
        cookies.push_back(cookie);
    }
    return cookies;
}

std::vector<std::optional<std::int32_t>> X11WindowProperties::collectOwnerPids(
    const PidCookies& cookies) const {
    xcb_connection_t* c = connection_.get();
    std::vector<std::optional<std::int32_t>> pids(cookies.size());
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        if (cookies[i].resources) {
            auto ids = xcbReply(c, xcb_res_query_client_ids_reply, *cookies[i].resources);
            if (ids) {
                for (auto it = xcb_res_query_client_ids_ids_iterator(ids.get()); it.rem > 0;
                     xcb_res_client_id_value_next(&it)) {
                    if ((it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
                        xcb_res_client_id_value_value_length(it.data) >= 1) {
                        pids[i] =
                            static_cast<std::int32_t>(*xcb_res_client_id_value_value(it.data));
                    }
                }
            }
        }
        auto property = xcbReply(c, xcb_get_property_reply, cookies[i].property);
        const std::vector<std::uint32_t> value = propertyValues32(property.get());
        if (!pids[i] && !value.empty() && value.front() != 0) {
            pids[i] = static_cast<std::int32_t>(value.front());
        }
    }
    return pids;
}

std::optional<std::string> X11WindowProperties::windowClass(xcb_window_t window) const {
    return collectWindowClass(requestWindowClass(window));
}

xcb_get_property_cookie_t X11WindowProperties::requestWindowClass(xcb_window_t window) const {
    return requestProperty(connection_.get(), window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                           kMaxClassWords);
}

std::optional<std::string> X11WindowProperties::collectWindowClass(
    xcb_get_property_cookie_t cookie) const {
    auto reply = xcbReply(connection_.get(), xcb_get_property_reply, cookie);
    return classIn(reply.get());
}

std::vector<int> X11WindowProperties::layersOf(const std::vector<StackedWindow>& windows) const {
    return collectLayers(requestLayers(windows), windows);
}

X11WindowProperties::LayerCookies X11WindowProperties::requestLayers(
    const std::vector<StackedWindow>& windows) const {
    xcb_connection_t* c = connection_.get();
    const X11Atoms& atoms = connection_.atoms();
    LayerCookies cookies;
    cookies.reserve(windows.size());
    for (const StackedWindow& window : windows) {
        cookies.push_back(
            {requestProperty(c, window.client, atoms.netWmWindowType, XCB_ATOM_ATOM,
                             kMaxAtomsInList),
             requestProperty(c, window.client, atoms.netWmState, XCB_ATOM_ATOM, kMaxAtomsInList)});
    }
    return cookies;
}

std::vector<int> X11WindowProperties::collectLayers(
    const LayerCookies& cookies, const std::vector<StackedWindow>& windows) const {
    xcb_connection_t* c = connection_.get();
    std::vector<int> layers;
    layers.reserve(windows.size());
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        auto types = xcbReply(c, xcb_get_property_reply, cookies[i].types);
        auto states = xcbReply(c, xcb_get_property_reply, cookies[i].states);
        layers.push_back(layerFor(propertyValues32(types.get()), propertyValues32(states.get()),
                                  windows[i].overrideRedirect));
    }
    return layers;
}

int X11WindowProperties::layerFor(const std::vector<xcb_atom_t>& types,
                                  const std::vector<xcb_atom_t>& states,
                                  bool overrideRedirect) const {
    if (overrideRedirect) {
        return WindowLayer::overlay;
    }
    const X11Atoms& a = connection_.atoms();
    int layer = WindowLayer::normal;
    // The type list is in order of preference: the first one understood counts.
    for (xcb_atom_t type : types) {
        if (type == a.netWmWindowTypeDesktop) {
            return WindowLayer::desktop;
        }
        if (type == a.netWmWindowTypeDock) {
            return WindowLayer::dock;
        }
        if (type == a.netWmWindowTypeNotification || type == a.netWmWindowTypeTooltip ||
            type == a.netWmWindowTypePopupMenu || type == a.netWmWindowTypeDropdownMenu ||
            type == a.netWmWindowTypeCombo || type == a.netWmWindowTypeDnd) {
            return WindowLayer::overlay;
        }
        if (type == a.netWmWindowTypeUtility || type == a.netWmWindowTypeToolbar ||
            type == a.netWmWindowTypeSplash || type == a.netWmWindowTypeMenu) {
            layer = WindowLayer::floating;
            break;
        }
        if (type == a.netWmWindowTypeNormal || type == a.netWmWindowTypeDialog) {
            break;
        }
    }
    if (contains(states, a.netWmStateAbove)) {
        layer = std::max(layer, WindowLayer::floating);
    }
    return layer;
}

WindowState X11WindowProperties::windowState(xcb_window_t client) const {
    const X11Atoms& atoms = connection_.atoms();
    WindowState state;
    for (const xcb_atom_t atom : atomsOf(client, atoms.netWmState)) {
        state.maximizedHorizontally |= atom == atoms.netWmStateMaximizedHorz;
        state.maximizedVertically |= atom == atoms.netWmStateMaximizedVert;
        state.fullscreen |= atom == atoms.netWmStateFullscreen;
    }
    return state;
}

std::vector<bool> X11WindowProperties::carryWmState(
    const std::vector<xcb_window_t>& windows) const {
    xcb_connection_t* c = connection_.get();
    const xcb_atom_t wmState = connection_.atoms().wmState;
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (xcb_window_t window : windows) {
        cookies.push_back(requestProperty(c, window, wmState, wmState, 0));
    }
    std::vector<bool> carries;
    carries.reserve(windows.size());
    for (auto cookie : cookies) {
        auto reply = xcbReply(c, xcb_get_property_reply, cookie);
        carries.push_back(reply && reply->type == wmState);
    }
    return carries;
}

std::vector<xcb_atom_t> X11WindowProperties::atomsOf(xcb_window_t window,
                                                     xcb_atom_t property) const {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply,
                          requestProperty(c, window, property, XCB_ATOM_ATOM, kMaxAtomsInList));
    return propertyValues32(reply.get());
}

std::vector<std::uint32_t> X11WindowProperties::cardinalsOf(xcb_window_t window,
                                                            xcb_atom_t property,
                                                            std::uint32_t maxCount) const {
    xcb_connection_t* c = connection_.get();
    auto reply =
        xcbReply(c, xcb_get_property_reply,
                 requestProperty(c, window, property, XCB_GET_PROPERTY_TYPE_ANY, maxCount));
    return propertyValues32(reply.get());
}

}  // namespace gf
