#pragma once

#include "platform/Rect.h"

namespace gf {

// One display (monitor). Both rectangles are in the global coordinates of
// windows and the pointer: origin at the top-left of the root, y growing downwards.
struct DisplayInfo {
    Rect frame;         // the whole display
    Rect visibleFrame;  // the display without docks and panels

    friend bool operator==(const DisplayInfo&, const DisplayInfo&) = default;
};

}  // namespace gf
