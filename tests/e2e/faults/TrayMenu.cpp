#include "TrayMenu.h"

#include <xcb/xcb.h>

#include "platform/x11/XcbReply.h"
#include "x11/WaitUntil.h"

namespace gf::test {

namespace {

using namespace std::chrono_literals;

constexpr const char* kWindowClass = "Glimmerfold";
constexpr auto kShowTimeout = 10s;
// The first item's middle, below the menu's top margin.
constexpr int kFirstItemOffset = 12;
constexpr double kIconSizeLimit = 64;

}  // namespace

TrayMenu::TrayMenu(X11Desktop& desktop) : desktop_(desktop) {}

bool TrayMenu::startTrayHost(std::string* error) {
    ChildProcess::Options options;
    options.arguments = {"trayer",      "--edge",        "top",     "--align", "right",
                         "--widthtype", "pixel",         "--width", "120",     "--height",
                         "28",          "--SetDockType", "true"};
    options.environment = desktop_.clientEnvironment();
    options.outputFile = (desktop_.directory() / "trayer.log").string();
    trayHost_ = ChildProcess::start(options, error);
    if (!trayHost_) {
        return false;
    }
    xcb_connection_t* c = desktop_.connection();
    const xcb_atom_t selection = desktop_.probe().atom("_NET_SYSTEM_TRAY_S0");
    const bool owned = waitUntil(
        [&] {
            auto owner =
                xcbReply(c, xcb_get_selection_owner_reply, xcb_get_selection_owner(c, selection));
            return owner && owner->owner != XCB_NONE;
        },
        kShowTimeout);
    if (!owned) {
        *error = "trayer took no tray selection";
    }
    return owned;
}

std::optional<Rect> TrayMenu::waitForIcon() {
    std::optional<Rect> icon;
    waitUntil(
        [&] {
            const std::optional<WindowId> window = findViewable(desktop_.root());
            icon = window ? rootGeometry(*window) : std::nullopt;
            return icon.has_value();
        },
        kShowTimeout);
    return icon;
}

bool TrayMenu::clickRunningItem() {
    const std::optional<Rect> icon = waitForIcon();
    if (!icon) {
        return false;
    }
    clickAt(static_cast<int>(icon->midX()), static_cast<int>(icon->midY()), 3);
    std::optional<Rect> menu;
    const bool opened = waitUntil([&] {
        const std::optional<WindowId> popup = findPopup();
        menu = popup ? rootGeometry(*popup) : std::nullopt;
        // A menu is mapped before it is laid out; the switch is there once it has its height.
        return menu && menu->height > 100;
    });
    if (!opened) {
        return false;
    }
    clickAt(static_cast<int>(menu->midX()), static_cast<int>(menu->y) + kFirstItemOffset, 1);
    return waitUntil([&] { return !findPopup().has_value(); });
}

void TrayMenu::clickAt(int x, int y, int button) {
    desktop_.input().movePointerTo(x, y);
    desktop_.input().pressButton(button);
    desktop_.input().releaseButton(button);
}

std::vector<WindowId> TrayMenu::children(WindowId window) const {
    xcb_connection_t* c = desktop_.connection();
    std::vector<WindowId> result;
    if (auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, window))) {
        const xcb_window_t* list = xcb_query_tree_children(tree.get());
        result.assign(list, list + xcb_query_tree_children_length(tree.get()));
    }
    return result;
}

std::string TrayMenu::windowClass(WindowId window) const {
    xcb_connection_t* c = desktop_.connection();
    auto property =
        xcbReply(c, xcb_get_property_reply,
                 xcb_get_property(c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256));
    if (!property) {
        return {};
    }
    // Instance, NUL, class, NUL.
    const std::string value(
        static_cast<const char*>(xcb_get_property_value(property.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(property.get())));
    const std::size_t split = value.find('\0');
    if (split == std::string::npos) {
        return {};
    }
    const std::string rest = value.substr(split + 1);
    return rest.substr(0, rest.find('\0'));
}

bool TrayMenu::isViewable(WindowId window, bool* overrideRedirect) const {
    xcb_connection_t* c = desktop_.connection();
    auto attributes =
        xcbReply(c, xcb_get_window_attributes_reply, xcb_get_window_attributes(c, window));
    if (!attributes) {
        return false;
    }
    if (overrideRedirect != nullptr) {
        *overrideRedirect = attributes->override_redirect != 0;
    }
    return attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::optional<Rect> TrayMenu::rootGeometry(WindowId window) const {
    xcb_connection_t* c = desktop_.connection();
    auto geometry = xcbReply(c, xcb_get_geometry_reply, xcb_get_geometry(c, window));
    auto translated = xcbReply(c, xcb_translate_coordinates_reply,
                               xcb_translate_coordinates(c, window, desktop_.root(), 0, 0));
    if (!geometry || !translated) {
        return std::nullopt;
    }
    return Rect{static_cast<double>(translated->dst_x), static_cast<double>(translated->dst_y),
                static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

// The tray icon: a viewable window of Glimmerfold's class, larger than a pixel and no larger than
// an icon (unlike the Settings window or the wizard), searched depth first, since the tray host
// embeds it some levels down.
std::optional<WindowId> TrayMenu::findViewable(WindowId under) const {
    for (const WindowId child : children(under)) {
        if (!isViewable(child)) {
            continue;
        }
        if (windowClass(child) == kWindowClass) {
            const std::optional<Rect> frame = rootGeometry(child);
            if (frame && frame->width > 1 && frame->height > 1 && frame->width <= kIconSizeLimit &&
                frame->height <= kIconSizeLimit) {
                return child;
            }
        }
        if (const std::optional<WindowId> found = findViewable(child)) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<WindowId> TrayMenu::findPopup() const {
    for (const WindowId child : children(desktop_.root())) {
        bool overrideRedirect = false;
        if (isViewable(child, &overrideRedirect) && overrideRedirect &&
            windowClass(child) == kWindowClass) {
            return child;
        }
    }
    return std::nullopt;
}

}  // namespace gf::test
