#pragma once

#include <QImage>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "x11/X11Desktop.h"

namespace gf::test {

// What the tray and Glimmerfold's own windows look like on the private desktop, read from the
// X server directly.
class TrayProbe {
  public:
    explicit TrayProbe(X11Desktop& desktop);

    // The tray host's window, once one owns the tray selection of screen 0.
    std::optional<WindowId> trayOwner() const;
    // A viewable window anywhere below the root whose WM_CLASS class is windowClass and which is
    // larger than a pixel, searched depth first.
    std::optional<WindowId> findViewable(const std::string& windowClass) const;
    // Viewable override-redirect top-level windows of that class: menus and tooltips.
    std::vector<WindowId> popups(const std::string& windowClass) const;
    // The window's rectangle in root coordinates.
    std::optional<Rect> rootGeometry(WindowId window) const;
    // Whether _NET_WM_STATE lists the named state atom.
    bool hasState(WindowId window, const std::string& state) const;
    // What the screen shows now; nullopt when it cannot be read.
    std::optional<QImage> grabScreen() const;
    // Writes what the screen shows as a PNG file; false when that fails.
    bool saveScreenshot(const std::filesystem::path& path) const;
    static bool saveImage(const QImage& image, const std::filesystem::path& path);

  private:
    std::vector<WindowId> children(WindowId window) const;

    xcb_connection_t* connection_;
    WindowId root_;
    const DesktopProbe& probe_;
};

}  // namespace gf::test
