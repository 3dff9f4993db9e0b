#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Rect.h"

namespace gf {

// What the window server tells about one on-screen window. A field the
// platform could not read is absent, and the engine decides what that means.
struct WindowDescription {
    std::uint32_t windowNumber = 0;  // the window server's number; never 0 for a real window
    std::optional<std::int32_t> ownerPid;
    std::optional<int> layer;    // see WindowLayer
    std::optional<Rect> bounds;  // outer frame, global top-left coordinates
    // The application this very window belongs to, as the ignore list names it. One process may
    // show windows of several applications, so the window is asked, not its process.
    std::optional<std::string> applicationIdentifier;

    friend bool operator==(const WindowDescription&, const WindowDescription&) = default;
};

// Stacking layers as the engine understands them. Windows below `normal` are
// desktop backgrounds; windows at or above `dock` are docks, panels,
// notifications, menus and tooltips, which are never moved.
namespace WindowLayer {
inline constexpr int desktop = -1;
inline constexpr int normal = 0;
inline constexpr int floating = 3;  // utility, toolbar, splash and keep-above windows
inline constexpr int dock = 20;
inline constexpr int overlay = 25;  // notifications, override-redirect menus and tooltips
}  // namespace WindowLayer

}  // namespace gf
