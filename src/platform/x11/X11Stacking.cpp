#include "platform/x11/X11Stacking.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/x11/X11RootProperties.h"
#include "platform/x11/X11WindowProperties.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbReplyValues.h"

namespace gf {

namespace {

// Window managers reparent a client one or two levels below the root; three
// covers the deepest seen with room to spare.
constexpr int kMaxReparentingDepth = 3;
constexpr std::size_t kMaxWindowsSearched = 4096;
constexpr std::size_t kMaxCachedFrames = 512;

}  // namespace

X11Stacking::X11Stacking(const XcbConnection& connection, const X11WindowProperties& properties,
                         const X11RootProperties& root)
    : connection_(connection), properties_(properties), root_(root) {}

std::optional<std::vector<StackedWindow>> X11Stacking::stackedWindows() const {
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

std::optional<StackedWindow> X11Stacking::stackedWindowAt(Point point) const {
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

std::optional<StackedWindow> X11Stacking::scanForWindowAt(Point point) const {
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
        if (!found && geometry && outerRectangle(*geometry).contains(point)) {
            found = (*windows)[i];
        }
    }
    return found;
}

std::optional<std::vector<X11Stacking::TopLevel>> X11Stacking::mappedTopLevels(
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

xcb_window_t X11Stacking::findClientInside(xcb_window_t frame) const {
    if (const xcb_window_t cached = cachedClientInside(frame); cached != XCB_WINDOW_NONE) {
        return cached;
    }
    const xcb_window_t client = searchClientInside(frame);
    rememberClientInside(frame, client);
    return client;
}

xcb_window_t X11Stacking::cachedClientInside(xcb_window_t frame) const {
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

void X11Stacking::rememberClientInside(xcb_window_t frame, xcb_window_t client) const {
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

bool X11Stacking::isClientInside(xcb_window_t client, xcb_window_t frame) const {
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

xcb_window_t X11Stacking::searchClientInside(xcb_window_t frame) const {
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
        const std::vector<bool> carries = properties_.carryWmState(children);
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

std::vector<StackedWindow> X11Stacking::resolveClients(
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
        const std::vector<bool> carries = properties_.carryWmState(windows);
        for (std::size_t k = 0; k < open.size(); ++k) {
            if (carries[k]) {
                stacked[open[k]].client = stacked[open[k]].frame;
            }
        }
    }

    // Walk up from each managed client to the root's child holding it: a few
    // pipelined tree queries instead of searching every frame's subtree.
    if (!unresolved().empty()) {
        if (auto clients = root_.clientList()) {
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
    const bool managed = root_.hasEwmhWindowManager();
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

std::vector<xcb_window_t> X11Stacking::applicationWindows() const {
    std::vector<xcb_window_t> windows = root_.clientList().value_or(std::vector<xcb_window_t>{});
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

std::optional<xcb_window_t> X11Stacking::frameWindowOf(xcb_window_t client) const {
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

bool X11Stacking::isInFrontOf(xcb_window_t frame, const std::vector<xcb_window_t>& others) const {
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

bool X11Stacking::exists(xcb_window_t window) const {
    xcb_connection_t* c = connection_.get();
    return xcbReply(c, xcb_get_window_attributes_reply, xcb_get_window_attributes(c, window)) !=
           nullptr;
}

}  // namespace gf
