#pragma once

#include "engine/SnapEdges.h"
#include "platform/Platform.h"
#include "platform/Point.h"
#include "platform/Size.h"

namespace gf {

class Settings;

// Snapping of moved windows to display edges, usable-area edges and other
// windows' edges. Keeps no state between calls.
namespace MagneticsEngine {

// Display lines first, then usable-area lines, then other windows' lines, each
// source only when its setting is on. Reads the displays and the window list.
SnapEdges collectEdges(const Settings& settings, Platform& platform);

// The origin after snapping each axis to the first line (in list order) that
// the near or, failing that, the far side of the window is strictly closer to
// than the threshold. Allocates nothing.
Point snap(Point origin, Size size, const SnapEdges& edges);

}  // namespace MagneticsEngine

}  // namespace gf
