#pragma once

#include "platform/Rect.h"

namespace gf {

// One display (monitor). Both rectangles use bottom-left coordinates with y
// growing upwards, measured from the bottom of the primary display.
struct DisplayInfo {
    Rect frame;         // the whole display
    Rect visibleFrame;  // the display without docks and panels

    friend bool operator==(const DisplayInfo&, const DisplayInfo&) = default;
};

}  // namespace gf
