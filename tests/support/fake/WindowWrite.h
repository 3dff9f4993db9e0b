#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/Point.h"
#include "platform/Size.h"

namespace gf::test {

// One request the engine made to a window, in the order made. `sequence` orders
// window writes and attribute writes against each other.
struct WindowWrite {
    enum class Kind { position, size, raise, makeMain };
    std::uint32_t window = 0;
    Kind kind = Kind::position;
    Point point;  // for position
    Size size;    // for size
    std::chrono::microseconds at{0};
    std::uint64_t sequence = 0;
    bool accepted = true;  // false when the window refused (e.g. a size that cannot be set)
};

// One change of an application attribute requested through the window control.
struct AttributeWrite {
    std::int32_t pid = 0;
    std::string name;
    bool value = false;
    std::chrono::microseconds at{0};
    std::uint64_t sequence = 0;
};

}  // namespace gf::test
