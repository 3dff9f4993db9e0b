#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rect.h"

struct xcb_connection_t;
struct xcb_get_property_reply_t;

namespace gf::test {

using WindowId = std::uint32_t;

// What the user sees, read from the server, not the backend under test; windows are clients.
class DesktopProbe {
  public:
    DesktopProbe(xcb_connection_t* connection, WindowId root);

    std::optional<WindowId> frameOf(WindowId client) const;    // the root's child holding it
    std::optional<Rect> frameGeometry(WindowId client) const;  // border included
    // Its own rectangle less _GTK_FRAME_EXTENTS plus _NET_FRAME_EXTENTS: no invisible frame parts.
    std::optional<Rect> visibleFrame(WindowId client) const;

    std::vector<WindowId> rootChildrenBottomToTop() const { return children(root_); }
    std::vector<WindowId> clientsFrontToBack() const;  // mapped windows carrying WM_STATE
    bool isAbove(WindowId a, WindowId b) const;        // a's frame stacked above b's

    std::optional<WindowId> focusedClient() const;
    std::optional<WindowId> activeWindow() const;  // _NET_ACTIVE_WINDOW unless None

    bool isViewable(WindowId window) const;
    bool exists(WindowId window) const;
    // WM_STATE given and, under a window manager that decorates, _NET_FRAME_EXTENTS too.
    bool isManaged(WindowId client) const;
    // _NET_FRAME_EXTENTS and _GTK_FRAME_EXTENTS (left, right, top, bottom); empty when none.
    std::vector<std::uint32_t> frameExtents(WindowId client) const {
        return cardinals(client, "_NET_FRAME_EXTENTS", 4);
    }
    std::vector<std::uint32_t> clientSideExtents(WindowId client) const {
        return cardinals(client, "_GTK_FRAME_EXTENTS", 4);
    }

    bool hasState(WindowId client, const std::string& state) const;
    // Its own, without a frame.
    std::optional<Rect> rootGeometry(WindowId window) const { return rootRectangle(window, false); }

    std::optional<std::string> classOf(WindowId client) const;
    std::optional<WindowId> findClientByPid(std::int32_t pid) const;
    std::optional<WindowId> findClientByClass(const std::string& windowClass) const;

    std::vector<Rect> monitors() const;  // RandR monitors in root coordinates

    std::uint32_t atom(const std::string& name) const;

  private:
    auto attributes(WindowId window) const;
    auto tree(WindowId window) const;
    std::optional<WindowId> findClient(const std::function<bool(WindowId)>& matches) const;
    std::optional<Rect> rootRectangle(WindowId window, bool withBorder) const;
    std::optional<WindowId> clientAtOrBelow(WindowId window) const;
    std::vector<WindowId> children(WindowId window) const;
    std::optional<WindowId> parentOf(WindowId window) const;
    bool hasWmState(WindowId window) const;
    bool windowManagerRuns() const {
        return !cardinals(root_, "_NET_SUPPORTING_WM_CHECK", 1).empty();
    }
    std::optional<std::int32_t> pidOf(WindowId client) const;
    std::vector<std::uint32_t> cardinals(WindowId window, const char* property,
                                         std::uint32_t count) const;

    xcb_connection_t* connection_;
    WindowId root_;
    mutable std::map<std::string, std::uint32_t> atoms_;
};

// The class in a WM_CLASS reply ("instance\0class\0"); nullopt without one.
std::optional<std::string> classIn(const xcb_get_property_reply_t* wmClass);

}  // namespace gf::test
