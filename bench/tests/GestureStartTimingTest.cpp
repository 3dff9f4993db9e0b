#include <gtest/gtest.h>

#include "GestureStartTiming.h"

namespace gf::bench {
namespace {

using namespace std::chrono_literals;

const Clock::time_point keys{};

// Probe motions every 250 µs after the keys, along a path that turns every ten motions.
std::vector<Clock::time_point> probeTimes(std::size_t count) {
    std::vector<Clock::time_point> sent;
    for (std::size_t i = 0; i < count; ++i) {
        sent.push_back(keys + 250us * static_cast<int>(i + 1));
    }
    return sent;
}

FrameReport frameAt(const FrameReport& before, PixelOffset pointer, PixelOffset start,
                    Clock::time_point time) {
    FrameReport report = before;
    report.time = time;
    report.x += pointer.dx - start.dx;
    report.y += pointer.dy - start.dy;
    return report;
}

TEST(GestureStartTimingTest, ReadsFromTheFrameWhichMotionsThePointerReadHadSeenOrSaysWhyNot) {
    const MotionPath path(10);
    const FrameReport before{keys - 1s, 300, 250, 202, 171};
    std::string problem;
    // The gesture measured from the pointer after motion 3 and first followed it after motion 24
    // (past a turn of the path); a restack report with the frame unmoved came first.
    const PixelOffset start = path.at(2);
    const std::vector<FrameReport> reports{
        frameAt(before, start, start, keys + 6ms),
        frameAt(before, path.at(23), start, keys + 6500us),
        frameAt(before, path.at(40), start, keys + 10ms),
        frameAt(before, path.at(59), start, keys + 16ms),
    };
    auto timing = timeGestureStart(keys, probeTimes(60), path, before, reports, &problem);
    ASSERT_TRUE(timing) << problem;
    EXPECT_DOUBLE_EQ(timing->pointerReadMs, 1.0) << "before motion 4 went out";
    EXPECT_DOUBLE_EQ(timing->followingMs, 6.25) << "before motion 25 went out";
    EXPECT_DOUBLE_EQ(timing->frameMovedMs, 6.5);

    // The pointer read before any motion: bounded by the first.
    const std::vector<Clock::time_point> sent = probeTimes(20);
    timing = timeGestureStart(
        keys, sent, path, before,
        {frameAt(before, path.at(4), {}, keys + 3ms), frameAt(before, path.at(19), {}, keys + 7ms)},
        &problem);
    ASSERT_TRUE(timing) << problem;
    EXPECT_DOUBLE_EQ(timing->pointerReadMs, 0.25);
    EXPECT_DOUBLE_EQ(timing->followingMs, 1.5);

    EXPECT_FALSE(timeGestureStart(keys, sent, path, before, {before}, &problem));
    EXPECT_EQ(problem, "the window did not follow the pointer");
    const FrameReport elsewhere = frameAt(before, {500, 0}, {}, before.time);
    EXPECT_FALSE(timeGestureStart(keys, sent, path, before, {elsewhere}, &problem));
    EXPECT_EQ(problem, "the window's positions match no pointer position sent");
}

}  // namespace
}  // namespace gf::bench
