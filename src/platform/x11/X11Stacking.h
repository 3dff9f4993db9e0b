#pragma once

#include <xcb/xcb.h>

#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/Point.h"
#include "platform/x11/StackedWindow.h"

namespace gf {

class X11RootProperties;
class X11WindowProperties;
class XcbConnection;

// Which windows are on the screen, in which order, and which one is at a point: the top-level
// windows and the application windows the window manager's frames hold. Asked with pipelined
// requests so a batch costs a few round trips whatever its size. Safe to use from several
// threads at once: the only state is a cache of which client each frame holds, checked before
// use and kept under a lock.
class X11Stacking {
  public:
    X11Stacking(const XcbConnection& connection, const X11WindowProperties& properties,
                const X11RootProperties& root);

    // The mapped top-level windows, front to back, in the server's stacking
    // order. nullopt when the root cannot be read.
    std::optional<std::vector<StackedWindow>> stackedWindows() const;
    // The frontmost mapped top-level window containing the point; nullopt
    // over the bare root window.
    std::optional<StackedWindow> stackedWindowAt(Point point) const;
    // Every application window: the client list in mapping order, then the
    // mapped clients it does not name (yet).
    std::vector<xcb_window_t> applicationWindows() const;
    // The root's child holding the client (the window manager's frame), or the
    // client itself when nothing reparented it; nullopt when it vanished.
    std::optional<xcb_window_t> frameWindowOf(xcb_window_t client) const;
    // Whether the top-level window is above each of the others in the stacking order now.
    bool isInFrontOf(xcb_window_t frame, const std::vector<xcb_window_t>& others) const;
    // Whether the window still exists.
    bool exists(xcb_window_t window) const;

  private:
    struct TopLevel {
        xcb_window_t window = XCB_WINDOW_NONE;
        bool overrideRedirect = false;
    };

    std::vector<StackedWindow> resolveClients(const std::vector<TopLevel>& topLevels) const;
    xcb_window_t findClientInside(xcb_window_t frame) const;
    // The client remembered for a frame if it is still inside it, else none.
    xcb_window_t cachedClientInside(xcb_window_t frame) const;
    void rememberClientInside(xcb_window_t frame, xcb_window_t client) const;
    xcb_window_t searchClientInside(xcb_window_t frame) const;
    bool isClientInside(xcb_window_t client, xcb_window_t frame) const;
    std::optional<std::vector<TopLevel>> mappedTopLevels(
        const std::vector<xcb_window_t>& candidates) const;
    std::optional<StackedWindow> scanForWindowAt(Point point) const;

    const XcbConnection& connection_;
    const X11WindowProperties& properties_;
    const X11RootProperties& root_;
    mutable std::mutex cacheMutex_;
    mutable std::unordered_map<xcb_window_t, xcb_window_t> clientOfFrame_;
};

}  // namespace gf
