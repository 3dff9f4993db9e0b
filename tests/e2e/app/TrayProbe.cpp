#include "TrayProbe.h"

#include <xcb/xcb.h>

#include <QImage>
#include <QString>
#include <algorithm>
#include <functional>

#include "platform/x11/XcbReply.h"

namespace gf::test {

TrayProbe::TrayProbe(X11Desktop& desktop)
    : connection_(desktop.connection()), root_(desktop.root()), probe_(desktop.probe()) {}

std::optional<WindowId> TrayProbe::trayOwner() const {
    const auto reply =
        xcbReply(connection_, xcb_get_selection_owner_reply,
                 xcb_get_selection_owner(connection_, probe_.atom("_NET_SYSTEM_TRAY_S0")));
    return reply && reply->owner != XCB_NONE ? std::optional(reply->owner) : std::nullopt;
}

std::vector<WindowId> TrayProbe::children(WindowId window) const {
    const auto reply =
        xcbReply(connection_, xcb_query_tree_reply, xcb_query_tree(connection_, window));
    if (!reply) {
        return {};
    }
    const xcb_window_t* first = xcb_query_tree_children(reply.get());
    return {first, first + xcb_query_tree_children_length(reply.get())};
}

std::optional<WindowId> TrayProbe::findViewable(const std::string& wanted) const {
    std::function<std::optional<WindowId>(WindowId)> search =
        [&](WindowId window) -> std::optional<WindowId> {
        for (const WindowId child : children(window)) {
            if (!probe_.isViewable(child)) {
                continue;
            }
            const auto geometry = rootGeometry(child);
            if (probe_.classOf(child) == wanted && geometry && geometry->width > 1) {
                return child;
            }
            if (const auto found = search(child)) {
                return found;
            }
        }
        return std::nullopt;
    };
    return search(root_);
}

std::vector<WindowId> TrayProbe::popups(const std::string& wanted) const {
    std::vector<WindowId> found;
    for (const WindowId child : children(root_)) {
        const auto attributes = xcbReply(connection_, xcb_get_window_attributes_reply,
                                         xcb_get_window_attributes(connection_, child));
        if (attributes && attributes->override_redirect &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE && probe_.classOf(child) == wanted) {
            found.push_back(child);
        }
    }
    return found;
}

std::optional<Rect> TrayProbe::rootGeometry(WindowId window) const {
    const auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, window));
    const auto translated = xcbReply(connection_, xcb_translate_coordinates_reply,
                                     xcb_translate_coordinates(connection_, window, root_, 0, 0));
    if (!geometry || !translated) {
        return std::nullopt;
    }
    return Rect{static_cast<double>(translated->dst_x), static_cast<double>(translated->dst_y),
                static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

bool TrayProbe::hasState(WindowId window, const std::string& state) const {
    const auto reply =
        xcbReply(connection_, xcb_get_property_reply,
                 xcb_get_property(connection_, 0, window, probe_.atom("_NET_WM_STATE"),
                                  XCB_ATOM_ATOM, 0, 64));
    if (!reply || reply->format != 32) {
        return false;
    }
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / 4;
    return std::find(atoms, atoms + count, probe_.atom(state)) != atoms + count;
}

std::optional<QImage> TrayProbe::grabScreen() const {
    const auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, root_));
    if (!geometry || geometry->depth != 24) {
        return std::nullopt;
    }
    const auto image = xcbReply(connection_, xcb_get_image_reply,
                                xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, 0, 0,
                                              geometry->width, geometry->height, ~0u));
    // Depth 24 in Z format: 32 bits per pixel, little-endian BGRX, as RGB32 holds it.
    const int width = geometry->width;
    const int height = geometry->height;
    if (!image || xcb_get_image_data_length(image.get()) < width * height * 4) {
        return std::nullopt;
    }
    const QImage view(xcb_get_image_data(image.get()), width, height, width * 4,
                      QImage::Format_RGB32);
    return view.copy();
}

bool TrayProbe::saveScreenshot(const std::filesystem::path& path) const {
    const std::optional<QImage> screen = grabScreen();
    return screen && saveImage(*screen, path);
}

bool TrayProbe::saveImage(const QImage& image, const std::filesystem::path& path) {
    std::filesystem::create_directories(path.parent_path());
    return image.save(QString::fromStdString(path.string()), "PNG");
}

}  // namespace gf::test
