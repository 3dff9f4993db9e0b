#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rect.h"

struct xcb_connection_t;

namespace gf::test {

using WindowId = std::uint32_t;

// Looks at the X server directly, without the backend under test, to check
// what the user would see. Window arguments are client windows (the
// application's own), unless a name says frame.
class DesktopProbe {
  public:
    DesktopProbe(xcb_connection_t* connection, WindowId root);

    // The root's child holding the client: the window manager's frame.
    std::optional<WindowId> frameOf(WindowId client) const;
    // The frame's rectangle in root coordinates, border included.
    std::optional<Rect> frameGeometry(WindowId client) const;
    // What the user sees of the client, in root coordinates: its window with
    // its X border, less the invisible margins a client that draws its own
    // decorations declares (_GTK_FRAME_EXTENTS), plus the window manager's
    // decorations (_NET_FRAME_EXTENTS). Taken from the client's own position,
    // not from the frame window, so that frames with invisible parts of their
    // own cannot blur it.
    std::optional<Rect> visibleFrame(WindowId client) const;

    // Children of the root as the server stacks them, bottom first.
    std::vector<WindowId> rootChildrenBottomToTop() const;
    // Mapped application windows (those carrying WM_STATE), front first.
    std::vector<WindowId> clientsFrontToBack() const;
    // Whether a's frame is stacked above b's.
    bool isAbove(WindowId a, WindowId b) const;

    // The client holding the keyboard focus; nullopt when none does.
    std::optional<WindowId> focusedClient() const;
    // _NET_ACTIVE_WINDOW of the root; nullopt when unset or None.
    std::optional<WindowId> activeWindow() const;

    bool windowManagerRuns() const;
    bool isViewable(WindowId window) const;
    bool exists(WindowId window) const;
    // Managed: the window manager gave it WM_STATE (and, when it decorates
    // windows, _NET_FRAME_EXTENTS).
    bool isManaged(WindowId client) const;
    bool hasWmState(WindowId window) const;
    // The decorations around a client (_NET_FRAME_EXTENTS: left, right, top,
    // bottom); empty when it has none.
    std::vector<std::uint32_t> frameExtents(WindowId client) const;
    // The shadow and resize margins inside a client that draws its own
    // decorations (_GTK_FRAME_EXTENTS: left, right, top, bottom); empty when none.
    std::vector<std::uint32_t> clientSideExtents(WindowId client) const;

    // Whether _NET_WM_STATE lists the named state atom.
    bool hasState(WindowId client, const std::string& state) const;
    // Any window's own rectangle (no frame around it) in root coordinates.
    std::optional<Rect> rootGeometry(WindowId window) const;

    std::optional<std::int32_t> pidOf(WindowId client) const;
    std::optional<std::string> classOf(WindowId client) const;
    // Every window carrying WM_STATE below the root, mapped or not; without a
    // window manager, every mapped top-level window but menus.
    std::vector<WindowId> allClients() const;
    std::optional<WindowId> findClientByPid(std::int32_t pid) const;
    std::optional<WindowId> findClientByClass(const std::string& windowClass) const;

    // The RandR monitors, as the server lists them, in root coordinates.
    std::vector<Rect> monitors() const;

    std::uint32_t atom(const std::string& name) const;

  private:
    std::optional<WindowId> clientAtOrBelow(WindowId window) const;
    std::vector<WindowId> children(WindowId window) const;
    std::optional<WindowId> parentOf(WindowId window) const;

    xcb_connection_t* connection_;
    WindowId root_;
    mutable std::map<std::string, std::uint32_t> atoms_;
};

}  // namespace gf::test
