#include "platform/x11/X11WindowReader.h"

#include <xcb/res.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

constexpr std::uint32_t kMaxAtomsInList = 32;
constexpr std::uint32_t kMaxClients = 4096;
constexpr std::uint32_t kMaxClassWords = 256;
// Window managers reparent a client one or two levels below the root; three
// covers the deepest seen with room to spare.
constexpr int kMaxReparentingDepth = 3;
constexpr std::size_t kMaxWindowsSearched = 4096;
constexpr std::size_t kMaxCachedFrames = 512;

xcb_get_property_cookie_t requestProperty(xcb_connection_t* connection, xcb_window_t window,
                                          xcb_atom_t property, xcb_atom_t type,
                                          std::uint32_t length) {
    return xcb_get_property(connection, 0, window, property, type, 0, length);
}

std::vector<std::uint32_t> values32(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    const auto* data = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply)) / 4;
    return {data, data + count};
}

Rect outerGeometry(const xcb_get_geometry_reply_t& geometry) {
    const double border = geometry.border_width;
    return {static_cast<double>(geometry.x), static_cast<double>(geometry.y),
            geometry.width + 2 * border, geometry.height + 2 * border};
}

// Four sizes (left, right, top, bottom) as a frame extents property holds them; nullopt without
// all four.
std::optional<FrameExtents> extentsIn(const xcb_get_property_reply_t* reply) {
    const std::vector<std::uint32_t> sizes = values32(reply);
    if (sizes.size() < 4) {
        return std::nullopt;
    }
    return FrameExtents{static_cast<int>(sizes[0]), static_cast<int>(sizes[1]),
                        static_cast<int>(sizes[2]), static_cast<int>(sizes[3])};
}

// The decorations a frame window adds around its client when the window manager does not
// declare them.
FrameExtents extentsBetween(const Rect& frame, const Rect& clientWithBorder) {
    auto atLeastZero = [](double size) { return static_cast<int>(std::max(0.0, size)); };
    return {atLeastZero(clientWithBorder.minX() - frame.minX()),
            atLeastZero(frame.maxX() - clientWithBorder.maxX()),
            atLeastZero(clientWithBorder.minY() - frame.minY()),
            atLeastZero(frame.maxY() - clientWithBorder.maxY())};
}

xcb_get_property_cookie_t requestClass(xcb_connection_t* connection, xcb_window_t window) {
    return requestProperty(connection, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, kMaxClassWords);
}

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

X11WindowReader::X11WindowReader(const XcbConnection& connection) : connection_(connection) {
    // The resource extension wants to hear the client's version before the
    // first question; the answer itself is of no interest.
    if (connection_.hasExtension(&xcb_res_id)) {
        xcb_discard_reply(connection_.get(),
                          xcb_res_query_version(connection_.get(), 1, 2).sequence);
    }
}

std::optional<std::vector<StackedWindow>> X11WindowReader::stackedWindows() const {
    xcb_connection_t* c = connection_.get();
    auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, connection_.root()));
    if (!tree) {
        return std::nullopt;
    }
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    // The server lists children bottom to top.
    std::vector<xcb_window_t> frontToBack(children, children + count);
    std::reverse(frontToBack.begin(), frontToBack.end());
    auto topLevels = mappedTopLevels(frontToBack);
    if (!topLevels) {
        return std::nullopt;
    }
    return resolveClients(*topLevels);
}

std::optional<StackedWindow> X11WindowReader::stackedWindowAt(Point point) const {
    xcb_connection_t* c = connection_.get();
    const auto x = static_cast<std::int16_t>(std::floor(point.x));
    const auto y = static_cast<std::int16_t>(std::floor(point.y));
    auto translated =
        xcbReply(c, xcb_translate_coordinates_reply,
                 xcb_translate_coordinates(c, connection_.root(), connection_.root(), x, y));
    if (!translated || translated->child == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    // Asked on every pointer motion while auto raise is on, and the pointer
    // mostly stays over a frame already seen: one check of the client
    // remembered for it replaces finding the client all over again.
    if (const xcb_window_t known = cachedClientInside(translated->child);
        known != XCB_WINDOW_NONE) {
        return StackedWindow{translated->child, known, false};
    }
    auto topLevels = mappedTopLevels({translated->child});
    if (!topLevels) {
        return std::nullopt;
    }
    if (topLevels->empty()) {
        // An input-only window catches the point; look at what is drawn there.
        return scanForWindowAt(point);
    }
    std::vector<StackedWindow> resolved = resolveClients(*topLevels);
    if (resolved.empty()) {
        return std::nullopt;
    }
    const StackedWindow& found = resolved.front();
    if (!found.overrideRedirect && found.client != found.frame) {
        rememberClientInside(found.frame, found.client);
    }
    return found;
}

std::optional<StackedWindow> X11WindowReader::scanForWindowAt(Point point) const {
    auto windows = stackedWindows();
    if (!windows) {
        return std::nullopt;
    }
    xcb_connection_t* c = connection_.get();
    std::vector<xcb_get_geometry_cookie_t> cookies;
    cookies.reserve(windows->size());
    for (const StackedWindow& window : *windows) {
        cookies.push_back(xcb_get_geometry(c, window.frame));
    }
    std::optional<StackedWindow> found;
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        auto geometry = xcbReply(c, xcb_get_geometry_reply, cookies[i]);
        if (!found && geometry && outerGeometry(*geometry).contains(point)) {
            found = (*windows)[i];
        }
    }
    return found;
}

std::optional<std::vector<X11WindowReader::TopLevel>> X11WindowReader::mappedTopLevels(
    const std::vector<xcb_window_t>& candidates) const {
    xcb_connection_t* c = connection_.get();
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    cookies.reserve(candidates.size());
    for (xcb_window_t window : candidates) {
        cookies.push_back(xcb_get_window_attributes(c, window));
    }
    std::vector<TopLevel> mapped;
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        auto attributes = xcbReply(c, xcb_get_window_attributes_reply, cookies[i]);
        if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            attributes->_class != XCB_WINDOW_CLASS_INPUT_ONLY) {
            mapped.push_back({candidates[i], attributes->override_redirect != 0});
        }
    }
    if (connection_.hasError()) {
        return std::nullopt;
    }
    return mapped;
}

std::vector<bool> X11WindowReader::carryWmState(const std::vector<xcb_window_t>& windows) const {
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

xcb_window_t X11WindowReader::findClientInside(xcb_window_t frame) const {
    if (const xcb_window_t cached = cachedClientInside(frame); cached != XCB_WINDOW_NONE) {
        return cached;
    }
    const xcb_window_t client = searchClientInside(frame);
    rememberClientInside(frame, client);
    return client;
}

xcb_window_t X11WindowReader::cachedClientInside(xcb_window_t frame) const {
    xcb_window_t cached = XCB_WINDOW_NONE;
    {
        std::lock_guard lock(cacheMutex_);
        if (auto found = clientOfFrame_.find(frame); found != clientOfFrame_.end()) {
            cached = found->second;
        }
    }
    if (cached == XCB_WINDOW_NONE || !isClientInside(cached, frame)) {
        return XCB_WINDOW_NONE;
    }
    return cached;
}

void X11WindowReader::rememberClientInside(xcb_window_t frame, xcb_window_t client) const {
    std::lock_guard lock(cacheMutex_);
    if (clientOfFrame_.size() >= kMaxCachedFrames) {
        clientOfFrame_.clear();  // frames of closed windows would pile up otherwise
    }
    if (client != XCB_WINDOW_NONE) {
        clientOfFrame_[frame] = client;
    } else {
        clientOfFrame_.erase(frame);
    }
}

bool X11WindowReader::isClientInside(xcb_window_t client, xcb_window_t frame) const {
    xcb_connection_t* c = connection_.get();
    const xcb_atom_t wmState = connection_.atoms().wmState;
    auto stateCookie = requestProperty(c, client, wmState, wmState, 0);
    xcb_window_t window = client;
    bool inside = false;
    for (int depth = 0; depth < kMaxReparentingDepth && !inside; ++depth) {
        auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, window));
        if (!tree || tree->parent == XCB_WINDOW_NONE || tree->parent == connection_.root()) {
            break;
        }
        inside = tree->parent == frame;
        window = tree->parent;
    }
    auto state = xcbReply(c, xcb_get_property_reply, stateCookie);
    return inside && state && state->type == wmState;
}

xcb_window_t X11WindowReader::searchClientInside(xcb_window_t frame) const {
    xcb_connection_t* c = connection_.get();
    std::vector<xcb_window_t> level{frame};
    std::size_t searched = 0;
    for (int depth = 0; depth < kMaxReparentingDepth && !level.empty(); ++depth) {
        std::vector<xcb_query_tree_cookie_t> cookies;
        cookies.reserve(level.size());
        for (xcb_window_t window : level) {
            cookies.push_back(xcb_query_tree(c, window));
        }
        std::vector<xcb_window_t> children;
        for (auto cookie : cookies) {
            if (auto tree = xcbReply(c, xcb_query_tree_reply, cookie)) {
                const xcb_window_t* list = xcb_query_tree_children(tree.get());
                children.insert(children.end(), list,
                                list + xcb_query_tree_children_length(tree.get()));
            }
        }
        const std::vector<bool> carries = carryWmState(children);
        for (std::size_t i = 0; i < children.size(); ++i) {
            if (carries[i]) {
                return children[i];
            }
        }
        searched += children.size();
        if (searched > kMaxWindowsSearched) {
            break;
        }
        level = std::move(children);
    }
    return XCB_WINDOW_NONE;
}

std::vector<StackedWindow> X11WindowReader::resolveClients(
    const std::vector<TopLevel>& topLevels) const {
    xcb_connection_t* c = connection_.get();
    std::vector<StackedWindow> stacked;
    stacked.reserve(topLevels.size());
    for (const TopLevel& topLevel : topLevels) {
        // Some window managers (fluxbox, icewm) make their frames override-redirect, so the flag
        // is only the client's own once no managed client turns up inside.
        stacked.push_back({topLevel.window, XCB_WINDOW_NONE, false});
    }
    auto unresolved = [&stacked] {
        std::vector<std::size_t> indices;
        for (std::size_t i = 0; i < stacked.size(); ++i) {
            if (stacked[i].client == XCB_WINDOW_NONE) {
                indices.push_back(i);
            }
        }
        return indices;
    };

    // A top-level window carrying WM_STATE is a client the manager did not
    // reparent.
    {
        const std::vector<std::size_t> open = unresolved();
        std::vector<xcb_window_t> windows;
        for (std::size_t i : open) {
            windows.push_back(stacked[i].frame);
        }
        const std::vector<bool> carries = carryWmState(windows);
        for (std::size_t k = 0; k < open.size(); ++k) {
            if (carries[k]) {
                stacked[open[k]].client = stacked[open[k]].frame;
            }
        }
    }

    // Walk up from each managed client to the root's child holding it: a few
    // pipelined tree queries instead of searching every frame's subtree.
    if (!unresolved().empty()) {
        if (auto clients = clientList()) {
            std::unordered_map<xcb_window_t, xcb_window_t> clientOfTopLevel;
            std::vector<xcb_window_t> current = *clients;
            std::vector<xcb_window_t> owner = *clients;
            for (int depth = 0; depth <= kMaxReparentingDepth && !current.empty(); ++depth) {
                std::vector<xcb_query_tree_cookie_t> cookies;
                cookies.reserve(current.size());
                for (xcb_window_t window : current) {
                    cookies.push_back(xcb_query_tree(c, window));
                }
                std::vector<xcb_window_t> next;
                std::vector<xcb_window_t> nextOwner;
                for (std::size_t i = 0; i < cookies.size(); ++i) {
                    auto tree = xcbReply(c, xcb_query_tree_reply, cookies[i]);
                    if (!tree || tree->parent == XCB_WINDOW_NONE) {
                        continue;
                    }
                    if (tree->parent == connection_.root()) {
                        clientOfTopLevel.emplace(current[i], owner[i]);
                    } else {
                        next.push_back(tree->parent);
                        nextOwner.push_back(owner[i]);
                    }
                }
                current = std::move(next);
                owner = std::move(nextOwner);
            }
            for (std::size_t i : unresolved()) {
                if (auto found = clientOfTopLevel.find(stacked[i].frame);
                    found != clientOfTopLevel.end()) {
                    stacked[i].client = found->second;
                }
            }
        }
    }

    // Windows the manager has not listed yet: search inside their frames.
    for (std::size_t i : unresolved()) {
        stacked[i].client = findClientInside(stacked[i].frame);
    }

    // What is left holds no client. Menus and tooltips bypass the window manager and are their
    // own client. Under a window manager the rest are its own windows or ones it is still taking
    // over; without one, every mapped top-level window is an application's window.
    if (unresolved().empty()) {
        return stacked;
    }
    const bool managed = hasEwmhWindowManager();
    std::vector<StackedWindow> kept;
    kept.reserve(stacked.size());
    for (std::size_t i = 0; i < stacked.size(); ++i) {
        StackedWindow window = stacked[i];
        if (window.client == XCB_WINDOW_NONE) {
            window.overrideRedirect = topLevels[i].overrideRedirect;
            if (managed && !window.overrideRedirect) {
                continue;
            }
            window.client = window.frame;
        }
        kept.push_back(window);
    }
    return kept;
}

std::vector<int> X11WindowReader::layersOf(const std::vector<StackedWindow>& windows) const {
    return collectLayers(requestLayers(windows), windows);
}

X11WindowReader::LayerCookies X11WindowReader::requestLayers(
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

std::vector<int> X11WindowReader::collectLayers(const LayerCookies& cookies,
                                                const std::vector<StackedWindow>& windows) const {
    xcb_connection_t* c = connection_.get();
    std::vector<int> layers;
    layers.reserve(windows.size());
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        auto types = xcbReply(c, xcb_get_property_reply, cookies[i].types);
        auto states = xcbReply(c, xcb_get_property_reply, cookies[i].states);
        layers.push_back(
            layerFor(values32(types.get()), values32(states.get()), windows[i].overrideRedirect));
    }
    return layers;
}

int X11WindowReader::layerFor(const std::vector<xcb_atom_t>& types,
                              const std::vector<xcb_atom_t>& states, bool overrideRedirect) const {
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

std::vector<std::optional<std::int32_t>> X11WindowReader::ownerPids(
    const std::vector<xcb_window_t>& windows) const {
    return collectOwnerPids(requestOwnerPids(windows));
}

X11WindowReader::PidCookies X11WindowReader::requestOwnerPids(
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

std::vector<std::optional<std::int32_t>> X11WindowReader::collectOwnerPids(
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
        const std::vector<std::uint32_t> value = values32(property.get());
        if (!pids[i] && !value.empty() && value.front() != 0) {
            pids[i] = static_cast<std::int32_t>(value.front());
        }
    }
    return pids;
}

std::vector<WindowDescription> X11WindowReader::describe(
    const std::vector<StackedWindow>& windows) const {
    xcb_connection_t* c = connection_.get();
    std::vector<FrameGeometryCookies> cookies;
    std::vector<xcb_get_property_cookie_t> classCookies;
    cookies.reserve(windows.size());
    classCookies.reserve(windows.size());
    std::vector<xcb_window_t> clients;
    for (const StackedWindow& window : windows) {
        cookies.push_back(requestFrameGeometry(window));
        classCookies.push_back(requestClass(c, window.client));
        clients.push_back(window.client);
    }
    // Everything is asked before the first answer is awaited: one round trip.
    const LayerCookies layerCookies = requestLayers(windows);
    const PidCookies pidCookies = requestOwnerPids(clients);
    const std::vector<int> layers = collectLayers(layerCookies, windows);
    const std::vector<std::optional<std::int32_t>> pids = collectOwnerPids(pidCookies);

    std::vector<WindowDescription> descriptions;
    descriptions.reserve(windows.size());
    for (std::size_t i = 0; i < windows.size(); ++i) {
        WindowDescription description;
        description.windowNumber = windows[i].client;
        description.ownerPid = pids[i];
        description.layer = layers[i];
        if (auto geometry = collectFrameGeometry(cookies[i])) {
            description.bounds = geometry->visibleFrame();
        }
        auto windowClass = xcbReply(c, xcb_get_property_reply, classCookies[i]);
        description.applicationIdentifier = classIn(windowClass.get());
        descriptions.push_back(description);
    }
    return descriptions;
}

X11WindowReader::FrameGeometryCookies X11WindowReader::requestFrameGeometry(
    const StackedWindow& window) const {
    xcb_connection_t* c = connection_.get();
    const X11Atoms& atoms = connection_.atoms();
    return {window.frame != window.client,
            xcb_get_geometry(c, window.client),
            xcb_translate_coordinates(c, window.client, connection_.root(), 0, 0),
            xcb_get_geometry(c, window.frame),
            requestProperty(c, window.client, atoms.netFrameExtents, XCB_ATOM_CARDINAL, 4),
            requestProperty(c, window.client, atoms.gtkFrameExtents, XCB_ATOM_CARDINAL, 4)};
}

std::optional<X11FrameGeometry> X11WindowReader::collectFrameGeometry(
    const FrameGeometryCookies& cookies) const {
    auto shadow = xcbReply(connection_.get(), xcb_get_property_reply, cookies.shadow);
    return collectFrameGeometry(cookies, shadow.get());
}

std::optional<X11FrameGeometry> X11WindowReader::collectFrameGeometry(
    const FrameGeometryCookies& cookies, const xcb_get_property_reply_t* shadow) const {
    xcb_connection_t* c = connection_.get();
    auto geometry = xcbReply(c, xcb_get_geometry_reply, cookies.clientGeometry);
    auto origin = xcbReply(c, xcb_translate_coordinates_reply, cookies.clientOrigin);
    auto frameGeometry = xcbReply(c, xcb_get_geometry_reply, cookies.frameGeometry);
    auto decorations = xcbReply(c, xcb_get_property_reply, cookies.decorations);
    if (!geometry || !origin || !frameGeometry || !decorations || shadow == nullptr) {
        return std::nullopt;  // the window vanished
    }
    X11FrameGeometry result;
    result.border = geometry->border_width;
    result.client = {static_cast<double>(origin->dst_x), static_cast<double>(origin->dst_y),
                     static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
    result.shadow = extentsIn(shadow).value_or(FrameExtents{});
    // Decorations belong to a frame: a client that is the root's child has none, whatever
    // _NET_FRAME_EXTENTS says, since a window manager that died leaves the property behind.
    if (cookies.framed) {
        const Rect frame = outerGeometry(*frameGeometry);
        result.frameWindow = frame;
        const Rect clientWithBorder{
            result.client.x - result.border, result.client.y - result.border,
            result.client.width + 2 * result.border, result.client.height + 2 * result.border};
        result.decorations =
            extentsIn(decorations.get()).value_or(extentsBetween(frame, clientWithBorder));
    }
    return result;
}

void X11WindowReader::discardFrameGeometry(const FrameGeometryCookies& cookies) const {
    xcb_connection_t* c = connection_.get();
    for (unsigned int sequence :
         {cookies.clientGeometry.sequence, cookies.clientOrigin.sequence,
          cookies.frameGeometry.sequence, cookies.decorations.sequence, cookies.shadow.sequence}) {
        xcb_discard_reply(c, sequence);
    }
}

bool X11WindowReader::exists(xcb_window_t window) const {
    xcb_connection_t* c = connection_.get();
    return xcbReply(c, xcb_get_window_attributes_reply, xcb_get_window_attributes(c, window)) !=
           nullptr;
}

WindowState X11WindowReader::windowState(xcb_window_t client) const {
    const X11Atoms& atoms = connection_.atoms();
    WindowState state;
    for (const xcb_atom_t atom : atomsOf(client, atoms.netWmState)) {
        state.maximizedHorizontally |= atom == atoms.netWmStateMaximizedHorz;
        state.maximizedVertically |= atom == atoms.netWmStateMaximizedVert;
        state.fullscreen |= atom == atoms.netWmStateFullscreen;
    }
    return state;
}

std::optional<xcb_window_t> X11WindowReader::frameWindowOf(xcb_window_t client) const {
    xcb_connection_t* c = connection_.get();
    xcb_window_t window = client;
    for (int depth = 0; depth <= kMaxReparentingDepth; ++depth) {
        auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, window));
        if (!tree) {
            return std::nullopt;
        }
        if (tree->parent == connection_.root() || tree->parent == XCB_WINDOW_NONE) {
            break;
        }
        window = tree->parent;
    }
    return window;
}

std::optional<Rect> X11WindowReader::outerFrame(xcb_window_t client) const {
    const std::optional<xcb_window_t> frame = frameWindowOf(client);
    if (!frame) {
        return std::nullopt;  // the window vanished
    }
    const auto geometry = collectFrameGeometry(requestFrameGeometry({*frame, client, false}));
    if (!geometry) {
        return std::nullopt;
    }
    return geometry->visibleFrame();
}

std::optional<std::vector<xcb_window_t>> X11WindowReader::clientList() const {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply,
                          requestProperty(c, connection_.root(), connection_.atoms().netClientList,
                                          XCB_ATOM_WINDOW, kMaxClients));
    if (!reply || reply->type == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    return values32(reply.get());
}

std::vector<xcb_window_t> X11WindowReader::applicationWindows() const {
    std::vector<xcb_window_t> windows = clientList().value_or(std::vector<xcb_window_t>{});
    // The manager publishes its list a little after it takes a window over,
    // so mapped clients it has not listed yet are added.
    if (auto stacked = stackedWindows()) {
        for (const StackedWindow& window : *stacked) {
            if (!window.overrideRedirect &&
                std::find(windows.begin(), windows.end(), window.client) == windows.end()) {
                windows.push_back(window.client);
            }
        }
    }
    return windows;
}

std::optional<Rect> X11WindowReader::rootRectangle() const {
    xcb_connection_t* c = connection_.get();
    auto geometry = xcbReply(c, xcb_get_geometry_reply, xcb_get_geometry(c, connection_.root()));
    if (!geometry) {
        return std::nullopt;
    }
    return Rect{0, 0, static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

bool X11WindowReader::hasEwmhWindowManager() const {
    return ewmhWindowManager().has_value();
}

std::optional<xcb_window_t> X11WindowReader::ewmhWindowManager() const {
    const xcb_atom_t check = connection_.atoms().netSupportingWmCheck;
    const std::vector<std::uint32_t> fromRoot = cardinalsOf(connection_.root(), check, 1);
    if (fromRoot.empty() || fromRoot.front() == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    // A stale property survives a crashed manager; the check window's own
    // copy pointing to itself proves the manager still runs.
    const std::vector<std::uint32_t> fromCheckWindow = cardinalsOf(fromRoot.front(), check, 1);
    if (fromCheckWindow.empty() || fromCheckWindow.front() != fromRoot.front()) {
        return std::nullopt;
    }
    return fromRoot.front();
}

xcb_window_t X11WindowReader::activeWindow() const {
    const std::vector<std::uint32_t> active =
        cardinalsOf(connection_.root(), connection_.atoms().netActiveWindow, 1);
    return active.empty() ? xcb_window_t{XCB_WINDOW_NONE} : active.front();
}

bool X11WindowReader::isInFrontOf(xcb_window_t frame,
                                  const std::vector<xcb_window_t>& others) const {
    xcb_connection_t* c = connection_.get();
    auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, connection_.root()));
    if (!tree) {
        return false;
    }
    const xcb_window_t* begin = xcb_query_tree_children(tree.get());
    const xcb_window_t* end = begin + xcb_query_tree_children_length(tree.get());
    const xcb_window_t* own = std::find(begin, end, frame);
    // Children are listed bottom to top: every other window must come first.
    return own != end && std::none_of(own + 1, end, [&others](xcb_window_t window) {
               return std::find(others.begin(), others.end(), window) != others.end();
           });
}

std::optional<std::string> X11WindowReader::windowClass(xcb_window_t window) const {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply, requestClass(c, window));
    return classIn(reply.get());
}

std::vector<xcb_atom_t> X11WindowReader::atomsOf(xcb_window_t window, xcb_atom_t property) const {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply,
                          requestProperty(c, window, property, XCB_ATOM_ATOM, kMaxAtomsInList));
    return values32(reply.get());
}

std::vector<std::uint32_t> X11WindowReader::cardinalsOf(xcb_window_t window, xcb_atom_t property,
                                                        std::uint32_t maxCount) const {
    xcb_connection_t* c = connection_.get();
    auto reply =
        xcbReply(c, xcb_get_property_reply,
                 requestProperty(c, window, property, XCB_GET_PROPERTY_TYPE_ANY, maxCount));
    return values32(reply.get());
}

}  // namespace gf
