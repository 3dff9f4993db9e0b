#pragma once

#include <cstddef>
#include <cstdint>

namespace gf::bench {

struct PixelOffset {
    int dx = 0;
    int dy = 0;

    friend bool operator==(const PixelOffset&, const PixelOffset&) = default;
};

// Where the pointer goes, relative to where a gesture took hold of the window:
// one pixel per motion across a sweep and back, one pixel down at each turn.
// No two motions share a position, so every frame position the window
// reports names exactly one motion, and the window never drifts further than
// the sweep from where it started.
class MotionPath {
  public:
    explicit MotionPath(int sweepWidth) : sweepWidth_(sweepWidth < 1 ? 1 : sweepWidth) {}

    PixelOffset at(std::size_t index) const;
    // The largest offsets any of the first `count` motions reaches.
    PixelOffset extent(std::size_t count) const;

  private:
    int sweepWidth_;
};

// Two coordinates packed into one key: a frame position or a frame size.
std::int64_t pairKey(int a, int b);

}  // namespace gf::bench
