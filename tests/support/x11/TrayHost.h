#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rect.h"
#include "x11/ChildProcess.h"
#include "x11/DesktopProbe.h"

namespace gf::test {

class X11Desktop;

// A tray host (trayer) at the top right of the private desktop, and what a program shows in it
// and from it, read from the X server and clicked with XTest as the user would.
class TrayHost {
  public:
    // Returns once trayer holds the tray selection and its window shows; nullptr with the
    // reason when it does not.
    static std::unique_ptr<TrayHost> start(X11Desktop& desktop, std::string* error);

    TrayHost(X11Desktop& desktop, std::unique_ptr<ChildProcess> process, WindowId frame);

    pid_t pid() const { return process_->pid(); }
    // The host's top-level window, inside which the icons are embedded.
    WindowId frame() const { return frame_; }

    // An icon: a viewable window larger than a pixel below the host's window whose WM_CLASS
    // class is windowClass. Each level of the tree costs one pipelined round trip, so it can
    // be asked every few milliseconds while a program starts without loading the server.
    std::optional<WindowId> findIcon(const std::string& windowClass = "Glimmerfold") const;
    // Where the icon shows, once it does within the time.
    std::optional<Rect> waitForIcon(
        std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;
    // Viewable override-redirect top-level windows of that class: menus and tooltips.
    std::vector<WindowId> popups(const std::string& windowClass = "Glimmerfold") const;

    // Opens the icon's menu with a right click; the menu's frame once it is laid out (a tooltip
    // may show too, but the menu is the tall one).
    std::optional<Rect> openMenu();
    // Opens the menu and clicks its first item, the running switch; returns once the menu has
    // closed again. False when the icon or the menu does not appear, or the menu stays open.
    bool clickRunningItem();
    void clickAt(double x, double y, int button);

  private:
    X11Desktop& desktop_;
    std::unique_ptr<ChildProcess> process_;
    WindowId frame_;
};

}  // namespace gf::test
