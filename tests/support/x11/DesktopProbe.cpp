#include "x11/DesktopProbe.h"

#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xcb.h>

#include <algorithm>

#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbReplyValues.h"

namespace gf::test {

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
    return reply ? atoms_[name] = reply->atom : std::uint32_t{XCB_ATOM_NONE};
}

std::vector<std::uint32_t> DesktopProbe::cardinals(WindowId window, const char* property,
                                                   std::uint32_t count) const {
    auto reply = xcbReply(
        connection_, xcb_get_property_reply,
        requestProperty(connection_, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, count));
    return propertyValues32(reply.get());
}

auto DesktopProbe::attributes(WindowId window) const {
    return xcbReply(connection_, xcb_get_window_attributes_reply,
                    xcb_get_window_attributes(connection_, window));
}

auto DesktopProbe::tree(WindowId window) const {
    return xcbReply(connection_, xcb_query_tree_reply, xcb_query_tree(connection_, window));
}

std::vector<WindowId> DesktopProbe::children(WindowId window) const {
    const auto reply = tree(window);
    const xcb_window_t* list = reply ? xcb_query_tree_children(reply.get()) : nullptr;
    return {list, list + (reply ? xcb_query_tree_children_length(reply.get()) : 0)};
}

std::optional<WindowId> DesktopProbe::parentOf(WindowId window) const {
    const auto reply = tree(window);
    return reply && reply->parent != XCB_WINDOW_NONE ? std::optional(reply->parent) : std::nullopt;
}

std::optional<WindowId> DesktopProbe::frameOf(WindowId client) const {
    for (WindowId window = client;;) {
        const std::optional<WindowId> parent = parentOf(window);
        if (!parent || *parent == root_) {
            return parent ? std::optional(window) : std::nullopt;
        }
        window = *parent;
    }
}

std::optional<Rect> DesktopProbe::frameGeometry(WindowId client) const {
    const std::optional<WindowId> frame = frameOf(client);
    auto geometry =
        frame ? xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, *frame))
              : nullptr;
    return geometry ? std::optional(outerRectangle(*geometry)) : std::nullopt;
}

std::optional<Rect> DesktopProbe::visibleFrame(WindowId client) const {
    std::optional<Rect> own = rootRectangle(client, true);
    if (!own) {
        return std::nullopt;
    }
    Rect visible = *own;
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
    for (auto frame = stack.rbegin(); frame != stack.rend(); ++frame) {
        if (const auto client = isViewable(*frame) ? clientAtOrBelow(*frame) : std::nullopt) {
            clients.push_back(*client);
        }
    }
    return clients;
}

bool DesktopProbe::isAbove(WindowId a, WindowId b) const {
    const std::vector<WindowId> stack = rootChildrenBottomToTop();
    const auto positionA = std::ranges::find(stack, frameOf(a).value_or(XCB_WINDOW_NONE));
    const auto positionB = std::ranges::find(stack, frameOf(b).value_or(XCB_WINDOW_NONE));
    return positionA != stack.end() && positionB != stack.end() && positionA > positionB;
}

std::optional<WindowId> DesktopProbe::focusedClient() const {
    auto focus = xcbReply(connection_, xcb_get_input_focus_reply, xcb_get_input_focus(connection_));
    if (!focus || focus->focus == XCB_WINDOW_NONE || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT ||
        focus->focus == root_) {
        return std::nullopt;
    }
    // Focus may sit on the client, on one of its subwindows or on the frame.
    const std::optional<WindowId> topLevel = frameOf(focus->focus);
    const std::optional<WindowId> client = topLevel ? clientAtOrBelow(*topLevel) : std::nullopt;
    // Without a window manager, an unmanaged top-level window is its own client.
    return client || !topLevel || windowManagerRuns() ? client : topLevel;
}

std::optional<WindowId> DesktopProbe::activeWindow() const {
    const std::vector<std::uint32_t> active = cardinals(root_, "_NET_ACTIVE_WINDOW", 1);
    if (active.empty() || active.front() == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    return active.front();
}

bool DesktopProbe::isViewable(WindowId window) const {
    const auto reply = attributes(window);
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool DesktopProbe::exists(WindowId window) const {
    return attributes(window) != nullptr;
}

bool DesktopProbe::isManaged(WindowId client) const {
    return hasWmState(client) && isViewable(client) &&
           (!windowManagerRuns() || frameExtents(client).size() == 4);
}

bool DesktopProbe::hasState(WindowId client, const std::string& state) const {
    return std::ranges::count(cardinals(client, "_NET_WM_STATE", 64), atom(state)) > 0;
}

std::optional<Rect> DesktopProbe::rootRectangle(WindowId window, bool withBorder) const {
    const auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, window));
    const auto origin = xcbReply(connection_, xcb_translate_coordinates_reply,
                                 xcb_translate_coordinates(connection_, window, root_, 0, 0));
    if (!geometry || !origin) {
        return std::nullopt;
    }
    // The translated origin is inside the border; the border is drawn around it.
    const double border = withBorder ? geometry->border_width : 0;
    return Rect{origin->dst_x - border, origin->dst_y - border, geometry->width + 2 * border,
                geometry->height + 2 * border};
}

std::optional<std::int32_t> DesktopProbe::pidOf(WindowId client) const {
    const xcb_res_client_id_spec_t spec{client, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    auto ids = xcbReply(connection_, xcb_res_query_client_ids_reply,
                        xcb_res_query_client_ids(connection_, 1, &spec));
    // One window asked, so at most one answer; without it, a remote client's own word.
    if (ids && ids->num_ids > 0) {
        const auto* id = xcb_res_query_client_ids_ids_iterator(ids.get()).data;
        if (xcb_res_client_id_value_value_length(id) >= 1) {
            return static_cast<std::int32_t>(*xcb_res_client_id_value_value(id));
        }
    }
    const std::vector<std::uint32_t> pid = cardinals(client, "_NET_WM_PID", 1);
    return pid.empty() ? std::nullopt : std::optional(static_cast<std::int32_t>(pid.front()));
}

std::optional<std::string> DesktopProbe::classOf(WindowId client) const {
    return classIn(xcbReply(connection_, xcb_get_property_reply,
                            xcb_get_property(connection_, 0, client, XCB_ATOM_WM_CLASS,
                                             XCB_ATOM_STRING, 0, 256))
                       .get());
}

std::optional<std::string> classIn(const xcb_get_property_reply_t* wmClass) {
    if (wmClass == nullptr || wmClass->format != 8) {
        return std::nullopt;
    }
    const std::string both(static_cast<const char*>(xcb_get_property_value(wmClass)),
                           static_cast<std::size_t>(xcb_get_property_value_length(wmClass)));
    const std::size_t separator = both.find('\0');
    return separator == std::string::npos
               ? std::nullopt
               : std::optional(std::string(both.c_str() + separator + 1));
}

std::optional<WindowId> DesktopProbe::findClient(
    const std::function<bool(WindowId)>& matches) const {
    // Windows with WM_STATE; without a window manager, also mapped top-levels other than menus.
    const bool managed = windowManagerRuns();
    for (WindowId topLevel : rootChildrenBottomToTop()) {
        std::optional<WindowId> client = clientAtOrBelow(topLevel);
        if (const auto reply = client || managed ? nullptr : attributes(topLevel);
            reply && reply->map_state == XCB_MAP_STATE_VIEWABLE && reply->override_redirect == 0) {
            client = topLevel;
        }
        if (client && matches(*client)) {
            return client;
        }
    }
    return std::nullopt;
}

std::optional<WindowId> DesktopProbe::findClientByPid(std::int32_t pid) const {
    return findClient([&](WindowId c) { return pidOf(c) == pid; });
}

std::optional<WindowId> DesktopProbe::findClientByClass(const std::string& windowClass) const {
    return findClient([&](WindowId c) { return classOf(c) == windowClass; });
}

std::vector<Rect> DesktopProbe::monitors() const {
    auto reply = xcbReply(connection_, xcb_randr_get_monitors_reply,
                          xcb_randr_get_monitors(connection_, root_, 1));
    std::vector<Rect> monitors;
    for (auto it = reply ? xcb_randr_get_monitors_monitors_iterator(reply.get())
                         : xcb_randr_monitor_info_iterator_t{};
         it.rem > 0; xcb_randr_monitor_info_next(&it)) {
        monitors.push_back({static_cast<double>(it.data->x), static_cast<double>(it.data->y),
                            static_cast<double>(it.data->width),
                            static_cast<double>(it.data->height)});
    }
    return monitors;
}

}  // namespace gf::test
