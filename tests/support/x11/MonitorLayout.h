#pragma once

#include <cstddef>
#include <vector>

#include "platform/Rect.h"

namespace gf::test {

class X11Desktop;

// Replaces the desktop's RandR monitors by these rectangles (root coordinates) in this order, the
// one at index primary being the primary monitor. Throws std::runtime_error when the server
// does not end up listing them.
void setMonitors(X11Desktop& desktop, const std::vector<Rect>& monitors, std::size_t primary);

}  // namespace gf::test
