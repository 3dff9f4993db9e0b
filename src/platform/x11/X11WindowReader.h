#pragma once

#include <xcb/res.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Point.h"
#include "platform/Rect.h"
#include "platform/WindowDescription.h"
#include "platform/WindowState.h"
#include "platform/x11/X11FrameGeometry.h"

namespace gf {

class XcbConnection;

// One mapped top-level window: the child of the root (the window manager's
// frame) and the application's own window inside it. Both are the same window
// for override-redirect windows and when no window manager reparents.
struct StackedWindow {
    xcb_window_t frame = XCB_WINDOW_NONE;
    xcb_window_t client = XCB_WINDOW_NONE;
    bool overrideRedirect = false;

    friend bool operator==(const StackedWindow&, const StackedWindow&) = default;
};

// Read-only questions about the windows on the screen, answered with
// pipelined requests so a batch costs a few round trips whatever its size.
// Safe to use from several threads at once: the only state is a cache of
// which client each frame holds, checked before use and kept under a lock.
class X11WindowReader {
  public:
    explicit X11WindowReader(const XcbConnection& connection);

    // The mapped top-level windows, front to back, in the server's stacking
    // order. nullopt when the root cannot be read.
    std::optional<std::vector<StackedWindow>> stackedWindows() const;

    // The frontmost mapped top-level window containing the point; nullopt
    // over the bare root window.
    std::optional<StackedWindow> stackedWindowAt(Point point) const;

    // Number, owner, layer, visible frame and application (the WM_CLASS class) of each window,
    // in the same order.
    std::vector<WindowDescription> describe(const std::vector<StackedWindow>& windows) const;
    std::vector<int> layersOf(const std::vector<StackedWindow>& windows) const;

    // The process owning each window: from the X resource extension when the
    // client is local, else from _NET_WM_PID.
    std::vector<std::optional<std::int32_t>> ownerPids(
        const std::vector<xcb_window_t>& windows) const;

    // The frame the user sees around a client, in root coordinates; nullopt when it vanished.
    std::optional<Rect> outerFrame(xcb_window_t client) const;
    // The root's child holding the client (the window manager's frame), or the
    // client itself when nothing reparented it; nullopt when it vanished.
    std::optional<xcb_window_t> frameWindowOf(xcb_window_t client) const;
    // Whether the window still exists.
    bool exists(xcb_window_t window) const;
    // Maximized and fullscreen from the client's _NET_WM_STATE; normal when it vanished.
    WindowState windowState(xcb_window_t client) const;

    // A window's frame geometry, asked in one step and collected in another so
    // that the question can travel with others.
    struct FrameGeometryCookies {
        bool framed = false;  // a window manager's frame holds the client
        xcb_get_geometry_cookie_t clientGeometry;
        xcb_translate_coordinates_cookie_t clientOrigin;
        xcb_get_geometry_cookie_t frameGeometry;
        xcb_get_property_cookie_t decorations;
        xcb_get_property_cookie_t shadow;  // asked last
    };
    FrameGeometryCookies requestFrameGeometry(const StackedWindow& window) const;
    // nullopt when the window vanished. The shadow's reply may come already received (a caller
    // that polled for it), as a null pointer when it was answered with an error.
    std::optional<X11FrameGeometry> collectFrameGeometry(const FrameGeometryCookies& cookies) const;
    std::optional<X11FrameGeometry> collectFrameGeometry(
        const FrameGeometryCookies& cookies, const xcb_get_property_reply_t* shadow) const;
    void discardFrameGeometry(const FrameGeometryCookies& cookies) const;

    // The managed windows in mapping order (_NET_CLIENT_LIST); nullopt without
    // a window manager that publishes the list.
    std::optional<std::vector<xcb_window_t>> clientList() const;
    // Every application window: the client list in mapping order, then the
    // mapped clients it does not name (yet).
    std::vector<xcb_window_t> applicationWindows() const;

    // The root window's rectangle: the whole screen, which RandR may resize.
    std::optional<Rect> rootRectangle() const;

    // Whether a window manager following the EWMH conventions runs now.
    bool hasEwmhWindowManager() const;
    // Its check window, which names this run of it; nullopt when none runs.
    std::optional<xcb_window_t> ewmhWindowManager() const;
    // The window that has the focus as the window manager says (_NET_ACTIVE_WINDOW); none when
    // it says nothing.
    xcb_window_t activeWindow() const;
    // Whether the top-level window is above each of the others in the stacking order now.
    bool isInFrontOf(xcb_window_t frame, const std::vector<xcb_window_t>& others) const;

    // The class part of WM_CLASS, which names the application.
    std::optional<std::string> windowClass(xcb_window_t window) const;
    std::vector<xcb_atom_t> atomsOf(xcb_window_t window, xcb_atom_t property) const;
    std::vector<std::uint32_t> cardinalsOf(xcb_window_t window, xcb_atom_t property,
                                           std::uint32_t maxCount) const;

    // Stacking layer from the window's type and state (see WindowLayer).
    int layerFor(const std::vector<xcb_atom_t>& types, const std::vector<xcb_atom_t>& states,
                 bool overrideRedirect) const;

  private:
    struct TopLevel {
        xcb_window_t window = XCB_WINDOW_NONE;
        bool overrideRedirect = false;
    };

    struct LayerCookie {
        xcb_get_property_cookie_t types;
        xcb_get_property_cookie_t states;
    };
    using LayerCookies = std::vector<LayerCookie>;
    struct PidCookie {
        std::optional<xcb_res_query_client_ids_cookie_t> resources;
        xcb_get_property_cookie_t property;
    };
    using PidCookies = std::vector<PidCookie>;

    LayerCookies requestLayers(const std::vector<StackedWindow>& windows) const;
    std::vector<int> collectLayers(const LayerCookies& cookies,
                                   const std::vector<StackedWindow>& windows) const;
    PidCookies requestOwnerPids(const std::vector<xcb_window_t>& windows) const;
    std::vector<std::optional<std::int32_t>> collectOwnerPids(const PidCookies& cookies) const;

    std::vector<StackedWindow> resolveClients(const std::vector<TopLevel>& topLevels) const;
    std::vector<bool> carryWmState(const std::vector<xcb_window_t>& windows) const;
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
    mutable std::mutex cacheMutex_;
    mutable std::unordered_map<xcb_window_t, xcb_window_t> clientOfFrame_;
};

}  // namespace gf
