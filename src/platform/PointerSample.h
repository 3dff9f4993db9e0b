#pragma once

#include <cstdint>

#include "platform/Point.h"

namespace gf {

// Where the pointer is and which modifiers are held, read at one moment.
struct PointerSample {
    Point location;
    std::uint64_t flags = 0;  // ModifierFlag bits

    friend bool operator==(const PointerSample&, const PointerSample&) = default;
};

}  // namespace gf
