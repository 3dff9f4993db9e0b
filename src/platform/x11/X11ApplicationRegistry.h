#pragma once

#include <xcb/xcb.h>

#include <filesystem>
#include <functional>
#include <vector>

#include "platform/ApplicationRegistry.h"

namespace gf {

class XcbConnection;
class X11WindowReader;

// Running applications are the processes owning managed windows; their
// identifier is the WM_CLASS class, their name and icon come from the
// matching desktop entry when one is installed. Main thread only.
class X11ApplicationRegistry final : public ApplicationRegistry {
  public:
    using DirectoryList = std::function<std::vector<std::filesystem::path>()>;

    X11ApplicationRegistry(const XcbConnection& connection, const X11WindowReader& reader,
                           DirectoryList desktopEntryDirectories);

    std::vector<RunningApplication> runningApplications() override;
    std::optional<std::string> identifierOfProcess(std::int32_t pid) override;
    std::optional<ApplicationIcon> iconOfInstalledApplication(
        const std::string& identifier) override;
    bool activate(std::int32_t pid) override;

  private:
    struct WindowFacts {
        xcb_window_t window = XCB_WINDOW_NONE;
        std::int32_t pid = 0;
        std::optional<std::string> windowClass;
        bool regular = false;  // a normal window that asks to be in the taskbar
    };

    std::vector<WindowFacts> applicationWindowFacts() const;
    ApplicationIcon largestPublishedIcon(xcb_window_t window) const;
    bool activateDirectly(xcb_window_t top, const std::vector<xcb_window_t>& visible);

    const XcbConnection& connection_;
    const X11WindowReader& reader_;
    DirectoryList desktopEntryDirectories_;
};

}  // namespace gf
