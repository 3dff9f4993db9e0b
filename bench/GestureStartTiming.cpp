#include "GestureStartTiming.h"

#include <algorithm>

namespace gf::bench {

namespace {

// How many probe motions had reached the server when the pointer stood at
// `offset` from its resting place: 0 for the resting place itself.
std::optional<std::size_t> motionsSeen(const MotionPath& path, std::size_t sent,
                                       PixelOffset offset) {
    if (offset == PixelOffset{}) {
        return 0;
    }
    for (std::size_t i = 0; i < sent; ++i) {
        if (path.at(i) == offset) {
            return i + 1;
        }
    }
    return std::nullopt;
}

double msBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

}  // namespace

std::optional<GestureStartTiming> timeGestureStart(
    Clock::time_point keys, const std::vector<Clock::time_point>& sent, const MotionPath& path,
    const FrameReport& before, const std::vector<FrameReport>& reports, std::string* problem) {
    const auto moved = std::find_if(reports.begin(), reports.end(), [&](const FrameReport& r) {
        return r.x != before.x || r.y != before.y;
    });
    if (sent.empty() || moved == reports.end()) {
        *problem = "the window did not follow the pointer";
        return std::nullopt;
    }
    const FrameReport& rest = reports.back();
    const PixelOffset last = path.at(sent.size() - 1);
    const PixelOffset start{last.dx - (rest.x - before.x), last.dy - (rest.y - before.y)};
    const PixelOffset first{start.dx + (moved->x - before.x), start.dy + (moved->y - before.y)};
    const std::optional<std::size_t> startSeen = motionsSeen(path, sent.size(), start);
    const std::optional<std::size_t> firstSeen = motionsSeen(path, sent.size(), first);
    // A read that saw every motion cannot be bounded by the next one.
    if (!startSeen || !firstSeen || *startSeen >= sent.size() || *firstSeen >= sent.size()) {
        *problem = "the window's positions match no pointer position sent";
        return std::nullopt;
    }
    return GestureStartTiming{msBetween(keys, sent[*startSeen]), msBetween(keys, sent[*firstSeen]),
                              msBetween(keys, moved->time)};
}

}  // namespace gf::bench
