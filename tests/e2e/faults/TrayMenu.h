#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rect.h"
#include "x11/ChildProcess.h"
#include "x11/X11Desktop.h"

namespace gf::test {

// Glimmerfold's tray item and its menu as the user reaches them: a tray host (trayer) at the top
// right of the private desktop, clicks played with XTest, windows found on the X server by their
// WM_CLASS.
class TrayMenu {
  public:
    explicit TrayMenu(X11Desktop& desktop);

    // Starts trayer and waits until it holds the tray; false with the reason when it does not.
    bool startTrayHost(std::string* error);

    // Where Glimmerfold's tray icon is, once it shows; nullopt when it does not within the time.
    std::optional<Rect> waitForIcon();

    // Opens the menu from the icon and clicks its first item, the running switch ("Glimmerfold:
    // Running" or "Glimmerfold: Stopped"); returns once the menu has closed again. False when the
    // icon or the menu does not appear, or the menu stays open.
    bool clickRunningItem();

  private:
    std::optional<WindowId> findViewable(WindowId under) const;
    std::optional<WindowId> findPopup() const;
    std::optional<Rect> rootGeometry(WindowId window) const;
    std::string windowClass(WindowId window) const;
    bool isViewable(WindowId window, bool* overrideRedirect = nullptr) const;
    std::vector<WindowId> children(WindowId window) const;
    void clickAt(int x, int y, int button);

    X11Desktop& desktop_;
    std::unique_ptr<ChildProcess> trayHost_;
};

}  // namespace gf::test
