#include "x11/ScreenGrab.h"

#include <xcb/xcb.h>

#include <QString>

#include "platform/x11/XcbReply.h"

namespace gf::test {

std::optional<QImage> grabScreen(xcb_connection_t* connection, WindowId root) {
    const auto geometry =
        xcbReply(connection, xcb_get_geometry_reply, xcb_get_geometry(connection, root));
    if (!geometry || geometry->depth != 24) {
        return std::nullopt;
    }
    const auto image = xcbReply(connection, xcb_get_image_reply,
                                xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, 0, 0,
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

bool saveImage(const QImage& image, const std::filesystem::path& path) {
    std::filesystem::create_directories(path.parent_path());
    return image.save(QString::fromStdString(path.string()), "PNG");
}

}  // namespace gf::test
