#include "x11/DesktopProbe.h"

#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xcb.h>

#include <algorithm>

#include "platform/x11/XcbReply.h"

namespace gf::test {

namespace {

std::vector<std::uint32_t> cardinals(xcb_connection_t* c, WindowId window, xcb_atom_t property,
                                     std::uint32_t count) {
    auto reply =
        xcbReply(c, xcb_get_property_reply,
                 xcb_get_property(c, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, count));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* data = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {data, data + xcb_get_property_value_length(reply.get()) / 4};
}

}  // namespace

DesktopProbe::DesktopProbe(xcb_connection_t* connection, WindowId root)
    : connection_(connection), root_(root) {
    xcb_discard_reply(connection_, xcb_res_query_version(connection_, 1, 2).sequence);
    xcb_discard_reply(connection_, xcb_randr_query_version(connection_, 1, 5).sequence);
}

std::uint32_t DesktopProbe::atom(const std::string& name) const {
    if (auto known = atoms_.find(name); known != atoms_.end()) {
        return known->second;
    }
    auto reply = xcbReply(
        connection_, xcb_intern_atom_reply,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()));
    if (!reply) {
        return XCB_ATOM_NONE;
    }
    atoms_.emplace(name, reply->atom);
    return reply->atom;
}

std::vector<WindowId> DesktopProbe::children(WindowId window) const {
    auto tree = xcbReply(connection_, xcb_query_tree_reply, xcb_query_tree(connection_, window));
    if (!tree) {
        return {};
    }
    const xcb_window_t* list = xcb_query_tree_children(tree.get());
    return {list, list + xcb_query_tree_children_length(tree.get())};
}

std::optional<WindowId> DesktopProbe::parentOf(WindowId window) const {
    auto tree = xcbReply(connection_, xcb_query_tree_reply, xcb_query_tree(connection_, window));
    if (!tree) {
        return std::nullopt;
    }
    return tree->parent;
}

std::optional<WindowId> DesktopProbe::frameOf(WindowId client) const {
    WindowId window = client;
    while (true) {
        const std::optional<WindowId> parent = parentOf(window);
        if (!parent || *parent == XCB_WINDOW_NONE) {
            return std::nullopt;
        }
        if (*parent == root_) {
            return window;
        }
        window = *parent;
    }
}

std::optional<Rect> DesktopProbe::frameGeometry(WindowId client) const {
    const std::optional<WindowId> frame = frameOf(client);
    if (!frame) {
        return std::nullopt;
    }
    auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, *frame));
    if (!geometry) {
        return std::nullopt;
    }
    const double border = geometry->border_width;
    return Rect{static_cast<double>(geometry->x), static_cast<double>(geometry->y),
                geometry->width + 2 * border, geometry->height + 2 * border};
}

std::optional<Rect> DesktopProbe::visibleFrame(WindowId client) const {
    auto origin = xcbReply(connection_, xcb_translate_coordinates_reply,
                           xcb_translate_coordinates(connection_, client, root_, 0, 0));
    auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, client));
    if (!origin || !geometry) {
        return std::nullopt;
    }
    // The translated origin is inside the border; the border is drawn around it.
    const double border = geometry->border_width;
    Rect visible{origin->dst_x - border, origin->dst_y - border, geometry->width + 2 * border,
                 geometry->height + 2 * border};
    if (const std::vector<std::uint32_t> inside = clientSideExtents(client); inside.size() == 4) {
        visible = {visible.x + inside[0], visible.y + inside[2],
                   visible.width - inside[0] - inside[1], visible.height - inside[2] - inside[3]};
    }
    if (const std::vector<std::uint32_t> around = frameExtents(client); around.size() == 4) {
        visible = {visible.x - around[0], visible.y - around[2],
                   visible.width + around[0] + around[1], visible.height + around[2] + around[3]};
    }
    return visible;
}

std::vector<WindowId> DesktopProbe::rootChildrenBottomToTop() const {
    return children(root_);
}

bool DesktopProbe::hasWmState(WindowId window) const {
    const xcb_atom_t wmState = atom("WM_STATE");
    auto reply = xcbReply(connection_, xcb_get_property_reply,
                          xcb_get_property(connection_, 0, window, wmState, wmState, 0, 2));
    return reply && reply->type == wmState;
}

std::optional<WindowId> DesktopProbe::clientAtOrBelow(WindowId window) const {
    std::vector<WindowId> level{window};
    for (int depth = 0; depth < 4 && !level.empty(); ++depth) {
        std::vector<WindowId> next;
        for (WindowId candidate : level) {
            if (hasWmState(candidate)) {
                return candidate;
            }
            const std::vector<WindowId> below = children(candidate);
            next.insert(next.end(), below.begin(), below.end());
        }
        level = std::move(next);
    }
    return std::nullopt;
}

std::vector<WindowId> DesktopProbe::clientsFrontToBack() const {
    std::vector<WindowId> clients;
    std::vector<WindowId> stack = rootChildrenBottomToTop();
    std::reverse(stack.begin(), stack.end());
    for (WindowId frame : stack) {
        if (!isViewable(frame)) {
            continue;
        }
        if (const std::optional<WindowId> client = clientAtOrBelow(frame)) {
            clients.push_back(*client);
        }
    }
    return clients;
}

bool DesktopProbe::isAbove(WindowId a, WindowId b) const {
    const std::optional<WindowId> frameA = frameOf(a);
    const std::optional<WindowId> frameB = frameOf(b);
    const std::vector<WindowId> stack = rootChildrenBottomToTop();
    const auto positionA = std::find(stack.begin(), stack.end(), frameA.value_or(XCB_WINDOW_NONE));
    const auto positionB = std::find(stack.begin(), stack.end(), frameB.value_or(XCB_WINDOW_NONE));
    return positionA != stack.end() && positionB != stack.end() && positionA > positionB;
}

std::optional<WindowId> DesktopProbe::focusedClient() const {
    auto focus = xcbReply(connection_, xcb_get_input_focus_reply, xcb_get_input_focus(connection_));
    if (!focus || focus->focus == XCB_WINDOW_NONE || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT ||
        focus->focus == root_) {
        return std::nullopt;
    }
    // Focus may sit on the client, on one of its subwindows or on the frame.
    WindowId window = focus->focus;
    while (window != root_) {
        if (hasWmState(window)) {
            return window;
        }
        const std::optional<WindowId> parent = parentOf(window);
        if (!parent || *parent == XCB_WINDOW_NONE) {
            return std::nullopt;
        }
        if (*parent == root_) {
            const std::optional<WindowId> client = clientAtOrBelow(window);
            if (!client && !windowManagerRuns()) {
                return window;  // an unmanaged top-level window is its own client
            }
            return client;
        }
        window = *parent;
    }
    return std::nullopt;
}

std::optional<WindowId> DesktopProbe::activeWindow() const {
    const std::vector<std::uint32_t> active =
        cardinals(connection_, root_, atom("_NET_ACTIVE_WINDOW"), 1);
    if (active.empty() || active.front() == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    return active.front();
}

bool DesktopProbe::windowManagerRuns() const {
    return !cardinals(connection_, root_, atom("_NET_SUPPORTING_WM_CHECK"), 1).empty();
}

bool DesktopProbe::isViewable(WindowId window) const {
    auto attributes = xcbReply(connection_, xcb_get_window_attributes_reply,
                               xcb_get_window_attributes(connection_, window));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool DesktopProbe::exists(WindowId window) const {
    auto attributes = xcbReply(connection_, xcb_get_window_attributes_reply,
                               xcb_get_window_attributes(connection_, window));
    return attributes != nullptr;
}

bool DesktopProbe::isManaged(WindowId client) const {
    if (!hasWmState(client) || !isViewable(client)) {
        return false;
    }
    const std::vector<std::uint32_t> check =
        cardinals(connection_, root_, atom("_NET_SUPPORTING_WM_CHECK"), 1);
    if (check.empty()) {
        return true;  // no window manager that decorates
    }
    return frameExtents(client).size() == 4;
}

std::vector<std::uint32_t> DesktopProbe::frameExtents(WindowId client) const {
    return cardinals(connection_, client, atom("_NET_FRAME_EXTENTS"), 4);
}

bool DesktopProbe::hasState(WindowId client, const std::string& state) const {
    const std::vector<std::uint32_t> states =
        cardinals(connection_, client, atom("_NET_WM_STATE"), 64);
    return std::find(states.begin(), states.end(), atom(state)) != states.end();
}

std::optional<Rect> DesktopProbe::rootGeometry(WindowId window) const {
    const auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, window));
    const auto translated = xcbReply(connection_, xcb_translate_coordinates_reply,
                                     xcb_translate_coordinates(connection_, window, root_, 0, 0));
    if (!geometry || !translated) {
        return std::nullopt;
    }
    return Rect{static_cast<double>(translated->dst_x), static_cast<double>(translated->dst_y),
                static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

std::vector<std::uint32_t> DesktopProbe::clientSideExtents(WindowId client) const {
    return cardinals(connection_, client, atom("_GTK_FRAME_EXTENTS"), 4);
}

std::optional<std::int32_t> DesktopProbe::pidOf(WindowId client) const {
    const xcb_res_client_id_spec_t spec{client, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    auto ids = xcbReply(connection_, xcb_res_query_client_ids_reply,
                        xcb_res_query_client_ids(connection_, 1, &spec));
    if (ids) {
        for (auto it = xcb_res_query_client_ids_ids_iterator(ids.get()); it.rem > 0;
             xcb_res_client_id_value_next(&it)) {
            if (xcb_res_client_id_value_value_length(it.data) >= 1) {
                return static_cast<std::int32_t>(*xcb_res_client_id_value_value(it.data));
            }
        }
    }
    const std::vector<std::uint32_t> pid = cardinals(connection_, client, atom("_NET_WM_PID"), 1);
    if (pid.empty()) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(pid.front());
}

std::optional<std::string> DesktopProbe::classOf(WindowId client) const {
    auto reply = xcbReply(
        connection_, xcb_get_property_reply,
        xcb_get_property(connection_, 0, client, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256));
    if (!reply || reply->format != 8) {
        return std::nullopt;
    }
    const auto* data = static_cast<const char*>(xcb_get_property_value(reply.get()));
    const std::string both(data,
                           static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    const std::size_t separator = both.find('\0');
    if (separator == std::string::npos) {
        return std::nullopt;
    }
    return std::string(both.c_str() + separator + 1);
}

std::vector<WindowId> DesktopProbe::allClients() const {
    // Without a window manager nothing carries WM_STATE: every mapped
    // top-level window that is not a menu belongs to an application.
    const bool managed =
        !cardinals(connection_, root_, atom("_NET_SUPPORTING_WM_CHECK"), 1).empty();
    std::vector<WindowId> clients;
    for (WindowId topLevel : rootChildrenBottomToTop()) {
        if (const std::optional<WindowId> client = clientAtOrBelow(topLevel)) {
            clients.push_back(*client);
        } else if (!managed && isViewable(topLevel)) {
            auto attributes = xcbReply(connection_, xcb_get_window_attributes_reply,
                                       xcb_get_window_attributes(connection_, topLevel));
            if (attributes && attributes->override_redirect == 0) {
                clients.push_back(topLevel);
            }
        }
    }
    return clients;
}

std::optional<WindowId> DesktopProbe::findClientByPid(std::int32_t pid) const {
    for (WindowId client : allClients()) {
        if (pidOf(client) == pid) {
            return client;
        }
    }
    return std::nullopt;
}

std::optional<WindowId> DesktopProbe::findClientByClass(const std::string& windowClass) const {
    for (WindowId client : allClients()) {
        if (classOf(client) == windowClass) {
            return client;
        }
    }
    return std::nullopt;
}

std::vector<Rect> DesktopProbe::monitors() const {
    auto reply = xcbReply(connection_, xcb_randr_get_monitors_reply,
                          xcb_randr_get_monitors(connection_, root_, 1));
    std::vector<Rect> monitors;
    if (reply) {
        for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
             xcb_randr_monitor_info_next(&it)) {
            monitors.push_back({static_cast<double>(it.data->x), static_cast<double>(it.data->y),
                                static_cast<double>(it.data->width),
                                static_cast<double>(it.data->height)});
        }
    }
    return monitors;
}

}  // namespace gf::test
