#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "engine/LocatedWindow.h"
#include "platform/Platform.h"

namespace gf {

// The window under a point, asked of the window server directly. Nothing when
// the server names no window there, or one that is not an ordinary window (the
// window list may then still find one below it).
std::optional<LocatedWindow> locateWindowWithWindowServer(Platform& platform, Point point);

// The frontmost ordinary window of the on-screen list whose bounds contain the
// point and which can be manipulated.
std::optional<LocatedWindow> locateWindowWithWindowList(Platform& platform, Point point);

// The process's handle for a window number; the process's first window when
// none can be matched by number, null when the process lists no windows.
std::shared_ptr<WindowHandle> findWindowHandle(WindowControl& windowControl, std::int32_t pid,
                                               std::uint32_t windowNumber);

// Ordinary, floating and modal windows pass; desktops and everything from the
// dock layer up are left alone.
bool isAcceptedLayer(std::optional<int> layer, int dockLayer);

}  // namespace gf
