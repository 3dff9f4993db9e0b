#pragma once

#include "platform/WindowControl.h"
#include "platform/x11/X11RestackPolicy.h"

namespace gf {

class XcbConnection;
class X11WindowReader;

// Hands out handles for the windows of a process. The connection is one that
// never reads events, so the handles work from any thread.
class X11WindowControl final : public WindowControl {
  public:
    X11WindowControl(const XcbConnection& connection, const X11WindowReader& reader)
        : connection_(connection), reader_(reader) {}
    X11WindowControl(const X11WindowControl&) = delete;
    X11WindowControl& operator=(const X11WindowControl&) = delete;

    // The process's managed windows in mapping order, docks and desktop
    // backgrounds left out since they are never moved.
    std::optional<std::vector<std::shared_ptr<WindowHandle>>> windowsOfProcess(
        std::int32_t pid) override;

    // The number is the client window itself, found under the pointer a moment ago; no listing.
    std::shared_ptr<WindowHandle> windowWithNumber(std::int32_t pid,
                                                   std::uint32_t windowNumber) override;

    // X11 applications have no such switch: always absent, never set.
    std::optional<bool> applicationAttribute(std::int32_t pid, std::string_view name) override;
    bool setApplicationAttribute(std::int32_t pid, std::string_view name, bool value) override;

  private:
    const XcbConnection& connection_;
    const X11WindowReader& reader_;
    // Shared by every handle: what one raise learnt of the window manager serves all others.
    X11RestackPolicy restackPolicy_;
};

}  // namespace gf
