#include "MotionPath.h"

namespace gf::bench {

PixelOffset MotionPath::at(std::size_t index) const {
    const auto width = static_cast<std::size_t>(sweepWidth_);
    const std::size_t turn = index / width;
    const int step = static_cast<int>(index % width);
    const int dx = turn % 2 == 0 ? step + 1 : sweepWidth_ - step;
    return {dx, static_cast<int>(turn)};
}

PixelOffset MotionPath::extent(std::size_t count) const {
    if (count == 0) {
        return {};
    }
    const int dx =
        count >= static_cast<std::size_t>(sweepWidth_) ? sweepWidth_ : static_cast<int>(count);
    return {dx, at(count - 1).dy};
}

std::int64_t pairKey(int a, int b) {
    return (static_cast<std::int64_t>(a) << 32) | static_cast<std::uint32_t>(b);
}

}  // namespace gf::bench
