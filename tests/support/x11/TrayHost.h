#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Rect.h"
#include "x11/ChildProcess.h"
#include "x11/DesktopProbe.h"

namespace gf::test {

class X11Desktop;

// A tray host (trayer) at the desktop's top right, and the icons and menus it shows.
class TrayHost {
  public:
    // Returns once trayer holds the tray selection and shows; nullptr with the reason if not.
    static std::unique_ptr<TrayHost> start(X11Desktop& desktop, std::string* error);

    TrayHost(X11Desktop& desktop, std::unique_ptr<ChildProcess> process, WindowId window)
        : desktop_(desktop), process_(std::move(process)), window_(window) {}

    // A viewable icon of that class; one pipelined round trip per tree level, cheap to poll.
    std::optional<WindowId> findIcon(const std::string& windowClass = "Glimmerfold") const;
    std::optional<Rect> waitForIcon(
        std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;
    // Opens the icon's menu with a right click; its frame once it is laid out.
    std::optional<Rect> openMenu();
    // Clicks the menu's first item, the running switch; false unless the menu came and went.
    bool clickRunningItem();
    void clickAt(double x, double y, int button);

  private:
    std::vector<WindowId> popups() const;  // viewable override-redirect windows of the program

    X11Desktop& desktop_;
    std::unique_ptr<ChildProcess> process_;
    WindowId window_;  // trayer's own, which holds the icons
};

}  // namespace gf::test
