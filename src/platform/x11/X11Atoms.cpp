#include "platform/x11/X11Atoms.h"

#include <array>
#include <cstring>
#include <utility>

#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

using AtomField = xcb_atom_t X11Atoms::*;

constexpr std::array<std::pair<const char*, AtomField>, 37> kAtomNames{{
    {"WM_STATE", &X11Atoms::wmState},
    {"UTF8_STRING", &X11Atoms::utf8String},
    {"_NET_SUPPORTING_WM_CHECK", &X11Atoms::netSupportingWmCheck},
    {"_NET_CLIENT_LIST", &X11Atoms::netClientList},
    {"_NET_ACTIVE_WINDOW", &X11Atoms::netActiveWindow},
    {"_NET_MOVERESIZE_WINDOW", &X11Atoms::netMoveResizeWindow},
    {"_NET_RESTACK_WINDOW", &X11Atoms::netRestackWindow},
    {"_NET_FRAME_EXTENTS", &X11Atoms::netFrameExtents},
    {"_GTK_FRAME_EXTENTS", &X11Atoms::gtkFrameExtents},
    {"_NET_WM_PID", &X11Atoms::netWmPid},
    {"_NET_WM_NAME", &X11Atoms::netWmName},
    {"_NET_WM_ICON", &X11Atoms::netWmIcon},
    {"_NET_WM_STRUT", &X11Atoms::netWmStrut},
    {"_NET_WM_STRUT_PARTIAL", &X11Atoms::netWmStrutPartial},
    {"_NET_WORKAREA", &X11Atoms::netWorkarea},
    {"_NET_CURRENT_DESKTOP", &X11Atoms::netCurrentDesktop},
    {"_NET_WM_STATE", &X11Atoms::netWmState},
    {"_NET_WM_STATE_ABOVE", &X11Atoms::netWmStateAbove},
    {"_NET_WM_STATE_SKIP_TASKBAR", &X11Atoms::netWmStateSkipTaskbar},
    {"_NET_WM_STATE_FULLSCREEN", &X11Atoms::netWmStateFullscreen},
    {"_NET_WM_STATE_MAXIMIZED_VERT", &X11Atoms::netWmStateMaximizedVert},
    {"_NET_WM_STATE_MAXIMIZED_HORZ", &X11Atoms::netWmStateMaximizedHorz},
    {"_NET_WM_WINDOW_TYPE", &X11Atoms::netWmWindowType},
    {"_NET_WM_WINDOW_TYPE_DESKTOP", &X11Atoms::netWmWindowTypeDesktop},
    {"_NET_WM_WINDOW_TYPE_DOCK", &X11Atoms::netWmWindowTypeDock},
    {"_NET_WM_WINDOW_TYPE_TOOLBAR", &X11Atoms::netWmWindowTypeToolbar},
    {"_NET_WM_WINDOW_TYPE_MENU", &X11Atoms::netWmWindowTypeMenu},
    {"_NET_WM_WINDOW_TYPE_UTILITY", &X11Atoms::netWmWindowTypeUtility},
    {"_NET_WM_WINDOW_TYPE_SPLASH", &X11Atoms::netWmWindowTypeSplash},
    {"_NET_WM_WINDOW_TYPE_DIALOG", &X11Atoms::netWmWindowTypeDialog},
    {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", &X11Atoms::netWmWindowTypeDropdownMenu},
    {"_NET_WM_WINDOW_TYPE_POPUP_MENU", &X11Atoms::netWmWindowTypePopupMenu},
    {"_NET_WM_WINDOW_TYPE_TOOLTIP", &X11Atoms::netWmWindowTypeTooltip},
    {"_NET_WM_WINDOW_TYPE_NOTIFICATION", &X11Atoms::netWmWindowTypeNotification},
    {"_NET_WM_WINDOW_TYPE_COMBO", &X11Atoms::netWmWindowTypeCombo},
    {"_NET_WM_WINDOW_TYPE_DND", &X11Atoms::netWmWindowTypeDnd},
    {"_NET_WM_WINDOW_TYPE_NORMAL", &X11Atoms::netWmWindowTypeNormal},
}};

}  // namespace

std::optional<X11Atoms> X11Atoms::intern(xcb_connection_t* connection) {
    std::array<xcb_intern_atom_cookie_t, kAtomNames.size()> cookies{};
    for (std::size_t i = 0; i < kAtomNames.size(); ++i) {
        const char* name = kAtomNames[i].first;
        cookies[i] =
            xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    }
    X11Atoms atoms;
    bool complete = true;
    for (std::size_t i = 0; i < kAtomNames.size(); ++i) {
        auto reply = xcbReply(connection, xcb_intern_atom_reply, cookies[i]);
        if (!reply) {
            complete = false;
            continue;  // keep collecting so no reply is left behind
        }
        atoms.*(kAtomNames[i].second) = reply->atom;
    }
    if (!complete) {
        return std::nullopt;
    }
    return atoms;
}

}  // namespace gf
