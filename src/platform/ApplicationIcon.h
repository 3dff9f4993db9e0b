#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace gf {

// An application's icon: a theme icon name when one is known, otherwise (or
// as well) the largest image the application published. Empty when neither.
struct ApplicationIcon {
    std::string themeName;           // freedesktop icon name, or an absolute file path
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> argb;  // width * height pixels, 0xAARRGGBB, row by row

    bool isEmpty() const { return themeName.empty() && argb.empty(); }
};

}  // namespace gf
