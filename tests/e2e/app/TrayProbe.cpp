#include "TrayProbe.h"

#include <xcb/xcb.h>

#include <QImage>
#include <QString>
#include <algorithm>
#include <functional>

#include "platform/x11/XcbReply.h"

namespace gf::test {

TrayProbe::TrayProbe(xcb_connection_t* connection, std::uint32_t root)
    : connection_(connection), root_(root) {}

std::uint32_t TrayProbe::atom(const std::string& name) const {
    const auto reply = xcbReply(
        connection_, xcb_intern_atom_reply,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()));
    return reply ? reply->atom : static_cast<std::uint32_t>(XCB_ATOM_NONE);
}

std::optional<std::uint32_t> TrayProbe::trayOwner() const {
    const auto reply = xcbReply(connection_, xcb_get_selection_owner_reply,
                                xcb_get_selection_owner(connection_, atom("_NET_SYSTEM_TRAY_S0")));
    if (!reply || reply->owner == XCB_NONE) {
        return std::nullopt;
    }
    return reply->owner;
}

std::vector<std::uint32_t> TrayProbe::children(std::uint32_t window) const {
    const auto reply =
        xcbReply(connection_, xcb_query_tree_reply, xcb_query_tree(connection_, window));
    if (!reply) {
        return {};
    }
    const xcb_window_t* first = xcb_query_tree_children(reply.get());
    return {first, first + xcb_query_tree_children_length(reply.get())};
}

std::string TrayProbe::windowClass(std::uint32_t window) const {
    const auto reply = xcbReply(
        connection_, xcb_get_property_reply,
        xcb_get_property(connection_, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256));
    if (!reply || reply->format != 8) {
        return {};
    }
    const auto* data = static_cast<const char*>(xcb_get_property_value(reply.get()));
    const std::string both(data,
                           static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    const std::size_t separator = both.find('\0');
    return separator == std::string::npos ? std::string()
                                          : std::string(both.c_str() + separator + 1);
}

std::string TrayProbe::title(std::uint32_t window) const {
    const auto reply = xcbReply(connection_, xcb_get_property_reply,
                                xcb_get_property(connection_, 0, window, atom("_NET_WM_NAME"),
                                                 atom("UTF8_STRING"), 0, 256));
    if (!reply || reply->format != 8) {
        return {};
    }
    const auto* data = static_cast<const char*>(xcb_get_property_value(reply.get()));
    return {data, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

bool TrayProbe::isViewable(std::uint32_t window, bool* overrideRedirect) const {
    const auto attributes = xcbReply(connection_, xcb_get_window_attributes_reply,
                                     xcb_get_window_attributes(connection_, window));
    if (!attributes) {
        return false;
    }
    if (overrideRedirect != nullptr) {
        *overrideRedirect = attributes->override_redirect != 0;
    }
    return attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::optional<std::uint32_t> TrayProbe::findViewable(const std::string& wanted) const {
    std::function<std::optional<std::uint32_t>(std::uint32_t)> search =
        [&](std::uint32_t window) -> std::optional<std::uint32_t> {
        for (const std::uint32_t child : children(window)) {
            if (!isViewable(child)) {
                continue;
            }
            const auto geometry = rootGeometry(child);
            if (windowClass(child) == wanted && geometry && geometry->width > 1) {
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

std::vector<std::uint32_t> TrayProbe::popups(const std::string& wanted) const {
    std::vector<std::uint32_t> found;
    for (const std::uint32_t child : children(root_)) {
        bool overrideRedirect = false;
        if (isViewable(child, &overrideRedirect) && overrideRedirect &&
            windowClass(child) == wanted) {
            found.push_back(child);
        }
    }
    return found;
}

std::optional<Rect> TrayProbe::rootGeometry(std::uint32_t window) const {
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

bool TrayProbe::hasState(std::uint32_t window, const std::string& state) const {
    const auto reply = xcbReply(
        connection_, xcb_get_property_reply,
        xcb_get_property(connection_, 0, window, atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 0, 64));
    if (!reply || reply->format != 32) {
        return false;
    }
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / 4;
    return std::find(atoms, atoms + count, atom(state)) != atoms + count;
}

bool TrayProbe::saveScreenshot(const std::filesystem::path& path) const {
    const auto geometry =
        xcbReply(connection_, xcb_get_geometry_reply, xcb_get_geometry(connection_, root_));
    if (!geometry || geometry->depth != 24) {
        return false;
    }
    const auto image = xcbReply(connection_, xcb_get_image_reply,
                                xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, 0, 0,
                                              geometry->width, geometry->height, ~0u));
    if (!image) {
        return false;
    }
    // Depth 24 in Z format: 32 bits per pixel, little-endian BGRX, as RGB32 holds it.
    const int width = geometry->width;
    const int height = geometry->height;
    if (xcb_get_image_data_length(image.get()) < width * height * 4) {
        return false;
    }
    const QImage view(xcb_get_image_data(image.get()), width, height, width * 4,
                      QImage::Format_RGB32);
    std::filesystem::create_directories(path.parent_path());
    return view.copy().save(QString::fromStdString(path.string()), "PNG");
}

}  // namespace gf::test
