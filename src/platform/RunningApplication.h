#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/ApplicationIcon.h"

namespace gf {

struct RunningApplication {
    std::int32_t pid = 0;
    std::optional<std::string> identifier;   // stable application id (what settings call bundleIdentifier)
    std::optional<std::string> displayName;  // localized, human-readable name
    ApplicationIcon icon;
    bool isRegular = false;  // an ordinary application with windows of its own in the taskbar
};

}  // namespace gf
