#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/WindowHandle.h"

namespace gf {

// Reaches the windows of an application so they can be changed.
class WindowControl {
  public:
    virtual ~WindowControl() = default;

    // The manipulable windows of the process, in the application's own order.
    // nullopt when they cannot be listed.
    virtual std::optional<std::vector<std::shared_ptr<WindowHandle>>> windowsOfProcess(
        std::int32_t pid) = 0;

    // The manipulable window with this number, when the platform can reach a window by its
    // number alone; nullptr when it cannot, and the process's windows are then matched by number.
    virtual std::shared_ptr<WindowHandle> windowWithNumber(std::int32_t pid,
                                                           std::uint32_t windowNumber) {
        (void)pid;
        (void)windowNumber;
        return nullptr;
    }
    // A per-application boolean attribute (such as an assistive "enhanced user
    // interface" mode). nullopt when the application has no such attribute.
    // May be called from a background thread.
    virtual std::optional<bool> applicationAttribute(std::int32_t pid, std::string_view name) = 0;
    virtual bool setApplicationAttribute(std::int32_t pid, std::string_view name, bool value) = 0;
};

}  // namespace gf
