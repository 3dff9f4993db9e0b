#pragma once

#include <xcb/res.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/WindowState.h"
#include "platform/x11/StackedWindow.h"

namespace gf {

class XcbConnection;

// What a client window says about itself in its properties: the process owning it, the
// application it belongs to (WM_CLASS), its types and states and the stacking layer they give.
// Batches are asked in one step and collected in another, so that several questions travel
// together. Keeps no state: safe to use from several threads at once.
class X11WindowProperties {
  public:
    explicit X11WindowProperties(const XcbConnection& connection);

    struct PidCookie {
        std::optional<xcb_res_query_client_ids_cookie_t> resources;
        xcb_get_property_cookie_t property;
    };
    using PidCookies = std::vector<PidCookie>;
    struct LayerCookie {
        xcb_get_property_cookie_t types;
        xcb_get_property_cookie_t states;
    };
    using LayerCookies = std::vector<LayerCookie>;

    // The process owning each window: from the X resource extension when the
    // client is local, else from _NET_WM_PID.
    std::vector<std::optional<std::int32_t>> ownerPids(
        const std::vector<xcb_window_t>& windows) const;
    PidCookies requestOwnerPids(const std::vector<xcb_window_t>& windows) const;
    std::vector<std::optional<std::int32_t>> collectOwnerPids(const PidCookies& cookies) const;

    // The class part of WM_CLASS, which names the application.
    std::optional<std::string> windowClass(xcb_window_t window) const;
    xcb_get_property_cookie_t requestWindowClass(xcb_window_t window) const;
    std::optional<std::string> collectWindowClass(xcb_get_property_cookie_t cookie) const;

    // Stacking layer of each client from its type and state (see WindowLayer).
    std::vector<int> layersOf(const std::vector<StackedWindow>& windows) const;
    LayerCookies requestLayers(const std::vector<StackedWindow>& windows) const;
    std::vector<int> collectLayers(const LayerCookies& cookies,
                                   const std::vector<StackedWindow>& windows) const;

    // Maximized and fullscreen from the client's _NET_WM_STATE; normal when it vanished.
    WindowState windowState(xcb_window_t client) const;
    // Whether each window carries WM_STATE, which the window manager puts on the clients it
    // manages and a client without one puts on itself.
    std::vector<bool> carryWmState(const std::vector<xcb_window_t>& windows) const;
    std::vector<std::uint32_t> cardinalsOf(xcb_window_t window, xcb_atom_t property,
                                           std::uint32_t maxCount) const;

  private:
    int layerFor(const std::vector<xcb_atom_t>& types, const std::vector<xcb_atom_t>& states,
                 bool overrideRedirect) const;
    std::vector<xcb_atom_t> atomsOf(xcb_window_t window, xcb_atom_t property) const;

    const XcbConnection& connection_;
};

}  // namespace gf
