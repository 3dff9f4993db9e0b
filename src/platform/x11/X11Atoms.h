#pragma once

#include <xcb/xcb.h>

#include <optional>

namespace gf {

// The atoms the backend uses, interned together when a connection opens.
// Atoms are global to the X server, so a second connection reuses the values.
struct X11Atoms {
    xcb_atom_t wmState = XCB_ATOM_NONE;
    xcb_atom_t utf8String = XCB_ATOM_NONE;
    xcb_atom_t netSupportingWmCheck = XCB_ATOM_NONE;
    xcb_atom_t netClientList = XCB_ATOM_NONE;
    xcb_atom_t netActiveWindow = XCB_ATOM_NONE;
    xcb_atom_t netMoveResizeWindow = XCB_ATOM_NONE;
    xcb_atom_t netRestackWindow = XCB_ATOM_NONE;
    xcb_atom_t netFrameExtents = XCB_ATOM_NONE;
    xcb_atom_t gtkFrameExtents = XCB_ATOM_NONE;
    xcb_atom_t netWmPid = XCB_ATOM_NONE;
    xcb_atom_t netWmName = XCB_ATOM_NONE;
    xcb_atom_t netWmIcon = XCB_ATOM_NONE;
    xcb_atom_t netWmStrut = XCB_ATOM_NONE;
    xcb_atom_t netWmStrutPartial = XCB_ATOM_NONE;
    xcb_atom_t netWorkarea = XCB_ATOM_NONE;
    xcb_atom_t netCurrentDesktop = XCB_ATOM_NONE;
    xcb_atom_t netWmState = XCB_ATOM_NONE;
    xcb_atom_t netWmStateAbove = XCB_ATOM_NONE;
    xcb_atom_t netWmStateSkipTaskbar = XCB_ATOM_NONE;
    xcb_atom_t netWmStateFullscreen = XCB_ATOM_NONE;
    xcb_atom_t netWmStateMaximizedVert = XCB_ATOM_NONE;
    xcb_atom_t netWmStateMaximizedHorz = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowType = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDesktop = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDock = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeToolbar = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeMenu = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeUtility = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeSplash = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDialog = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDropdownMenu = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypePopupMenu = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeTooltip = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeNotification = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeCombo = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDnd = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeNormal = XCB_ATOM_NONE;

    // Sends every InternAtom request before waiting for the first reply, so
    // the whole set costs one round trip. nullopt when the server refused.
    static std::optional<X11Atoms> intern(xcb_connection_t* connection);
};

}  // namespace gf
