#pragma once

#include <QImage>
#include <filesystem>
#include <optional>

#include "x11/DesktopProbe.h"

struct xcb_connection_t;

namespace gf::test {

// What the screen shows now, read from the server; nullopt when it cannot be read.
std::optional<QImage> grabScreen(xcb_connection_t* connection, WindowId root);
// Writes the image as a PNG file, making its folder; false when that fails.
bool saveImage(const QImage& image, const std::filesystem::path& path);

}  // namespace gf::test
