#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rect.h"

struct xcb_connection_t;

namespace gf::test {

// What the tray and Glimmerfold's own windows look like on the private
// desktop, read from the X server directly.
class TrayProbe {
  public:
    TrayProbe(xcb_connection_t* connection, std::uint32_t root);

    // The tray host's window, once one owns the tray selection of screen 0.
    std::optional<std::uint32_t> trayOwner() const;
    // A viewable window anywhere below the root whose WM_CLASS class is
    // windowClass and which is larger than a pixel, searched depth first.
    std::optional<std::uint32_t> findViewable(const std::string& windowClass) const;
    // Viewable override-redirect top-level windows of that class: menus and
    // tooltips.
    std::vector<std::uint32_t> popups(const std::string& windowClass) const;
    // The window's rectangle in root coordinates.
    std::optional<Rect> rootGeometry(std::uint32_t window) const;
    // Whether _NET_WM_STATE lists the named state atom.
    bool hasState(std::uint32_t window, const std::string& state) const;
    std::string title(std::uint32_t window) const;

    // Writes what the screen shows as a PNG file; false when that fails.
    bool saveScreenshot(const std::filesystem::path& path) const;

  private:
    std::uint32_t atom(const std::string& name) const;
    std::vector<std::uint32_t> children(std::uint32_t window) const;
    std::string windowClass(std::uint32_t window) const;
    bool isViewable(std::uint32_t window, bool* overrideRedirect = nullptr) const;

    xcb_connection_t* connection_;
    std::uint32_t root_;
};

}  // namespace gf::test
