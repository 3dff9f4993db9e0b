#include "x11/TrayHost.h"

#include <xcb/xcb.h>

#include <algorithm>

#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"
#include "x11/X11Desktop.h"

namespace gf::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kStartTimeout = 10s;
constexpr int kMaxDepth = 8;
// The first item's middle, below the menu's top margin.
constexpr int kItemOffset = 12;

}  // namespace

std::unique_ptr<TrayHost> TrayHost::start(X11Desktop& desktop, std::string* error) {
    ChildProcess::Options options;
    options.arguments = {"trayer",      "--edge",        "top",     "--align", "right",
                         "--widthtype", "pixel",         "--width", "120",     "--height",
                         "28",          "--SetDockType", "true"};
    options.environment = desktop.clientEnvironment();
    options.outputFile = (desktop.directory() / "trayer.log").string();
    auto process = ChildProcess::start(options, error);
    if (!process) {
        return nullptr;
    }
    xcb_connection_t* c = desktop.connection();
    const DesktopProbe& probe = desktop.probe();
    const xcb_atom_t selection = probe.atom("_NET_SYSTEM_TRAY_S0");
    std::optional<WindowId> window;
    const bool ready = waitUntil(
        [&] {
            auto owner =
                xcbReply(c, xcb_get_selection_owner_reply, xcb_get_selection_owner(c, selection));
            window = owner && owner->owner != XCB_WINDOW_NONE
                         ? probe.findClientByPid(process->pid())
                         : std::nullopt;
            return window && probe.isViewable(*window);
        },
        kStartTimeout);
    if (!ready) {
        *error = "trayer took no tray selection or showed no window";
        return nullptr;
    }
    return std::make_unique<TrayHost>(desktop, std::move(process), *window);
}

std::optional<WindowId> TrayHost::findIcon(const std::string& windowClass) const {
    xcb_connection_t* c = desktop_.connection();
    std::vector<xcb_window_t> level{window_};
    for (int depth = 0; depth < kMaxDepth && !level.empty(); ++depth) {
        struct Cookies {
            xcb_get_window_attributes_cookie_t attributes;
            xcb_get_property_cookie_t wmClass;
            xcb_get_geometry_cookie_t geometry;
            xcb_query_tree_cookie_t tree;
        };
        std::vector<Cookies> cookies;
        cookies.reserve(level.size());
        for (xcb_window_t window : level) {
            cookies.push_back(
                {xcb_get_window_attributes(c, window),
                 xcb_get_property(c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64),
                 xcb_get_geometry(c, window), xcb_query_tree(c, window)});
        }
        std::optional<xcb_window_t> found;
        std::vector<xcb_window_t> next;
        for (std::size_t i = 0; i < level.size(); ++i) {
            auto attributes = xcbReply(c, xcb_get_window_attributes_reply, cookies[i].attributes);
            auto property = xcbReply(c, xcb_get_property_reply, cookies[i].wmClass);
            auto geometry = xcbReply(c, xcb_get_geometry_reply, cookies[i].geometry);
            auto tree = xcbReply(c, xcb_query_tree_reply, cookies[i].tree);
            if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) {
                continue;  // nothing below an unviewable window is viewable either
            }
            if (!found && geometry && geometry->width > 1 &&
                classIn(property.get()) == windowClass) {
                found = level[i];
            }
            if (tree) {
                const xcb_window_t* children = xcb_query_tree_children(tree.get());
                next.insert(next.end(), children,
                            children + xcb_query_tree_children_length(tree.get()));
            }
        }
        if (found) {
            return found;
        }
        level = std::move(next);
    }
    return std::nullopt;
}

std::optional<Rect> TrayHost::waitForIcon(std::chrono::milliseconds timeout) const {
    std::optional<Rect> icon;
    waitUntil(
        [&] {
            const std::optional<WindowId> window = findIcon();
            icon = window ? desktop_.probe().rootGeometry(*window) : std::nullopt;
            return icon.has_value();
        },
        timeout);
    return icon;
}

std::vector<WindowId> TrayHost::popups() const {
    xcb_connection_t* c = desktop_.connection();
    std::vector<WindowId> found;
    for (const WindowId child : desktop_.probe().rootChildrenBottomToTop()) {
        const auto attributes =
            xcbReply(c, xcb_get_window_attributes_reply, xcb_get_window_attributes(c, child));
        if (attributes && attributes->override_redirect &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            desktop_.probe().classOf(child) == "Glimmerfold") {
            found.push_back(child);
        }
    }
    return found;
}

std::optional<Rect> TrayHost::openMenu() {
    const std::optional<Rect> icon = waitForIcon();
    if (!icon) {
        return std::nullopt;
    }
    clickAt(icon->midX(), icon->midY(), 3);
    std::optional<Rect> menu;
    // Laid out once it is tall; a tooltip may show too.
    const bool opened = waitUntil([&] {
        return std::ranges::any_of(popups(), [&](WindowId popup) {
            menu = desktop_.probe().rootGeometry(popup);
            return menu && menu->height > 100;
        });
    });
    return opened ? menu : std::nullopt;
}

bool TrayHost::clickRunningItem() {
    const std::optional<Rect> menu = openMenu();
    if (!menu) {
        return false;
    }
    clickAt(menu->midX(), menu->y + kItemOffset, 1);
    return waitUntil([&] { return popups().empty(); });
}

void TrayHost::clickAt(double x, double y, int button) {
    desktop_.input().movePointerTo(static_cast<int>(x), static_cast<int>(y));
    desktop_.input().pressButton(button);
    desktop_.input().releaseButton(button);
}

}  // namespace gf::test
