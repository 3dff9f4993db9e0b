#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/WindowHandle.h"

namespace gf {

// The window found under a point. Holds its own reference to the handle, so the
// window stays reachable for as long as this value lives.
struct LocatedWindow {
    std::int32_t pid = 0;
    std::uint32_t windowID = 0;
    std::shared_ptr<WindowHandle> windowHandle;
    std::optional<std::string> bundleIdentifier;
};

}  // namespace gf
