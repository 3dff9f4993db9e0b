#pragma once

#include <optional>
#include <string>
#include <vector>

#include "FrameWatcher.h"
#include "LatencyMatch.h"
#include "MotionPath.h"

namespace gf::bench {

// When a move gesture, begun by a key sent at one moment, read the pointer,
// in ms from that moment. See timeGestureStart.
struct GestureStartTiming {
    double pointerReadMs = 0;
    double followingMs = 0;
    double frameMovedMs = 0;
};

// The keys went out at `keys`; then probe motion i went out at sent[i] and put
// the pointer at `path.at(i)` from where it rested. Every position is the
// pointer's own, so the frame names the motions the gesture had seen: where
// the window came to rest (the last report) gives the pointer position the
// gesture measured from, and the first report that moved the frame gives the
// position its first follow read. A read that saw motion k but not motion k+1
// happened before motion k+1 was sent, which bounds it from above to within
// the spacing of the motions. `before` is the frame before the keys.
std::optional<GestureStartTiming> timeGestureStart(
    Clock::time_point keys, const std::vector<Clock::time_point>& sent, const MotionPath& path,
    const FrameReport& before, const std::vector<FrameReport>& reports, std::string* problem);

}  // namespace gf::bench
